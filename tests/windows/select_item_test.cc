#include "windows/select_item.h"

#include "bundles/bundle_fixture.h"
#include "platform/utf.h"

using namespace windows;

// What is found by letters and by keys, in what order, and what a choice executes.
namespace {

using names = std::vector<std::string>;

/// A caret in C, and somebody who notes what he is told to do.
class noting_view final : public bundles::item_view, public platform::responder {
 public:
  noting_view() {
    for (char const* selector : {"insertSnippetWithOptions:", "executeCommandWithOptions:", "undo:",
                                 "moveWordLeft:", "moveBackward:", "insertText:"})
      addMethod(selector, [this, selector](plist::value const& argument) {
        done.push_back(selector + argument["content"].string_or(argument.string_or("")));
        return plist::value();
      });
    addMethod("undoMenuTitle", [](auto const&) { return plist::value("Undo Typing"); });
    addMethod("canPaste", [](auto const&) { return plist::value(false); });
    addMethod("paste:", [](auto const&) { return plist::value(); });
  }

  std::string scopeAtCaret() const override { return "source.c comment.block.c"; }
  bool hasSelection() const override { return selects; }
  platform::responder& itemResponder() override { return *this; }
  std::optional<std::size_t> chooseFromMenu(std::vector<platform::menu_item> const&,
                                            bool) override {
    return std::nullopt;
  }

  names done;
  bool selects = false;
};

class select_item : public bundle_test {
 protected:
  select_item() {
    put("share/Bundles/A.qnbundle/info.plist", "{ name = Lang; uuid = 'B1'; }");
    item("I1", "For Loop", "scope = 'source.c'; tabTrigger = for; keyEquivalent = '@k';");
    item("I2", "Comment Line / Selection", "scope = 'comment'; keyEquivalent = '@k';");
    item("I3", "Form", "scope = 'text.html'; keyEquivalent = '@k';");
    item("I4", "Date", "keyEquivalent = '@z';");
  }

  WynSelectBundleItem& open(bool by_key = false) {
    window_ = std::make_unique<WynSelectBundleItem>(manager(), view, menus(), bindings_, by_key);
    return *window_;
  }
  /// Title with the matched units in brackets, detail, keys and trigger; a dash before what is
  /// disabled.
  names rows() {
    names result;
    for (std::size_t i = 0; i < window_->count(); ++i) {
      platform::picker_row const row = window_->row(i);
      std::string text = row.enabled ? "" : "-";
      for (std::size_t unit = 0; unit < row.title.size(); ++unit) {
        bool const matched =
            std::find(row.matched.begin(), row.matched.end(), unit) != row.matched.end();
        std::string const letter = unicode::to_utf8(row.title.substr(unit, 1));
        text += matched ? "[" + letter + "]" : letter;
      }
      text += "|" + row.detail + "|";
      for (std::string const& key : row.keys) text += key + " ";
      result.push_back(text + row.trigger);
    }
    return result;
  }
  names titles(std::string const& filter) {
    window_->set_filter(filter);
    names result;
    for (std::size_t i = 0; i < window_->count(); ++i)
      result.push_back(unicode::to_utf8(window_->row(i).title));
    return result;
  }

  noting_view view;
  std::unique_ptr<WynSelectBundleItem> window_;

 private:
  void item(std::string const& uuid, std::string const& name, std::string const& more) {
    put("share/Bundles/A.qnbundle/Snippets/" + uuid + ".qnSnippet",
        "{ name = '" + name + "'; uuid = '" + uuid + "'; content = '" + uuid + "'; " + more + " }");
  }
  static std::vector<platform::menu_item> menus() {
    return platform::menu_from_value(plist::convert(R"((
      { title = Edit; items = (
        { title = Undo; selector = 'undo:'; key = '@z'; },
        { separator = 1; },
        { title = Paste; selector = 'paste:'; },
        { title = Missing; selector = 'nobody:'; } ); },
      { title = Go; items = (
        { title = Word; items = ( { title = Left; selector = 'moveWordLeft:'; } ); } ); } ))",
                                                    nullptr));
  }

  plist::dictionary const bindings_ = *plist::convert(R"({
      '@k' = 'noop:'; '@v' = 'paste:'; '~b' = ( 'moveBackward:', 'insertText:', x );
      '#~b' = ( 'moveBackward:', 'insertText:', x ); '^x' = { '^u' = 'moveWordLeft:'; }; })",
                                                      nullptr)
                                           .as_dictionary();
};

TEST_F(select_item, a_command_says_what_it_is_for) {
  put("share/Bundles/A.qnbundle/Commands/C1.qnCommand",
      "{ name = Shape; uuid = 'C1'; command = x; help = 'Shapes it.'; requiredCommands = ( sh, { "
      "command = git; package = git; } ); beforeRunningCommand = saveActiveFile; writesTo = ( "
      "temporary, nowhere, anywhere ); }");
  open();
  EXPECT_EQ(titles("shape"), names{"Shape"});
  EXPECT_EQ(window_->help(0),
            "Shapes it. Needs sh, git. Saves the document first. Writes temporary files. May write "
            "anywhere, as what it runs does.");
  EXPECT_EQ(titles("for l"), names{"For Loop"});
  EXPECT_EQ(window_->help(0), "");
}

