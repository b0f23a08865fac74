#include <thread>

#include "app_fixture.h"
#include "path/path.h"
#include "windows/WynProjectController.h"
#include "windows/project_variables.h"
#include "windows/tab_titles.h"

// What a project window does with its files: tabs, what is asked when they close, and what comes
// back from the project's file.
namespace {

namespace fs = std::filesystem;

class project_windows : public app_test {
 protected:
  project_windows() { make(); }
  void make() {
    project.reset();
    project = std::make_unique<WynProjectController>(app());
    project->showWindow();
  }
  bool open(std::string const& name) { return project->selectItem(folder / name); }
  void type(std::u16string const& text) { project->textView().insertText(text); }
  /// The titles of the tabs; a star stands before those with unsaved changes, the selected one is
  /// in brackets.
  strings tabs() {
    strings result;
    for (std::size_t n = 0; n < project->tabs().size(); ++n) {
      auto const& document = project->tabs()[n].document;
      std::string const title =
          (document && document->isDocumentEdited() ? "*" : "") + project->tabs()[n].title;
      result.push_back(n == project->selectedTab() ? "[" + title + "]" : title);
    }
    return result;
  }
  std::string window_title() {
    return static_cast<headless::headless_window&>(project->window()).title;
  }
  void refresh() {
    project->refresh();
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (project->tree().is_busy() && std::chrono::steady_clock::now() < end) {
      desktop.loop().run_posted();
      std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
  }

  std::unique_ptr<WynProjectController> project;
};

TEST_F(project_windows, open_each_file_in_one_tab) {
  for (char const* name : {"a", "b", "c.png", "d"}) folder.write(name, name);
  EXPECT_EQ(tabs(), titles({"[untitled]"}));
  EXPECT_TRUE(open("a"));
  EXPECT_EQ(tabs(), titles({"[a]"}));  // in place of the empty one
  EXPECT_TRUE(open("b"));
  EXPECT_FALSE(open("c.png"));
  EXPECT_FALSE(open("none"));
  EXPECT_TRUE(open("./a"));
  EXPECT_EQ(tabs(), titles({"[a]", "b"}));
  EXPECT_TRUE(open("d"));
  project->moveTab(2, 0);
  EXPECT_EQ(tabs(), titles({"[d]", "a", "b"}));
  project->moveTab(1, 2);
  EXPECT_EQ(tabs(), titles({"[d]", "b", "a"}));
  project->textView().tryToPerformWith("goToPreviousFile:", {});
  EXPECT_EQ(tabs(), titles({"d", "b", "[a]"}));
  project->textView().tryToPerformWith("goToNextFile:", {});
  EXPECT_EQ(tabs(), titles({"[d]", "b", "a"}));

  project->textView().tryToPerformWith("performCloseTab:", {});
  EXPECT_EQ(tabs(), titles({"[b]", "a"}));
  EXPECT_TRUE(project->performCloseTab(1));
  EXPECT_TRUE(project->performCloseTab(0));
  EXPECT_EQ(tabs(), titles({"[untitled]"}));
  fs::remove(folder / "a");
  EXPECT_TRUE(project->reopenClosedTab());  // b; then d, as a is gone
  EXPECT_TRUE(project->reopenClosedTab());
  EXPECT_FALSE(project->reopenClosedTab());
  EXPECT_EQ(tabs(), titles({"b", "[d]"}));
}

// Each step: what is done, and the tabs then.
TEST_F(project_windows, go_through_tabs_by_use_and_move_them) {
  for (char const* name : {"a", "b", "c"}) {
    folder.write(name, name);
    open(name);
  }
  auto const settle = [&] { project->tabWasSelected(project->tabs()[project->selectedTab()].id); };
  for (auto const& [done, expected] :
       std::vector<std::pair<std::string, strings>>{{"goToNextUsedFile:", {"a", "[b]", "c"}},
                                                    {"goToNextUsedFile:", {"[a]", "b", "c"}},
                                                    {"goToNextUsedFile:", {"a", "b", "[c]"}},
                                                    {"goToPreviousUsedFile:", {"[a]", "b", "c"}},
                                                    {"release", {"[a]", "b", "c"}},
                                                    {"goToNextUsedFile:", {"a", "b", "[c]"}},
                                                    {"release", {"a", "b", "[c]"}},
                                                    {"goToNextUsedFile:", {"[a]", "b", "c"}},
                                                    {"moveTabRight:", {"b", "[a]", "c"}},
                                                    {"moveTabLeft:", {"[a]", "b", "c"}},
                                                    {"moveTabLeft:", {"b", "c", "[a]"}},
                                                    {"performCloseOtherTabs:", {"[a]"}},
                                                    {"reopenClosedTab:", {"a", "[b]"}}}) {
    done == "release" ? settle() : void(project->textView().tryToPerformWith(done, {}));
    EXPECT_EQ(tabs(), expected) << done;
  }
}

TEST_F(project_windows, tell_tabs_with_the_same_name_apart) {
  using windows::tab_titles;
  EXPECT_EQ(tab_titles({{"a", "/p/q/a"}, {"a", "/p/r/a"}, {"b", "/p/q/b"}, {"untitled", ""}}),
            strings({"a \u2014 q", "a \u2014 r", "b", "untitled"}));
  EXPECT_EQ(tab_titles({{"a", "/x/q/a"}, {"a", "/y/q/a"}, {"a", "/a"}, {"a", ""}}),
            strings({"a \u2014 x/q", "a \u2014 y/q", "a", "a"}));
  EXPECT_EQ(tab_titles({{"a", "/p/a"}, {"a", "/p/a"}}), strings({"a \u2014 p", "a \u2014 p"}));
}

// Of 200 tabs a key changes none, and the first one on a line the mark of one.
TEST_F(project_windows, show_edited_marks_one_at_a_time) {
  for (int n = 0; n < 200; ++n) open(path::name(folder.write(std::to_string(n), "x")));
  auto const& bar = *static_cast<headless::headless_window&>(project->window()).tab_bar;
  int const settings = bar.settings, updates = bar.updates;
  for (int n = 0; n < 5; ++n) type(u"y");
  EXPECT_EQ(bar.settings - settings, 0);
  EXPECT_EQ(bar.updates - updates, 1);
  EXPECT_TRUE(bar.tabs.back().is_edited);
}

TEST_F(project_windows, give_tabs_to_other_windows) {
  for (char const* name : {"a", "b"}) folder.write(name, name);
  open("a");
  type(u"edited ");
  open("b");
  auto& other = *new WynProjectController(app());
  app().adopt(std::unique_ptr<windows::document_window>(&other));
  other.showWindow();
  other.tabWasDroppedHere(project->tabs()[0].id, 0);
  EXPECT_EQ(tabs(), strings({"[b]"}));
  ASSERT_EQ(other.tabs().size(), 2u);
  EXPECT_EQ(other.tabs()[0].path, folder / "a");
  EXPECT_TRUE(other.tabs()[0].document->isDocumentEdited());
  EXPECT_EQ(other.selectedTab(), 0u);
  other.tabWasDraggedOut(other.tabs()[0].id);
  EXPECT_EQ(other.tabs().size(), 1u);
  auto& front = *app().orderedControllers().front();
  EXPECT_EQ(front.textDocument()->filename(), folder / "a");
  perform(front, "undo:");
  EXPECT_FALSE(front.isDocumentEdited());
  EXPECT_EQ(alerts(), strings());
}

// What is chosen for a document holds when another tab has been shown, and is another one's not.
TEST_F(project_windows, keep_what_is_chosen_for_each_document) {
  folder.write(".editorconfig", "root = true\n[*]\nend_of_line = lf\n");
  for (char const* name : {"a", "b"}) folder.write(name, "x\n");
  open("a");
  project->textView().tryToPerformWith("takeLineEndingFrom:", 2);
  open("b");
  type(u"y");
  project->textDocument()->setLineEnding(line_ending::CRLF);
  EXPECT_TRUE(project->saveAllDocuments());
  EXPECT_EQ(folder.read(folder / "a"), "x\r\n");
  EXPECT_EQ(folder.read(folder / "b"), "yx\n");
}

TEST_F(project_windows, have_variables_that_are_edited_as_a_list) {
  auto const variable = [](char const* name, char const* value, bool enabled) {
    return plist::dictionary{{"variable", name}, {"value", value}, {"enabled", enabled}};
  };
  plist::array const old = {variable("B", "1", true), variable("OFF", "x", false),
                            variable("A", "a \"b\"", true)};
  std::string const shown = windows::shown_variables(old);
  EXPECT_EQ(windows::edited_variables(shown, old), old) << shown;
  EXPECT_EQ(windows::edited_variables("{ C = 3; A = x; }", old),
            (plist::array{variable("OFF", "x", false), variable("A", "x", true),
                          variable("C", "3", true)}));
  for (char const* bad : {"", "{", "( A )", "{ \"a b\" = 1; }", "{ A = ( 1 ); }", "{ 1A = 1; }"})
    EXPECT_EQ(windows::edited_variables(bad, old), std::nullopt) << bad;
}

// A folder that nobody can write doesn't keep the window open.
TEST_F(project_windows, close_though_the_project_can_not_be_written) {
  std::string const file = folder / "none/x.qnproj";
  project->initWithContentsOfFile(file);
  for (char const* button : {"Cancel", "Close Anyway"}) {
    answer("The project " + file + " is not saved.", button);
    EXPECT_EQ(project->windowShouldClose(), button == std::string("Close Anyway"));
  }
}

TEST_F(project_windows, keep_each_tab_s_text_and_caret) {
  for (char const* name : {"a", "b"}) folder.write(name, "one\ntwo\n");
  open("a");
  project->textView().tryToPerformWith("moveToEndOfDocument:", {});
  type(u"x");
  open("b");
  open("a");
  type(u"y");
  EXPECT_EQ(tabs(), titles({"[*a]", "b"}));
  EXPECT_EQ(project->numberOfModifiedDocuments(), 1u);
  EXPECT_TRUE(project->saveAllDocuments());
  EXPECT_EQ(folder.read(folder / "a"), "one\ntwo\nxy");
  EXPECT_FALSE(project->isDocumentEdited());
}

// Each row: how many documents are edited, the answer, and whether the window may close and what
// is on the disk then.
TEST_F(project_windows, ask_before_text_is_lost) {
  struct row {
    int edited;
    char const *button, *asked;
    bool closes, saved;
  };
  std::string const one = "Do you want to save the changes you made in the document \u201c1\u201d?";
  std::string const many =
      "You have 2 documents with unsaved changes. Do you want to save these changes before "
      "closing?";
  for (auto const& [edited, button, asked, closes, saved] :
       {row{0, "", "", true, false},
        {1, "Save", one.c_str(), true, true},
        {1, "Cancel", one.c_str(), false, false},
        {1, "Don't Save", one.c_str(), true, false},
        {2, "Save All", many.c_str(), true, true},
        {2, "Cancel", many.c_str(), false, false},
        {2, "Don't Save", many.c_str(), true, false}})
    for (bool const tabs_only : {false, true}) {
      make();
      for (int n = 0; n < 3; ++n) {
        open(path::name(folder.write(std::to_string(n), "")));
        if (1 <= n && n <= edited) type(u"x");
      }
      answer(asked, button);
      EXPECT_EQ(tabs_only ? project->performCloseAllTabs() : project->windowShouldClose(), closes)
          << edited << button;
      EXPECT_EQ(alerts(), edited ? strings({std::string(asked) + "|" + button}) : strings());
      EXPECT_EQ(folder.read(folder / "1"), saved ? "x" : "");
      if (tabs_only) EXPECT_EQ(tabs().size(), closes ? 1u : 3u);
    }
}

TEST_F(project_windows, follow_files_that_others_delete) {
  for (char const* name : {"a", "b", "c"}) folder.write(name, "x");
  project->initWithFiles({folder.path()});
  for (char const* name : {"a", "b", "c"}) open(name);
  type(u"edited ");
  for (char const* name : {"b", "c"}) fs::remove(folder / name);
  refresh();
  EXPECT_EQ(tabs().front(), "a");
  ASSERT_EQ(tabs().size(), 2u);
  EXPECT_EQ(tabs().back().substr(0, 3), "[*c");
  EXPECT_NE(project->tree().item_with_path(folder / "c"), nullptr);
  EXPECT_EQ(project->tree().item_with_path(folder / "b"), nullptr);
  project->saveAllDocuments();
  EXPECT_EQ(folder.read(folder / "c"), "edited x");
}

TEST_F(project_windows, come_back_from_their_file) {
  fs::create_directories(folder / "p/src/.git");
  for (char const* name : {"p/src/a.c", "p/src/a.h", "p/src/b", "p/src/.git/x", "p/other"})
    folder.write(name, "one\ntwo\nthree\n");
  std::string const file = folder / "p/x.qnproj";
  EXPECT_TRUE(project->initWithContentsOfFile(file));
  project->tree().add_files({folder / "p/src"}, nullptr, 0);
  project->tree().add_files({folder / "p/other"}, &project->tree().add_group("G", nullptr, 1), 0);
  project->setProjectVariables(
      {plist::dictionary{{"variable", "V"}, {"value", "1"}, {"enabled", true}}});
  for (char const* name : {"p/src/a.c", "p/other", "p/src/b"}) open(name);
  project->textView().tryToPerformWith("moveDown:", {});
  project->moveTab(2, 0);
  project->performCloseTab(1);
  EXPECT_TRUE(project->windowShouldClose());  // which saves it unasked
  EXPECT_EQ(alerts(), strings());

  project.reset();
  fs::rename(folder / "p", folder / "q");
  fs::remove(folder / "q/other");
  make();
  EXPECT_TRUE(project->initWithContentsOfFile(folder / "q/x.qnproj"));
  EXPECT_EQ(tabs(), titles({"[b]"}));  // the other is no longer there
  EXPECT_EQ(project->tabs()[0].path, folder / "q/src/b");
  EXPECT_EQ(project->textView().view()->selection.last().base.pos().line, 1u);
  auto const environment = project->environmentVariables();
  EXPECT_EQ(environment.at("V"), plist::value("1"));
  EXPECT_EQ(environment.at("QN_PROJECT_DIRECTORY"), plist::value(folder / "q"));
  EXPECT_EQ(environment.at("QN_PROJECT_FILEPATH"), plist::value(folder / "q/x.qnproj"));
  EXPECT_EQ(window_title(), "b \u2014 x");
  EXPECT_TRUE(open("q/src/a.c"));
  EXPECT_TRUE(project->goToFileCounterpart());
  EXPECT_EQ(tabs(), titles({"b", "a.c", "[a.h]"}));
  EXPECT_TRUE(project->goToFileCounterpart());
  EXPECT_EQ(tabs(), titles({"b", "[a.c]", "a.h"}));
}

TEST_F(project_windows, never_overwrite_a_project_file_unread) {
  std::string const file = folder.write("x.qnproj", "<plist><dict>");
  EXPECT_FALSE(project->initWithContentsOfFile(file));
  EXPECT_EQ(alerts().size(), 1u);
  project->tree().add_files({folder.path()}, nullptr, 0);
  EXPECT_TRUE(project->windowShouldClose());
  EXPECT_EQ(folder.read(file), "<plist><dict>");
  EXPECT_TRUE(project->saveProject());

  // Changed by another program meanwhile.
  for (char const* button : {"Don't Overwrite", "Overwrite"}) {
    folder.write("x.qnproj", "theirs");
    answer("The project " + file + " has been changed by another program.", button);
    EXPECT_EQ(project->saveProject(), button == std::string("Overwrite"));
    EXPECT_EQ(folder.read(file) == "theirs", button != std::string("Overwrite"));
  }
}

TEST_F(project_windows, are_scratch_until_they_are_saved) {
  folder.write("a", "");
  fs::create_directory(folder / "sub");
  folder.write("sub/b", "");
  project->initWithFiles({folder / "sub/b", folder / "a"});
  EXPECT_EQ(project->projectDirectory(), folder.path());
  EXPECT_EQ(project->findProjectDirectory(), folder.path());
  EXPECT_TRUE(project->windowShouldClose());
  EXPECT_EQ(alerts(), strings());
  desktop.panels().save_answers.push_back(platform::save_answer{folder / "new.qnproj", 0, 0});
  EXPECT_TRUE(project->saveProjectAs());
  EXPECT_FALSE(project->isScratchProject());
  EXPECT_EQ(project->displayName(), "new");
  EXPECT_TRUE(fs::exists(folder / "new.qnproj"));

  make();
  EXPECT_EQ(project->displayName(), "Project");
  WynProjectController second(app());
  EXPECT_EQ(second.displayName(), "Project 2");
  second.tree().add_files({folder / "a"}, nullptr, 0);
  answer("Do you want to save the project \u201cProject 2\u201d?", "Don't Save");
  EXPECT_TRUE(second.windowShouldClose());
  EXPECT_EQ(alerts().size(), 1u);
}

TEST_F(project_windows, find_and_replace_in_their_files_by_name) {
  fs::create_directory(folder / "tree");
  folder.write("tree/a.txt", "x 1\ny\n");
  folder.write("tree/b.txt", "x 2 x 3\n");
  project->initWithFiles({folder / "tree", folder / "tree/b.txt"});
  open("tree/a.txt");
  type(u"x 0 ");
  plist::dictionary options{
      {"findString", "X ([0-9])?"}, {"regularExpression", true}, {"ignoreCase", true}};
  auto const perform = [&] { return project->findInProjectWithOptions(options).elements(); };
  auto const found = perform();
  strings places;
  for (auto const& each : found)
    places.push_back(path::name(each["item"].string_or("")) + " " + each["fromLine"].string_or("") +
                     ":" + each["fromColumn"].string_or("") + "-" + each["toColumn"].string_or("") +
                     (each["memento"].integer_or(-1) < 0 ? "" : " open"));
  EXPECT_EQ(places,
            strings({"a.txt 1:1-4 open", "a.txt 1:5-8 open", "b.txt 1:1-4", "b.txt 1:5-8"}));
  options["action"] = "replace";
  options["replaceString"] = "<$1>";
  options["replacements"] = plist::array{found[0], found[1], found[3]};
  strings said;
  for (auto const& each : perform()) said.push_back(each["lineContent"].string_or(""));
  EXPECT_EQ(said, strings({"a.txt: 2 replaced", "b.txt: 1 replaced"}));
  EXPECT_EQ(project->textDocument()->storage().whole_text(), u"<0> <1>\ny\n");
  EXPECT_EQ(content_of_file(folder / "tree/b.txt"), "x 2 <3>\n");
  // Again, without a new search: no text is the one that was searched.
  EXPECT_TRUE(perform().empty());
  options["findString"] = "(";
  EXPECT_TRUE(perform().empty());
}

}  // namespace
