#include "bundles/BundleManager.h"
#include "commands/command_owner.h"
#include "path/temporary_folder.h"
#include "platform/user_defaults.h"
#include "textview/shown_view.h"

// What bundle items do in a view: snippets with their fields, tab triggers, macros.

namespace {

class items : public shown_view_test {
 protected:
  static plist::value snippet(std::string const& content) {
    return plist::dictionary{{"content", content}};
  }
  static plist::dictionary step(char const* action, plist::value argument = {}) {
    return {{"command", action}, {"argument", std::move(argument)}};
  }
  ~items() override {
    for (std::string const& name : added_) BundleManager::sharedInstance().removeBundleItem(name);
  }
  void add(std::string const& name, std::string const& trigger, std::string const& content) {
    add({{"name", name}, {"tabTrigger", trigger}, {"content", content}});
  }
  void add(plist::dictionary content, bundles::item_kind kind = bundles::item_kind::snippet) {
    std::string const name = content["name"].string_or("");
    content["uuid"] = name;
    auto& manager = BundleManager::sharedInstance();
    manager.addBundleItem(BundleItem::bundleItemWithContent(manager, std::move(content), kind));
    added_.push_back(name);
  }
  static void type(shown_view& shown, std::u16string_view keys) {
    for (char16_t const key : keys)
      key == u'\t' ? shown.perform("insertTab:") : shown.view.insertText(std::u16string(1, key));
  }