TEST_F(select_item, lists_items_by_score_and_then_every_action_once) {
  open();
  EXPECT_EQ(rows(), (names{"Comment Line|Lang, snippet|@k ", "For Loop|Lang, snippet|@k for",
                           "Date|Lang, snippet|@z ", "Undo Typing|Edit|@z ", "-Paste|Edit|@v ",
                           "-Missing|Edit|", "Word: Left|Go \u203A Word|^x ^u ",
                           "Move Backward, Insert Text|key binding|~b "}));
  view.selects = true;
  open();
  EXPECT_EQ(rows().front(), "Comment Selection|Lang, snippet|@k ");
}

TEST_F(select_item, ranks_by_letters_and_looks_everywhere_by_capitals) {
  open();
  struct {
    char const* filter;
    names found;
  } const cases[] = {
      {"fo", {"For Loop"}},
      {"FO", {"Form", "For Loop"}},
      {"FOx", {}},
      {"f.o!", {"For Loop"}},
      {"",
       {"Comment Line", "For Loop", "Date", "Undo Typing", "Paste", "Missing", "Word: Left",
        "Move Backward, Insert Text"}},
      {"mov", {"Move Backward, Insert Text", "Word: Left \u2014 Move Word Left"}},
      {"move word", {"Word: Left \u2014 Move Word Left"}},
      {"zzz", {}},
      {"le", {"Word: Left", "Comment Line"}},
  };
  for (auto const& [filter, found] : cases) EXPECT_EQ(titles(filter), found) << filter;
  EXPECT_EQ(rows().front(), "Word: [L][e]ft|Go \u203A Word|^x ^u ");
  titles("mwl");
  EXPECT_EQ(rows(), names{"Word: Left \u2014 [M]ove [W]ord [L]eft|Go \u203A Word|^x ^u "});
}

// Typed in any order of letters, one after the other or pasted, the same is found.
TEST_F(select_item, finds_the_same_whatever_was_typed_before) {
  names const filters = {"l", "lo", "LO", "o", "OO", "oo", "", "F", "f", "FO", "e", "et"};
  for (std::string const& before : filters)
    for (std::string const& filter : filters) {
      open();
      names const expected = titles(filter);
      open();
      titles(before);
      EXPECT_EQ(titles(filter), expected) << before << " then " << filter;
    }
}

TEST_F(select_item, executes_what_is_chosen) {
  auto& window = open();
  for (std::string const filter : {"forl", "undo", "word left", "moveb"}) {
    window.set_filter(filter);
    ASSERT_GT(window.count(), 0U) << filter;
    EXPECT_TRUE(window.accept(0)) << filter;
  }
  EXPECT_EQ(view.done, (names{"insertSnippetWithOptions:I1",
                              "undo:", "moveWordLeft:", "moveBackward:", "insertText:x"}));
  window.set_filter("missing");
  EXPECT_FALSE(window.accept(0));
}

TEST_F(select_item, says_what_a_key_does_and_why) {
  auto& window = open(true);
  EXPECT_TRUE(window.request().takes_keys);
  struct {
    char const* key;
    names meanings;
  } const cases[] = {
      {"@k",
       {"Comment Line|for comment, score 0.471 \u00B7 Lang, snippet|@k ",
        "For Loop|for source.c, score 0.05 \u00B7 Lang, snippet|@k for",
        "Form|for text.html: not here \u00B7 Lang, snippet|@k ", "-Does nothing|key binding|@k "}},
      {"@z", {"Date|everywhere, score 0 \u00B7 Lang, snippet|@z ", "Undo Typing|Edit|@z "}},
      {"^x", {"-Waits for another key|key binding|^x "}},
      {"^u", {"Move Word Left|key binding|^x ^u "}},
      {"^u", {}},
      {"^x", {"-Waits for another key|key binding|^x "}},
      {"@z", {"Date|everywhere, score 0 \u00B7 Lang, snippet|@z ", "Undo Typing|Edit|@z "}},
      {"^u", {}},
      {"#@v", {}},
      {"q", {}},
  };
  for (auto const& [key, meanings] : cases) {
    window.showKeyEquivalent(key);
    EXPECT_EQ(rows(), meanings) << key;
    EXPECT_NE(window.note(), "") << key;
  }
  window.take_key({u"z", u"z", platform::modifier::command, {}});
  EXPECT_TRUE(window.accept(1));
  EXPECT_EQ(view.done, names{"undo:"});
}

TEST(title_of_selector, is_words) {
  struct {
    char const *selector, *title;
  } const cases[] = {{"moveToEndOfLine:", "Move to End of Line"},
                     {"undo:", "Undo"},
                     {"ISIM_incrementalSearch:", "Incremental Search"},
                     {"insertHTMLTag:", "Insert HTML Tag"},
                     {"selectToLine:andColumn:", "Select to Line and Column"},
                     {":", ""},
                     {"", ""}};
  for (auto const& [selector, title] : cases) EXPECT_EQ(title_of_selector(selector), title);
}

}  // namespace
