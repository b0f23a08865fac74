#include "actions/WynPasteboardManager.h"
#include "app/batch_mode.h"
#include "app_fixture.h"
#include "bundles/BundleManager.h"
#include "keys/WynKeyBindingManager.h"
#include "keys/WynKeyEvent.h"
#include "platform/utf.h"
#include "plist/xml_writer.h"
#include "search/WynFindManager.h"
#include "settings/store.h"
#include "text/random_text.h"

#include <algorithm>

// What keys do in a window while they are recorded, batch mode does again by the macro.
namespace {

platform::key_event event_for(std::string const& key) {
  WynKeyEvent event;
  event.initWithString(key);
  std::u16string const text = unicode::to_utf16(event.key());
  return {text, text, event.qualifiers(), {}};
}

/// The keys of the menus and bindings with which somebody works on one text.
class keyboard {
 public:
  explicit keyboard(AppDelegate const& app) {
    collect(app.mainMenu());
    for (auto const& [key, binding] : WynKeyBindingManager::sharedInstance().keyBindings())
      if (!is_elsewhere(binding.string_or(""))) keys_.push_back(key);
    std::sort(keys_.begin(), keys_.end());
  }

  std::string any(random_source& random) const {
    static std::vector<std::string> const words = {"main\t", "for\t",  "if\t", "\t",  "\t",
                                                   "\n",     "(a",     "{\n",  "}\n", "\"b\"",
                                                   "x = 1;", "int ab", ", ",   " ",   "ab"};
    std::size_t const choice = random.below(4);
    return choice == 0   ? keys_[random.below(keys_.size())]
           : choice == 1 ? common_[random.below(std::size(common_))]
                         : words[random.below(words.size())];
  }

  /// A key of the menu or the bindings, or some text.
  void press(std::string const& key, AppDelegate& app, windows::document_window& controller,
             headless::headless_window& window) const {
    bool const is_key = std::binary_search(keys_.begin(), keys_.end(), key);
    if (!is_key)
      for (char const letter : key)
        send(event_for(std::string(1, letter == '\n' ? '\r' : letter)), app, window);
    else if (auto const entry = entries_.find(key); entry != entries_.end())
      controller.textView().tryToPerformWith(entry->second.selector, entry->second.argument);
    else
      send(event_for(key), app, window);
  }

 private:
  static constexpr char const* common_[] = {"\x7f", "\uf701",  "\uf700", "$\uf701", "@x",
                                            "@v",   "@c",      "~@c",    "@d",      "@z",
                                            "@y",   "@\uf706", "\uf706"};

  static void send(platform::key_event const& event, AppDelegate& app,
                   headless::headless_window& window) {
    if (!app.shouldSwallowEvent(event)) window.host.send_key(event);
  }
  /// Those that ask something, act on other texts or keep what they do from macros.
  static bool is_elsewhere(std::string const& selector) {
    static std::vector<std::string> const known = {"newDocument:",
                                                   "openDocument:",
                                                   "saveDocument:",
                                                   "saveDocumentAs:",
                                                   "performClose:",
                                                   "terminate:",
                                                   "selectNextWindow:",
                                                   "showScope:",
                                                   "selectPreviousWindow:",
                                                   "makeTextLarger:",
                                                   "makeTextSmaller:",
                                                   "makeTextStandardSize:",
                                                   "showCompletionList:",
                                                   "playScratchMacro:",
                                                   "toggleMacroRecording:",
                                                   "orderFront",
                                                   "ISIM_",
                                                   "selectBundleItem"};
    return std::any_of(known.begin(), known.end(),
                       [&](std::string const& one) { return selector.starts_with(one); });
  }
  void collect(std::vector<platform::menu_item> const& items) {
    for (platform::menu_item const& item : items) {
      collect(item.items);
      if (item.key.empty() || item.selector.empty() || is_elsewhere(item.selector)) continue;
      entries_.emplace(item.key, item);
      keys_.push_back(item.key);
    }
  }

  std::vector<std::string> keys_;
  std::map<std::string, platform::menu_item> entries_;
};

class recorded_macros : public app_test {
 protected:
  void start_afresh() {
    desktop.general_pasteboard().set({});
    WynPasteboardManager::sharedInstance().clear();
    WynFindManager::sharedInstance().setOptions({});
  }
  /// The steps, with the text that the keys have made.
  plist::array record(std::string const& file, random_source& random, std::string& made,
                      std::string& log) {
    own_defaults const settings;
    start_afresh();
    settings::store().set_volatile("WynDocumentDisableFSMetaData", true);
    windows::document_window& controller = *app().openFile(file);
    keyboard const keys(app());
    perform(controller, "toggleMacroRecording:");
    for (std::size_t n = 3 + random.below(25); n > 0; --n) {
      std::string const key = keys.any(random);
      keys.press(key, app(), controller, window_of(controller));
      log += key + " ";
    }
    perform(controller, "toggleMacroRecording:");
    made = text_of(controller);
    plist::array const steps = settings::store().array("WynMacroManagerScratchMacro");
    controller.textDocument()->setDocumentEdited(false);
    perform(controller, "performClose:");
    desktop.loop().run_for(0);
    return steps;
  }
  static std::string text_of(windows::document_window& controller) {
    controller.textView().tryToPerformWith("selectAll:", {});
    return unicode::to_utf8(controller.textView().selected_text());
  }
  std::string replay(std::string const& file, plist::array steps) {
    own_defaults const settings;
    start_afresh();
    app::batch_options options;
    options.macros.push_back({.path = folder.write("macro.plist", plist::write_xml(steps).text)});
    options.save = true;
    options.files.push_back(file);
    testing::internal::CaptureStderr();  // of what could not be done
    EXPECT_EQ(app::run_batch_mode(options), 0);
    testing::internal::GetCapturedStderr();
    return temporary_folder::read(file);
  }
};

TEST_F(recorded_macros, do_in_batch_mode_what_the_keys_did) {
  std::string const text = "int ab(int x) {\n\tif (x)\n\t\treturn x;\n}\n\n  one two\n  one ab\n";
  for (unsigned seed = 1; seed <= 200 && !HasFailure(); ++seed) {
    random_source random(seed);
    std::string made, log;
    plist::array const steps = record(folder.write("a.c", text), random, made, log);
    SCOPED_TRACE("seed " + std::to_string(seed) + ": " + log);
    EXPECT_EQ(replay(folder.write("a.c", text), steps), made) << plist::write_xml(steps).text;
  }
}

}  // namespace
