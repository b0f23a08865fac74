#include <mutex>
#include <thread>

#include "bundles/BundleManager.h"
#include "conventions/declared.h"
#include "grammar/tokenize_filter.h"
#include "path/temporary_folder.h"
#include "platform/utf.h"
#include "source_tree.h"
#include "styles/WynThemeManager.h"
#include "styles/scope_report.h"
#include "styles/scoped_settings.h"
#include "text/views/folding_filter.h"
#include "textview/shown_view.h"

// Views on files of languages that ship.
namespace {

using line_type = text::view::folding_filter::line_type;

class language : public shown_view_test {
 protected:
  std::shared_ptr<WynDocument> file(std::string const& name, std::string const& text) {
    return WynDocument::documentWithContentsOfFile(folder_.write(name, text));
  }
  static void wait(WynTextView const& view) {
    ASSERT_NE(view.tokenizer(), nullptr);
    ASSERT_TRUE(view.tokenizer()->wait_for(view.view()->storage->lines(), std::chrono::minutes(1)));
  }
  static std::string uuid_of(std::string const& name) {
    for (plist::value const& l : BundleManager::sharedInstance().languages())
      if (l["name"].string_or("") == name) return l["uuid"].string_or("");
    return {};
  }

  temporary_folder folder_;
};

constexpr char const* program = "// one\nint first() {\n}\n\nint second(\n    int a) {\n}\n";

TEST_F(language, is_chosen_for_the_file_and_learned_when_it_is_changed) {
  WynTextView view;
  headless::headless_view_host host(view, 7);
  plist::value told;
  auto const token = platform::notification_center::standard().observe(
      WynTextView::language_did_change, [&](auto const& n) { told = n.info; });
  view.setDocument(file("a b.c", program));
  EXPECT_EQ(view.currentMode(), "C");
  EXPECT_EQ(told["QNDocumentURL"].string_or(""), "file://" + folder_.path() + "/a%20b.c");
  EXPECT_EQ(told["QNDocumentLanguageScope"].string_or(""), "source.c");
  EXPECT_EQ(told["QNDocumentWindow"].integer_or(0), 7);
  EXPECT_TRUE(view.view()->folding_filter->has_patterns());

  view.performSelectorWithObject("changeLanguageToAndLearn:", uuid_of("Python"));
  EXPECT_EQ(view.currentMode(), "Python");
  EXPECT_EQ(view.languageChoiceForFileWithFirstLine("/x.c", ""), uuid_of("Python"));
  view.performSelectorWithObject("changeLanguageToAndLearn:", uuid_of("C"));
  EXPECT_EQ(platform::user_defaults::standard().array("WynLanguageFileBindings").size(), 0u);
  EXPECT_EQ(desktop_.beeps, 0);
  view.changeLanguageToAndLearn("no such uuid", false);
  EXPECT_EQ(view.currentMode(), "C");

  view.setDocument(WynDocument::document());
  EXPECT_EQ(view.languageUUID(), view.languageChoiceForCurrentFile());
}

TEST_F(language, shows_symbols_half_a_second_after_a_change) {
  WynTextView view;
  headless::headless_view_host host(view);
  std::map<std::string, plist::value, std::less<>> shown;
  view.bind([&](std::string_view key, plist::value const& v) { shown[std::string(key)] = v; });
  view.setDocument(file("a.c", program));
  wait(view);
  desktop_.loop().run_for(1);
  ASSERT_EQ(view.functionPopUp().size(), 2u);
  EXPECT_EQ(view.functionPopUp()[1], (styles::symbol{"second", 5}));
  EXPECT_EQ(shown["currentSymbol"].string_or(""), "No Symbol");
  view.goToLineAndColumn({6, 1});
  EXPECT_EQ(shown["currentSymbol"].string_or(""), "second");
  view.setDocument(file("b.c", program));
  EXPECT_EQ(shown["currentSymbol"].string_or("-"), "");
  view.setDocument(file("a.c", program));
  wait(view);
  view.goToLineAndColumn({6, 1});
  desktop_.loop().run_for(1);
  EXPECT_EQ(shown["currentSymbol"].string_or(""), "second");
  EXPECT_NE(styles::scope_report(view, {1, 4}).find("source.c\n"), std::string::npos);

  // An action has them made at once, and scopes that change half a second later; meanwhile those
  // that there are tell where the caret is.
  view.goToLineAndColumn({1, 1});
  view.insert_text(u"\n");
  EXPECT_EQ(view.functionPopUp()[1].line, 6u);
  view.goToLineAndColumn({1, 1});
  {
    std::lock_guard const no_scopes_yet(view.view()->storage->mutex);
    view.insert_text(u"/*");
  }
  wait(view);
  desktop_.loop().run_for(0.1);
  EXPECT_EQ(view.functionPopUp().size(), 2u);
  view.goToLineAndColumn({7, 1});
  EXPECT_EQ(shown["currentSymbol"].string_or(""), "second");
  desktop_.loop().run_for(1);
  EXPECT_EQ(view.functionPopUp().size(), 0u);

  // Another document's are there when its scopes are; a name that is the same again is told of.
  view.performSelectorWithObject("undo:", {});
  view.setDocument(file("b.c", program));
  EXPECT_EQ(shown["currentSymbol"].string_or("none"), "");
  EXPECT_TRUE(view.functionPopUp().empty());
  view.goToLineAndColumn({6, 1});
  wait(view);
  desktop_.loop().run_for(1);
  EXPECT_EQ(shown["currentSymbol"].string_or(""), "second");
  view.setDocument(file("c.c", program));
  view.goToLineAndColumn({6, 1});
  wait(view);
  desktop_.loop().run_for(1);
  EXPECT_EQ(shown["currentSymbol"].string_or(""), "second");
}

TEST_F(language, shows_symbols_of_long_texts_when_the_user_rests) {
  constexpr std::size_t count = 20000;
  std::string const text = repeated("{\"a\": [1, 2]}\n", count);
  WynTextView view;
  headless::headless_view_host host(view);
  view.setDocument(file("a.json", text));
  wait(view);
  desktop_.loop().run_for(2);
  ASSERT_EQ(view.functionPopUp().size(), count);
  view.goToLineAndColumn({2, 1});
  view.insert_text(u"\n");
  EXPECT_EQ(view.functionPopUp()[1].line, 2u);  // no key waits for the list
  wait(view);
  desktop_.loop().run_for(0.45);
  EXPECT_EQ(view.functionPopUp()[1].line, 2u);
  view.insert_text(u"\n");
  wait(view);
  desktop_.loop().run_for(2);
  ASSERT_EQ(view.functionPopUp().size(), count);
  EXPECT_EQ(view.functionPopUp()[1], (styles::symbol{"a", 4}));
  EXPECT_EQ(view.functionPopUp().back(), (styles::symbol{"a", count + 2}));
  EXPECT_EQ(view.symbolAtCaret(), "a");
}

// Of lines and of one line, while the text changes, and while the document goes.
TEST_F(language, lists_symbols_on_another_thread) {
  desktop_.busy().cancel_after = 1 << 30;
  for (char const* const end : {"\n", " "}) {
    constexpr std::size_t count = 30000;
    std::string const text = repeated("{\"a\": [1, 2]}" + std::string(end), count);
    WynTextView view;
    headless::headless_view_host host(view);
    view.setDocument(file("a.json", text));
    auto const is_listed = [&](std::size_t size) {
      for (int i = 0; i < 4000 && view.functionPopUp().size() != size; ++i) {
        wait(view);
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        desktop_.loop().run_for(0.1);
      }
      return view.functionPopUp().size() == size;
    };
    EXPECT_TRUE(is_listed(count));
    auto const shown = view.sharedFunctionPopUp();
    for (int i = 0; i < 50; ++i) {
      view.insert_text(u"[1]\n");
      desktop_.loop().run_for(i % 7 == 0 ? 0.6 : 0.01);
    }
    view.goToLineAndColumn({1, 1});
    view.insert_text(u"{\"new\": 1}\n");
    EXPECT_TRUE(is_listed(count + 1));
    EXPECT_EQ(view.functionPopUp().front(), (styles::symbol{"new", 1}));
    EXPECT_EQ(view.functionPopUp()[1].line, 52u);
    EXPECT_EQ(shown->size(), count);  // a picker's rows stay
    view.insert_text(u"{");
    desktop_.loop().run_for(0.55);
    view.setDocument(nullptr);
    EXPECT_TRUE(view.functionPopUp().empty());
  }
}

TEST_F(language, folds_outlast_a_change_of_language_and_may_be_there_from_the_start) {
  WynTextView view;
  headless::headless_view_host host(view);
  view.setDocument(file("a.c", program));
  auto& filter = *view.view()->folding_filter;
  view.goToLineAndColumn({2, 1});
  view.performSelectorWithObject("toggleFolding:", {});
  ASSERT_EQ(view.view()->lines(), 7u);
  view.changeLanguageToAndLearn(uuid_of("Diff"), false);
  EXPECT_EQ(view.view()->lines(), 7u);
  EXPECT_NE(filter.folding_type(5), decltype(filter.folding_type(0))::start);
  view.performSelectorWithObject("toggleFolding:", {});
  EXPECT_EQ(view.view()->lines(), 8u);
  view.performSelectorWithObject("toggleFolding:", {});
  EXPECT_EQ(desktop_.beeps, 1);  // the other language knows no such block
  view.changeLanguageToAndLearn(uuid_of("C"), false);
  view.performSelectorWithObject("toggleFolding:", {});
  EXPECT_EQ(filter.foldings.size(), 1u);
  view.performSelectorWithObject("unfoldAll:", {});

  settings::store().set("WynTextViewOpenFilesFoldedEnabled", true);
  auto const again = view.document();
  again->openDocument();
  view.setDocument(file("b.c", program));
  EXPECT_EQ(view.view()->folding_filter->foldings.size(), 2u);
  view.setDocument(again);  // where the user has unfolded
  EXPECT_TRUE(view.view()->folding_filter->foldings.empty());
  again->closeDocument();
}

TEST_F(language, keeps_its_own_tab_size) {
  WynTextView c, python;
  c.setDocument(file("a.c", program));
  c.setTabSize(7);
  python.setDocument(file("a.css", "a {}\n"));
  EXPECT_EQ(python.tabSize(), 7u);  // better than nothing
  python.setDocument(file("a.py", "x = 1\n"));
  EXPECT_EQ(python.tabSize(), 4u);  // the language's custom
  python.setTabSize(5);
  c.setDocument(file("b.c", program));
  EXPECT_EQ(c.tabSize(), 7u);
  c.changeLanguageToAndLearn(uuid_of("Python"), false);
  EXPECT_EQ(c.tabSize(), 5u);
}

TEST_F(language, blocks_end_where_they_are_closed) {
  shown_view shown("|", file("a.cc", ""));
  auto& filter = *shown.view.view()->folding_filter;
  auto const line = [&](std::size_t n) {
    return marked_text::utf8(std::u16string(shown.view.view()->storage->line_units(n)));
  };
  auto const load = [&](std::string const& text) {
    filter.reset();
    text::storage& storage = *shown.view.view()->storage;
    textview::view_will_change const scope(shown.view, true);
    storage.clear();
    std::u16string const units = unicode::to_utf16(text);
    storage.insert(storage.end(-1), units.begin(), units.end());
  };
  /// The last line of the block that begins there.
  auto const end_of = [&](std::size_t first) -> std::size_t {
    if (!filter.fold_if_possible(first, false)) return 0;
    auto const found = *filter.foldings.begin();
    filter.unfold_level(0);
    return found.first == first ? found.last : 0;
  };
  // Namespaces of our own sources name themselves at their ends.
  std::size_t namespaces = 0, constructors = 0;
  for (auto const& entry : std::filesystem::recursive_directory_iterator(source_file("src"))) {
    if (entry.path().extension() != ".cc") continue;
    load(temporary_folder::read(entry.path().string()));
    for (std::size_t n = 0; n < shown.view.view()->storage->lines(); ++n) {
      std::string const text = line(n);
      if (text.starts_with("namespace ") && text.ends_with(" {")) {
        std::string const name = text.substr(0, text.size() - 2);
        std::string const end = line(end_of(n));
        EXPECT_EQ(end, end == "}" ? "}" : "}  // " + name) << entry.path() << ":" << n + 1;
        ++namespaces;
      } else if (text.starts_with("      ") && text.ends_with(") {") &&
                 line(n - 1).starts_with("    : ")) {
        EXPECT_EQ(line(end_of(n)), "}") << entry.path() << ":" << n + 1;
        ++constructors;
      }
    }
  }
  EXPECT_GT(namespaces, 300u);
  EXPECT_GT(constructors, 0u);

  shown.view.changeLanguageToAndLearn(uuid_of("Python"), false);
  auto const indent = [](std::string const& text) {
    std::size_t const at = text.find_first_not_of(' ');
    return at == text.npos || text[at] == '#' ? text.npos : at;
  };
  for (auto const& entry : std::filesystem::directory_iterator("/usr/lib/python3.11")) {
    if (entry.path().extension() != ".py" || entry.file_size() > 30000) continue;
    std::string const text = temporary_folder::read(entry.path().string());
    auto const has = [&](char const* what) { return text.find(what) != text.npos; };
    if (has("\"\"\"") || has("'''") || has("\\\n") || has("\t")) continue;
    load(text);
    for (std::size_t n = 0; n < shown.view.view()->storage->lines(); ++n) {
      std::string const head = line(n);
      if (head.find("def ") != indent(head) || !head.ends_with(":")) continue;
      std::size_t last = n;
      for (std::size_t at = n + 1; at < shown.view.view()->storage->lines(); ++at) {
        if (indent(line(at)) == std::string::npos) continue;
        if (indent(line(at)) <= indent(head)) break;
        last = at;
      }
      EXPECT_EQ(end_of(n), last) << entry.path() << ":" << n + 1;
    }
  }

  struct row {
    char const *language, *text;
    std::vector<std::size_t> ends;  // of the blocks by their first lines; 0 for none
  };
  for (row const& of :
       {row{"Python",
            "class A:\n  def f(\n      a,\n  ):\n    x = [\n  1,\n    ]\n\n    # y\n"
            "  b\nc",
            {9, 6, 0, 6, 6, 0, 0, 0, 0, 0, 0}},
        row{"Python",
            "def f():\n  '''a\nb\n  '''\n  return 1\n\n\ndef g():\n  pass\n",
            {4, 3, 0, 0, 0, 0, 0, 8, 0, 0}},
        row{"YAML", "a:\n- b: 1\n  c:\n    d\n- e\n# x\nf: g\n", {4, 3, 3, 0, 0, 0, 0}}}) {
    shown.view.changeLanguageToAndLearn(uuid_of(of.language), false);
    load(of.text);
    std::vector<std::size_t> ends;
    for (std::size_t n = 0; n < of.ends.size(); ++n)
      ends.push_back(filter.folding_type(n) == line_type::start ? end_of(n) : 0);
    EXPECT_EQ(ends, of.ends) << of.text;
  }
  // What ends with a folded block takes it over.
  ASSERT_TRUE(filter.fold_if_possible(2, false));
  ASSERT_TRUE(filter.fold_if_possible(1, false));
  EXPECT_EQ(filter.foldings.size(), 1u);
  filter.unfold_level(0);
  ASSERT_TRUE(filter.fold_level(0));
  EXPECT_EQ(shown.view.view()->lines(), 4u);
}

TEST_F(language, blanks_at_the_ends_of_lines_go_when_they_mean_nothing) {
  struct row {
    char const *name, *project, *text, *saved;
  };
  char const* const tidy = "trim_trailing_whitespace = true\ninsert_final_newline = true\n";
  for (row const& of :
       {row{"a.c", tidy, "a; \n\t\nb;  ", "a;\n\nb;\n"}, row{"a.c", "", "a; \nb;", "a; \nb;"},
        row{"a.c", "", "a; \nb;\n", "a; \nb;\n"},
        row{"a.py", tidy, "a = '''x  \n'''  \n", "a = '''x  \n'''\n"},
        row{"a.md", tidy, "a  \nb", "a  \nb\n"},
        // A modeline comes first.
        row{"b.c", tidy, "// vim: nofixeol", "// vim: nofixeol"}}) {
    folder_.write(".editorconfig", std::string("root = true\n[*]\n") + of.project);
    // The caret stands in a line before, as its own is left alone.
    shown_view shown("|", file(of.name, std::string("\n") + of.text));
    shown.set(std::string("|\n") + of.text);
    shown.view.tidyBeforeSaving(conventions::declared_for(shown.view.document()->filename()));
    EXPECT_EQ(shown.text(), std::string("\n") + of.saved) << of.name << of.text;
  }
  folder_.write(".editorconfig", "root = true\n");
  for (bool const had : {false, true}) {
    for (char const* key : {"WynTrimTrailingBlanks", "WynFinalNewline"})
      settings::store().set(key, "kept");
    shown_view shown("|", file(had ? "had.c" : "none.c", had ? "a;\nb;\n" : "a; \nb;"));
    shown.set("|\na; \nb;");
    shown.view.tidyBeforeSaving({});
    EXPECT_EQ(shown.text(), had ? "\na;\nb;\n" : "\na; \nb;");
    if (!had) continue;
    shown.perform("undo:");
    EXPECT_EQ(shown.text(), "\na; \nb;");
  }
}

// Whatever is selected, up to the very end of the text, and also when saving is taken back and
// repeated.
TEST_F(language, a_line_end_put_in_by_saving_leaves_the_caret_where_it_is) {
  folder_.write(".editorconfig", "root = true\n[*]\ninsert_final_newline = true\n");
  for (char const* before : {"a\nb|", "a\n|b", "|a\nb", "a\n[b]", "[a\nb]", "a|"}) {
    shown_view shown("|", file("a.c", "x\n"));
    shown.set("[x\ny\n]");
    shown.view.insertText(std::u16string(u"z"));
    shown.view.tidyBeforeSaving(conventions::declared_for(shown.view.document()->filename()));
    EXPECT_EQ(shown.get(), "z|\n");
    shown.set(before);
    shown.view.tidyBeforeSaving(conventions::declared_for(shown.view.document()->filename()));
    std::string const after = shown.get();
    EXPECT_EQ(after, std::string(before) + "\n");
    shown.perform("undo:");
    EXPECT_EQ(shown.get(), before);
    shown.perform("redo:");
    EXPECT_EQ(shown.get(), after);
  }
}

// What says less stays in force where what says more is silent: each row takes one source away.
TEST_F(language, is_indented_as_the_one_with_most_to_say_wants) {
  folder_.write(".editorconfig", "root = true\n[e.*]\nindent_style = space\nindent_size = 3\n");
  std::string const modeline = "# vim: set sw=5 et:\n", lines = "a:\n  b:\n    c\n  d:\n    e\n";
  struct row {
    std::string name, text;
    unsigned size;
    bool soft;
    std::string size_origin, style_origin = size_origin;
  };
  auto const check = [&](row const& of) {
    shown_view shown("|", file(of.name, of.text));
    std::map<std::string, std::string> published;
    shown.view.bind([&](std::string_view key, plist::value const& value) {
      published[std::string(key)] = value.string_or("");
    });
    EXPECT_EQ(shown.view.tabSize(), of.size) << of.name << of.text;
    EXPECT_EQ(shown.view.softTabs(), of.soft) << of.name << of.text;
    EXPECT_EQ(published["tabSizeOrigin"], of.size_origin) << of.name << of.text;
    EXPECT_EQ(published["softTabsOrigin"], of.style_origin) << of.name << of.text;
    // What is chosen for the document holds whatever language it gets.
    shown.view.setTabSize(7);
    shown.view.changeLanguageToAndLearn(uuid_of("Python"), false);
    EXPECT_EQ(shown.view.tabSize(), 7u);
    EXPECT_EQ(published["tabSizeOrigin"], "set here");
    settings::store().remove("WynTextViewScopedTabSize");
  };
  for (row const& of :
       {row{"e.py", modeline + lines, 5, true, "modeline"},
        row{"e.py", lines, 3, true, ".editorconfig"}, row{"a.py", lines, 2, true, "as in the file"},
        row{"a.py", "a\n", 4, true, "Python style"}, row{"a.css", "a\n", 4, false, ""},
        row{"a.css", "a\n\tb\n", 4, false, "", "as in the file"},
        // The language has no other style.
        row{"Makefile", "a:\n  b\nc:\n  d\n  e\n", 4, false, "", "Makefile style"},
        row{"a.yaml", "a:\n\tb\n", 2, true, "YAML style"},
        row{"a.yaml", "a:\n   b:\n      c\n", 3, true, "as in the file", "YAML style"}})
    check(of);
  scoped_settings::set_value("source.python", 6, "tabSize", "WynTextViewScopedTabSize");
  check({"a.py", "a\n", 6, true, "set for Python", "Python style"});
  for (char const* key : {"WynFollowModelines", "WynFollowEditorConfig", "WynDetectIndentation"})
    settings::store().set(key, false);
  check({"e.py", modeline + lines, 4, true, "Python style"});
}

TEST_F(language, themes_are_selected_or_follow_the_desktop) {
  auto& manager = WynThemeManager::sharedInstance();
  ASSERT_GT(manager.allThemes().size(), 2u);
  EXPECT_EQ(manager.selectedTheme(), &manager.allThemes()[2]);
  desktop_.appearance().set_dark(true);
  EXPECT_TRUE(desktop_.appearance().has_dark_windows);
  EXPECT_NE(manager.selectedTheme(), &manager.allThemes()[2]);
  desktop_.appearance().set_dark(false);
  EXPECT_FALSE(desktop_.appearance().has_dark_windows);
  // Nobody has chosen anything.
  EXPECT_EQ(settings::store().string("WynThemeManagerSelectedTheme"), "");
  int changes = 0;
  auto const token = platform::notification_center::standard().observe(
      WynThemeManager::did_change, [&](auto const&) { ++changes; });
  std::string const light = manager.selectedTheme()->uuid();
  EXPECT_TRUE(manager.selectTheme(manager.allThemes()[0].uuid()));
  EXPECT_FALSE(manager.selectTheme("no such theme"));
  EXPECT_EQ(changes, 1);
  EXPECT_TRUE(desktop_.appearance().has_dark_windows);
  manager.setFollowsDesktop(true);
  EXPECT_EQ(manager.selectedTheme()->uuid(), light);
  desktop_.appearance().set_dark(true);
  EXPECT_EQ(manager.selectedTheme(), &manager.allThemes()[0]);
  EXPECT_TRUE(desktop_.appearance().has_dark_windows);
  EXPECT_EQ(changes, 3);
}

// Edits, undo, other languages, drawing and closing while the worker works: for the sanitizers.
TEST_F(language, worker_and_view_get_along) {
  std::mt19937 random(1);
  std::string const text = repeated(program, 300);
  char const* const languages[] = {"C", "C++", "Python"};
  for (int round = 0; round < 5; ++round) {
    WynTextView view;
    headless::headless_view_host host(view);
    view.setDocument(file("a" + std::to_string(round) + ".c", text));
    for (int step = 0; step < 60; ++step) {
      std::size_t const line = random() % view.view()->storage->lines();
      view.goToLineAndColumn({line + 1, 1});
      switch (random() % 6) {
        case 0:
          view.insert_text(u"/* \"\n");
          break;
        case 1:
          view.deleteBackward();
          break;
        case 2:
          view.performSelectorWithObject("undo:", {});
          break;
        case 3:
          view.changeLanguageToAndLearn(uuid_of(languages[random() % 3]), false);
          break;
        case 4:
          view.buildFunctionPopUp();
          break;
        default:
          (void)view.currentContext();
      }
      desktop_.loop().run_for(0.1);
    }
  }
}

}  // namespace