 private:
  strings added_;
};

struct filled_snippet {
  char const* before;   // the view
  char const* content;  // inserted
  char16_t const* typed;
  char const* after;
};

filled_snippet const filled[] = {
    {"|", "for (${1:i} = 0; $1 < ${2:n}; $1++) $0;", u"k\tx.size()\t",
     "for (k = 0; k < x.size(); k++) |;"},
    {"a[b]c", "<${1:$QN_SELECTED_TEXT}>$0", u"", "a<[b]>c"},
    {"  |", "if\n\t$1\nend", u"x", "  if\n  \tx|\n  end"},
    {"|", "${1:foo ${2:bar}} $2!$0", u"x\t", "x !|"},
    {"|", "${1/(.*)/\\U$1/} ${1:name}$0", u"ab", "AB ab|"},
    {"x|y", "$0", u"z", "xz|y"},
    {"|", "no fields", u"", "no fields|"},
    {"{\n}c", "(${1:k})$0", u"z", "(z|)\n(z)c"},
    {"{a\nb\n}c", "<${1:k}=$1 ${2:v}>$0", u"z\tw\t!", "<z=z w>!|a\n<z=z w>!b\n<z=z w>!c"},
    {"{\n}", "${1/./x/g}${1:k}\n${2:v}$0", u"ab\t\n-\t", "xxab\n\n-|\nxxab\n\n-"},
};

TEST_F(items, snippets_are_filled_in_and_taken_back) {
  for (filled_snippet const& each : filled) {
    shown_view shown(each.before);
    std::string const before = shown.text();
    shown.perform("insertSnippetWithOptions:", snippet(each.content));
    type(shown, each.typed);
    EXPECT_EQ(shown.get(), each.after) << each.content;
    std::string const after = shown.text();
    int steps = 0;
    while (shown.text() != before && steps < 100) shown.perform("undo:"), ++steps;
    EXPECT_EQ(shown.text(), before) << each.content;
    while (steps-- > 0) shown.perform("redo:");
    EXPECT_EQ(shown.text(), after) << each.content;
  }
}

// The same text twice, and again where it comes out otherwise.
TEST_F(items, a_snippet_fits_its_place_each_time) {
  auto const inserted = [](char const* before, unsigned tab_size, bool soft) {
    shown_view shown(before);
    shown.view.setTabSize(tab_size);
    shown.view.setSoftTabs(soft);
    shown.perform("insertSnippet:", snippet("{\n\t${1:k}|$1\n}"));
    type(shown, u"z");
    return shown.text();
  };
  for (int twice = 0; twice < 2; ++twice) {
    EXPECT_EQ(inserted("|", 2, true), "{\n  z|z\n}");
    EXPECT_EQ(inserted("  |", 2, true), "  {\n    z|z\n  }");
    EXPECT_EQ(inserted("|", 3, true), "{\n   z|z\n}");
    EXPECT_EQ(inserted("|", 3, false), "{\n\tz|z\n}");
  }
}

TEST_F(items, a_snippet_ends_with_an_edit_outside_its_field) {
  shown_view shown("|");
  std::string field;
  shown.view.bind([&](std::string_view key, plist::value const& value) {
    if (key == "snippetField") field = value.string_or("?");
  });
  shown.perform("insertSnippet:", snippet("f(${1:a}, ${2:b})$0"));
  EXPECT_EQ(field, "Field 1 of 2");
  EXPECT_EQ(shown.view.snippetFields().size(), 1u);
  shown.perform("insertTab:");
  EXPECT_EQ(field, "Field 2 of 2");
  shown.perform("insertBacktab:");
  EXPECT_EQ(shown.get(), "f([a], b)");
  shown.perform("moveToEndOfDocument:");
  shown.perform("insertTab:");
  EXPECT_EQ(shown.get(), "f(a, [b])");
  shown.perform("moveToEndOfDocument:");
  EXPECT_EQ(field, "Field 2 of 2");
  shown.view.insertText(std::u16string_view(u";"));
  EXPECT_EQ(field, "");
  shown.perform("insertTab:");
  EXPECT_EQ(shown.text(), "f(a, b);\t");
}

TEST_F(items, code_runs_when_the_snippet_is_inserted) {
  shown_view shown("  [x]");
  shown.perform("insertSnippet:", snippet("`printf %s \"$QN_SELECTED_TEXT-$QN_LINE_NUMBER\"`$1"));
  EXPECT_EQ(shown.text(), "  x-1");
}

// What is typed before Tab, in a C file, becomes the shipped snippet; macros hold its text.
TEST_F(items, triggers_are_expanded_and_recorded) {
  temporary_folder const folder;
  shown_view shown("|", WynDocument::documentWithContentsOfFile(folder.write("a.c", "")));
  shown.perform("toggleMacroRecording:");
  EXPECT_TRUE(shown.view.isRecordingMacro());
  type(shown, u"main\t");
  std::string const expanded = shown.text();
  EXPECT_NE(expanded.find("int main("), std::string::npos) << expanded;
  shown.perform("toggleMacroRecording:");
  shown.perform("undo:");
  EXPECT_EQ(shown.text(), "");
  shown.perform("playScratchMacro:");
  EXPECT_EQ(shown.text(), expanded);
  shown.perform("undo:");
  EXPECT_EQ(shown.text(), "");
}

// Without an item that has a gesture the menu opens at once.
TEST_F(items, strokes_of_the_right_button_execute_items) {
  temporary_folder const folder;
  auto& manager = BundleManager::sharedInstance();
  auto const item = manager.bundleItemsForTabTrigger("main", "source.c").front();
  item->setMouseGesture("DR");
  std::vector<platform::menu_item> const menu(1);
  struct {
    std::vector<platform::point> moves;
    bool executes, opens_menu, beeps;
  } const cases[] = {{{{60, 90}, {62, 92}, {95, 94}}, true, false, false},
                     {{{60, 50}, {61, 52}}, false, true, false},
                     {{{60, 90}}, false, false, true},
                     {{}, false, true, false}};
  for (auto const& [moves, executes, opens_menu, beeps] : cases) {
    SCOPED_TRACE(moves.size());
    shown_view shown("|", WynDocument::documentWithContentsOfFile(folder.write("a.c", "")));
    shown.view.setContextMenu([menu] { return menu; });
    desktop_.beeps = 0;
    auto const mouse = [](platform::point at) {
      return platform::mouse_event{at, platform::mouse_button::right, 1, 0};
    };
    for (bool const interrupted : {true, false}) {
      shown.view.mouse_down(mouse({60, 50}));
      for (platform::point const& at : moves) shown.view.mouse_dragged(mouse(at));
      EXPECT_TRUE(shown.host.context_menu.empty());
      if (interrupted) shown.press(std::u16string(1, platform::function_key::escape));
      shown.view.mouse_up(mouse(moves.empty() ? platform::point{60, 50} : moves.back()));
      EXPECT_EQ(!shown.text().empty(), executes && !interrupted);
      EXPECT_EQ(!shown.host.context_menu.empty(), opens_menu && !interrupted);
      EXPECT_EQ(desktop_.beeps, beeps && !interrupted ? 1 : 0);
    }
  }
  item->setMouseGesture("");
  shown_view shown("|");
  shown.view.setContextMenu([menu] { return menu; });
  shown.view.mouse_down({{60, 50}, platform::mouse_button::right, 1, 0});
  EXPECT_FALSE(shown.host.context_menu.empty());
}

TEST_F(items, what_stands_before_tab_may_be_long) {
  std::string const trigger(300, 'x');
  add("Long", trigger, "y");
  for (char const* before : {"", " ", "- ", "x", "\U0001d400", "e\u0301"}) {
    shown_view shown(before + trigger + "|");
    std::string const typed = shown.text();
    shown.perform("insertTab:");
    bool const begins_word = *before == '\0' || std::string_view(before).ends_with(' ');
    EXPECT_EQ(shown.text(), begins_word ? before + std::string("y") : typed + "\t");
  }
}

struct refusing final : commands::command_owner {
  bool willExecuteCommand(commands::command_options const&) override { return false; }
  bool takesOutput(commands::finished_command const&) override { return false; }
  void openAsNewDocument(text::text_block const&) override {}
};

// In whatever step it was, of whatever macro in it.
TEST_F(items, a_cancelled_step_ends_all_of_a_macro) {
  add("One", "tie", "1");
  add("Two", "tie", "2");
  refusing owner;
  auto const command = [](char const* script) {
    return plist::dictionary{{"command", script}, {"input", "none"}, {"output", "discard"}};
  };
  char const* const endless = "while :; do :; done";
  struct {
    char const* text;
    char const* action;
    plist::value argument;
    bool saves_first;
  } const cases[] = {
      {"a|", "executeCommandWithOptions:", command(endless), false},
      {"a|", "executeCommandWithOptions:", command("exit 0"), true},
      {"a|", "insertSnippet:", snippet("`" + std::string(endless) + "`"), false},
      {"tie|", "expandCodeSnippet:", {}, false},
      {"while : ;do :;done|", "executeSelectionReplacingSelection:", {}, false},
      {"|", "findWithOptions:",
       plist::dictionary{{"findString", "a+(?=\\d)"}, {"regularExpression", true}}, false},
  };
  desktop_.busy().cancel_after = 2;
  for (auto const& [text, action, argument, saves_first] : cases) {
    std::string const long_text = *text == '|' ? text + std::string(200'000, 'a') : text;
    shown_view shown(long_text);
    if (saves_first) shown.view.setCommandOwner(&owner);
    plist::array const inner = {step(action, argument), step("insertText:", "x")};
    plist::array const outer = {step("playMacroWithOptions:", inner), step("insertText:", "y")};
    shown.perform("playMacroWithOptions:", outer);
    EXPECT_EQ(shown.get(), long_text) << action;
    shown.perform("playMacroWithOptions:", plist::array{step("insertText:", "z")});
    EXPECT_NE(shown.text().find('z'), std::string::npos) << action;
  }
}

// The window goes on with the next event then.
TEST_F(items, memory_that_runs_out_in_a_step_ends_the_macro_alone) {
  struct : platform::responder {
    void lack_memory() {
      addMethod("lackMemory:", [](plist::value const&) -> plist::value { throw std::bad_alloc(); });
    }
  } greedy;
  greedy.lack_memory();
  shown_view shown;
  shown.view.setNextResponder(&greedy);
  plist::array const failing = {step("insertText:", "a"), step("lackMemory:")};
  plist::array const inner = {step("playMacroWithOptions:", failing)};
  for (int n = 0; n < 40; ++n)
    EXPECT_THROW(shown.perform("playMacroWithOptions:", inner), std::bad_alloc);
  shown.perform("playMacroWithOptions:", plist::array{step("insertText:", "b")});
  EXPECT_EQ(shown.text(), std::string(40, 'a') + "b");
  shown.perform("toggleMacroRecording:");
  shown.perform("insertText:", "c");
  shown.perform("toggleMacroRecording:");
  shown.perform("playScratchMacro:");
  EXPECT_EQ(shown.get(), std::string(40, 'a') + "bcc|");
}

// What comes to nothing leaves the letters that stood for it.
TEST_F(items, an_item_that_is_cancelled_or_fails_leaves_its_tab_trigger) {
  struct {
    char const *kind, *key, *text;
  } const cases[] = {{"snippet", "content", "`while :; do :; done`"},
                     {"snippet", "other", "no content"},
                     {"command", "command", "while :; do :; done"},
                     {"command", "command", "#!/no/such/interpreter"},
                     {"command", "command", "refused"}};
  refusing owner;
  for (auto const& [kind, key, text] : cases) {
    bool const is_snippet = std::string_view(kind) == "snippet";
    add({{"name", text}, {"tabTrigger", "trig"}, {key, text}},
        is_snippet ? bundles::item_kind::snippet : bundles::item_kind::command);
    desktop_.busy().cancel_after = 2;
    shown_view shown("x trig|y");
    bool const is_refused = std::string_view(text) == "refused";
    if (is_refused) shown.view.setCommandOwner(&owner);
    shown.perform("toggleMacroRecording:");
    // It would write something when it is played, without the owner.
    if (is_refused)
      shown.perform("executeCommandWithOptions:",
                    plist::dictionary{{"command", "echo no"}, {"output", "insertAsText"}});
    errors_of([&shown] { shown.perform("expandCodeSnippet:"); });
    EXPECT_EQ(shown.get(), "x trig|y") << text;
    shown.perform("insertText:", "z");
    shown.perform("toggleMacroRecording:");
    shown.view.setCommandOwner(nullptr);
    shown.perform("playScratchMacro:");
    EXPECT_EQ(shown.get(), "x trigzz|y") << text;
    shown.perform("undo:");
    shown.perform("undo:");
    EXPECT_EQ(shown.get(), "x trig|y") << text;
    BundleManager::sharedInstance().removeBundleItem(text);
  }
}

TEST_F(items, macros_leave_clipboard_and_find_options_as_they_were) {
  shown_view shown("[a]b");
  shown.perform("copy:");
  plist::array const steps = {
      plist::dictionary{{"command", "selectAll:"}},
      plist::dictionary{{"command", "copy:"}},
      plist::dictionary{{"command", "moveToEndOfDocument:"}},
      plist::dictionary{{"command", "paste:"}},
      plist::dictionary{{"command", "insertText:"}, {"argument", "!"}},
  };
  shown.perform("playMacroWithOptions:", plist::dictionary{{"commands", steps}});
  EXPECT_EQ(shown.get(), "abab!|");
  shown.perform("paste:");
  EXPECT_EQ(shown.get(), "abab!a|");
  shown.perform("playMacroWithOptions:",
                plist::dictionary{{"commands", steps}, {"useGlobalClipboard", true}});
  shown.perform("undo:");
  shown.perform("moveToEndOfDocument:");
  shown.perform("paste:");
  EXPECT_EQ(shown.get(), "abab!aabab!a|");
}

TEST_F(items, a_macro_that_plays_itself_ends) {
  shown_view shown("|");
  plist::value macro =
      plist::array{plist::dictionary{{"command", "insertText:"}, {"argument", "x"}}};
  for (int depth = 0; depth < 100; ++depth)
    macro =
        plist::array{plist::dictionary{{"command", "playMacroWithOptions:"}, {"argument", macro}}};
  EXPECT_NE(errors_of([&] { shown.perform("playMacroWithOptions:", macro); }).find("plays itself"),
            std::string::npos);
  EXPECT_EQ(shown.text(), "");
}

}  // namespace
