#include "bundles/BundleManager.h"
#include "data_rows.h"
#include "grammar/tokenize_filter.h"
#include "platform/utf.h"
#include "textview/shown_view.h"

namespace {

std::string uuid_of(std::string const& name) {
  for (plist::value const& l : BundleManager::sharedInstance().languages())
    if (l["name"].string_or("") == name) return l["uuid"].string_or("");
  return {};
}

class typed_text : public shown_view_test {};

// In a window, and where nobody looks.
TEST_F(typed_text, key_by_key_gives_what_is_typed) {
  for (auto const& r : data_rows("typing.txt", "keys")) {
    for (bool const seen : {true, false}) {
      shown_view view;
      view.host.seen = seen;
      ASSERT_NE(uuid_of(r[0]), "") << r[0];
      view.view.changeLanguageToAndLearn(uuid_of(r[0]), false);
      for (char16_t const key : unicode::to_utf16(r[1])) {
        if (key == u'\n')
          view.perform("insertNewline:");
        else
          view.view.insert_text({&key, 1});
        if (seen) view.view.tokenizer()->wait_for(view.view.view()->storage->lines());
      }
      if (r.size() > 2)
        EXPECT_EQ(view.get(), r[2]) << r[0] << ": " << r[1];
      else
        EXPECT_EQ(view.text(), r[1]) << r[0];
    }
  }
}

// A block is put round what follows, but not round the end of what the caret is in.
TEST_F(typed_text, a_brace_gets_its_partner_where_nothing_follows) {
  for (auto const& [before, after] :
       std::map<std::string, std::string>{{"a = |\"b\";", "a = \\|\"b\";"},
                                          {"if (a) | b;", "if (a) \\| b;"},
                                          {"f(|);", "f(\\|/);"},
                                          {"a |", "a \\|/"},
                                          {"a |  ", "a \\|/  "},
                                          {"a |\n\"b\"", "a \\|/\n\"b\""}}) {
    // Braces would be drawn as a selection.
    shown_view view(before);
    view.view.insert_text(u"{");
    text::iterator const caret = view.view.view()->selection.current_mark.base;
    std::string text = marked_text::utf8(marked_text::units_of(*view.view.view()->storage));
    text.insert(caret.column, "|");
    std::replace(text.begin(), text.end(), '{', '\\');
    std::replace(text.begin(), text.end(), '}', '/');
    EXPECT_EQ(text, after) << before;
  }
}

}  // namespace
