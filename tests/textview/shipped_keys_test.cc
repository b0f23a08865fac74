#include "documents/WynDocument.h"
#include "headless/headless_desktop.h"
#include "keys/WynKeyEvent.h"
#include "keys/key_binding_file.h"
#include "platform/own_defaults.h"
#include "platform/utf.h"
#include "plist/xml_reader.h"
#include "source_tree.h"
#include "test.h"
#include "textview/WynTextView.h"

namespace {

std::string share(std::string const& name) {
  return source_file("share/" + name);
}

plist::dictionary shipped_bindings() {
  return keys::read_key_binding_file(share("KeyBindings.dict"),
                                     [](std::string const& fault) { ADD_FAILURE() << fault; });
}

std::vector<std::string> menu_keys(plist::value const& menus) {
  std::vector<std::string> keys;
  auto const add = [&](plist::value const& part) {
    for (auto& key : menu_keys(part)) keys.push_back(std::move(key));
  };
  for (auto const& element : menus.elements()) add(element);
  for (auto const& [name, value] : menus.entries()) {
    if (name == "key") keys.push_back(value.string_or(""));
    add(value);
  }
  return keys;
}

}  // namespace

TEST(shipped_keys, have_actions_that_the_text_view_knows) {
  headless::headless_desktop desktop;
  own_defaults const defaults;
  WynTextView view;
  view.setDocument(WynDocument::document());
  for (auto const& [key, binding] : shipped_bindings()) {
    auto const actions = binding.as_array() ? binding.elements() : plist::array{binding};
    for (auto const& action : actions) {
      std::string const name = action.string_or(key);
      if (name == "openMenuBar:" || name == "enterStatusBar:") continue;  // the application's
      if (name.ends_with("UsedFile:")) continue;                          // of windows with tabs
      EXPECT_TRUE(view.tryToPerformWith(name, {})) << name;
    }
  }
}

// A tool that rewrites line breaks or control characters takes no key away.
TEST(shipped_keys, bind_what_no_character_is_typed_with) {
  using namespace platform::function_key;
  auto const bindings = shipped_bindings();
  for (char16_t const key : {return_key, enter, tab, escape, backspace, forward_delete, insert, up,
                             down, left, right, home, end, page_up, page_down})
    EXPECT_TRUE(bindings.contains(unicode::to_utf8(std::u16string(1, key))))
        << std::hex << int{key};
}

// A key's binding comes before the menu that shows the same key.
TEST(shipped_keys, leave_the_keys_of_menus_alone) {
  auto const keys = menu_keys(plist::read_xml(content_of_file(share("menus.plist"))).value);
  EXPECT_GT(keys.size(), 10U);
  auto const bindings = shipped_bindings();
  for (auto const& key : keys) EXPECT_FALSE(bindings.contains(key)) << key;
}
