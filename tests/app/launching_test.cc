#include "app/file_argument.h"
#include "app/line_place.h"
#include "app_fixture.h"
#include "path/path.h"

using namespace app;

// What opens which file in which window, and where in it.
namespace {

struct place {
  std::string path;
  std::size_t line, column;
  friend bool operator==(place const&, place const&) = default;
};

void PrintTo(place const& p, std::ostream* out) {
  *out << p.path << " at " << p.line << ":" << p.column;
}

TEST(file_argument, a_file_of_that_very_name_wins) {
  temporary_folder folder;
  for (char const* name : {"a", "a:3", "b"}) folder.write(name, "");
  auto const parsed = [&](char const* argument) {
    file_argument const f = parse_file_argument(argument, folder.path());
    text::line_place const at = f.place.value_or(text::line_place{});
    return place{f.path, at.line, at.column};
  };
  struct {
    char const *argument, *name;
    std::size_t line, column;
  } const cases[] = {
      {"a", "a", 0, 0},       {"a:3", "a:3", 0, 0},
      {"a:3:4", "a:3", 4, 0}, {"a:5", "a", 5, 0},
      {"b:5:6", "b", 5, 6},   {"new:5:6", "new", 5, 6},
      {"new:7", "new", 7, 0}, {"b:0", "b:0", 0, 0},
      {"b:x", "b:x", 0, 0},   {"b:99999999999999999999", "b:99999999999999999999", 0, 0}};
  for (auto const& c : cases)
    EXPECT_EQ(parsed(c.argument), (place{folder / c.name, c.line, c.column}));
  EXPECT_EQ(parsed((folder / "b:2").c_str()), (place{folder / "b", 2, 0}));
}

TEST(line_place, is_a_line_or_a_line_and_a_column) {
  auto const parsed = [](char const* text) {
    auto const p = parse_line_place(text);
    return p ? std::to_string(p->line) + "/" + std::to_string(p->column) : "none";
  };
  EXPECT_EQ(parsed("12"), "12/0");
  EXPECT_EQ(parsed(" 12:3 "), "12/3");
  for (char const* wrong : {"", " ", "x", "0", "-1", "3:", ":3", "3:0", "3:4:5", "3x", "3 4"})
    EXPECT_EQ(parsed(wrong), "none") << wrong;
}

TEST_F(app_test, launching_opens_each_file_at_its_place) {
  folder.write("a", "1\n2\n3\n4\n");
  folder.write("b", "one\ntwo\n");
  defaults().set("WynOpenFilesTogether", false);
  app().setLaunchArguments({"a:3", "b:2:3"}, folder.path());
  app().didFinishLaunching();
  EXPECT_EQ(windows(), titles({"b", "a"}));
  auto const caret = [](windows::document_window* c) {
    return c->textView().view()->selection.current_mark.base.pos();
  };
  auto const open = app().orderedControllers();
  EXPECT_EQ(caret(open[0]), text::pos(1, 2));
  EXPECT_EQ(caret(open[1]), text::pos(2, 0));
}

// Each row: what is open, what is opened, and the windows then; a project's have their tabs in
// brackets, the selected one with a star.
TEST_F(app_test, what_is_opened_at_once_comes_to_its_window) {
  for (char const* name : {"p/src", "q"}) std::filesystem::create_directories(folder / name);
  for (char const* name : {"p/a", "p/b", "p/src/c", "q/d", "p/.hidden"})
    folder.write(name, "1\n2\n");
  folder.write("p/x.qnproj",
               "<plist version='1.0'><dict><key>documents</key><array><dict><key>filename</key>"
               "<string>a</string></dict></array><key>openDocuments</key><array><string>a</string>"
               "</array></dict></plist>");
  struct row {
    strings before, opened, windows;
  };
  for (auto const& [before, opened, expected] : std::vector<row>{
           {{}, {"p"}, {"untitled \u2014 p [*untitled]"}},
           {{"untitled"}, {"p"}, {"untitled 2 \u2014 p [*untitled 2]"}},
           {{}, {"p/x.qnproj"}, {"a \u2014 x [*a]"}},
           {{"p/x.qnproj", "q/d"}, {"p/x.qnproj"}, {"a \u2014 x [*a]", "d"}},
           {{"p/x.qnproj"}, {"p/a:2"}, {"a \u2014 x [*a]"}},
           {{"p/x.qnproj"}, {"p/b"}, {"b", "a \u2014 x [*a]"}},
           {{"p/x.qnproj"}, {"p/x.qnproj:1"}, {"x.qnproj", "a \u2014 x [*a]"}},
           {{"p"}, {"p/src/c"}, {"c \u2014 p [*c]"}},
           {{"p"}, {"p/.hidden"}, {".hidden \u2014 p [*.hidden]"}},
           {{"p"}, {"p/new"}, {"new \u2014 p [*new]"}},
           {{"p", "q/d"}, {"p"}, {"untitled \u2014 p [*untitled]", "d"}},
           {{"p"}, {"q"}, {"untitled 2 \u2014 q [*untitled 2]", "untitled \u2014 p [*untitled]"}},
           {{"p/a"}, {"p"}, {"untitled \u2014 p [*untitled]", "a"}},
           {{}, {"p/a", "p/src/c:2"}, {"c \u2014 p [a *c]"}},
           {{}, {"p/a", "q/none"}, {"none \u2014 " + path::name(folder.path()) + " [a *none]"}},
           {{}, {"p", "p/b"}, {"b \u2014 p [*b]"}},
           {{"q/d"}, {"q/d", "p/a"}, {"a", "d"}},
       }) {
    auto const open = [&](strings const& names) {
      std::vector<app::file_argument> files;
      for (std::string const& name : names)
        if (name == "untitled")
          app().newDocument();
        else
          files.push_back(app::parse_file_argument(name, folder.path()));
      return files;
    };
    for (app::file_argument& file : open(before)) app().openFiles(std::vector{std::move(file)});
    app().openFiles(open(opened));
    strings shown = windows();
    std::size_t n = 0;
    for (auto* const each : app().orderedControllers()) {
      auto const& bar = window_of(*each).tab_bar;
      if (bar) {
        shown[n] += " [";
        for (auto const& tab : bar->tabs)
          shown[n] += (tab.id == bar->tabs.front().id ? "" : " ") +
                      std::string(tab.id == bar->selected ? "*" : "") + tab.title;
        shown[n] += "]";
      }
      ++n;
    }
    EXPECT_EQ(shown, expected) << opened.front();
    EXPECT_EQ(alerts(), strings());
    while (!app().orderedControllers().empty())
      app().orderedControllers().front()->window().close();
    desktop.loop().run_for(0);
  }
}

TEST_F(app_test, launching_with_a_bundle_installs_it) {
  std::filesystem::create_directory(folder / "x.qnbundle");
  folder.write("x.qnSnippet", "text");
  app().setLaunchArguments({"x.qnbundle", "x.qnSnippet:1"}, folder.path());
  app().didFinishLaunching();
  EXPECT_EQ(desktop.alerts().shown.front().title, "Bundle is Corrupt");
  EXPECT_EQ(windows(), titles({"x.qnSnippet"}));
}

TEST_F(app_test, launching_without_files_opens_an_untitled_window_unless_unwanted) {
  defaults().set("WynAppDelegateOpenUntitledDocument", "never");
  app().didFinishLaunching();
  EXPECT_EQ(windows(), titles());
  defaults().remove("WynAppDelegateOpenUntitledDocument");
  app().didFinishLaunching();
  EXPECT_EQ(windows(), titles({"untitled"}));
}

TEST_F(app_test, a_file_that_does_not_exist_is_an_empty_document_of_that_name) {
  app().openFile(folder / "new");
  EXPECT_EQ(windows(), titles({"new"}));
  EXPECT_EQ(folder.names(), std::set<std::string>({"state"}));
  windows::document_window& controller = *app().orderedControllers().front();
  type(controller, u"x");
  EXPECT_TRUE(controller.saveDocument());
  EXPECT_EQ(folder.read(folder / "new"), "x");
  EXPECT_EQ(app().recentFiles().paths(), titles({folder / "new"}));
}

TEST_F(app_test, opening_a_file_again_brings_its_window_forward) {
  folder.write("a", "1\n2\n");
  folder.write("b", "");
  windows::document_window* const a = app().openFile(folder / "a");
  app().openFile(folder / "b");
  EXPECT_EQ(app().openFile(folder / "../" + folder.path().substr(folder.path().rfind('/')) + "/a",
                           text::line_place{2}),
            a);
  EXPECT_EQ(windows(), titles({"a", "b"}));
  EXPECT_EQ(a->textView().view()->selection.current_mark.base.line, 1u);
}

TEST_F(app_test, the_hindmost_empty_window_is_used_for_a_file) {
  app().newDocument();
  app().newDocument();
  app().newDocument();
  type(*app().orderedControllers().back(), u"x");  // the first one is in use
  folder.write("a", "");
  app().openFile(folder / "a");
  EXPECT_EQ(windows(), titles({"a", "untitled 3", "*untitled"}));
}

TEST_F(app_test, an_empty_window_offers_recent_files_until_something_is_typed) {
  app().openFile(folder.write("a", "x"));
  app().newDocument();
  windows::document_window& empty = *app().orderedControllers().front();
  auto const& offers = window_of(empty).offers;
  ASSERT_EQ(offers.size(), 1U);
  EXPECT_EQ(offers[0].selector, "openRecentFile:");
  type(empty, u"x");
  EXPECT_TRUE(offers.empty());
  perform(empty, "undo:");
  EXPECT_EQ(offers.size(), 1U);
  empty.textView().tryToPerformWith(offers[0].selector, offers[0].argument);
  EXPECT_EQ(windows().front(), "a");
}

TEST_F(app_test, a_window_opens_where_the_last_one_was) {
  for (bool const kept : {true, false}) {
    defaults().set("WynWindowPlacementKept", kept);
    app().newDocument();
    windows::document_window& first = *app().orderedControllers().front();
    window_of(first).place = "here";
    perform(first, "performClose:");
    app().newDocument();
    windows::document_window& next = *app().orderedControllers().front();
    EXPECT_EQ(window_of(next).place, kept ? "here" : "");
    next.window().close();
  }
}

TEST_F(app_test, untitled_numbers_count_up_and_begin_again) {
  for (int n = 0; n < 3; ++n) app().newDocument();
  EXPECT_EQ(windows(), titles({"untitled 3", "untitled 2", "untitled"}));
  perform(*app().orderedControllers().back(), "performClose:");
  app().newDocument();
  EXPECT_EQ(windows(), titles({"untitled 4", "untitled 3", "untitled 2"}));
  while (!app().orderedControllers().empty())
    perform(*app().orderedControllers().front(), "performClose:");
  desktop.loop().run_for(0);
  app().newDocument();
  EXPECT_EQ(windows(), titles({"untitled"}));
}

TEST_F(app_test, what_cannot_be_opened_is_told_and_leaves_no_window) {
  ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0600), 0);
  EXPECT_EQ(app().openFile(folder.path()), nullptr);
  EXPECT_EQ(app().openFile(folder / "fifo"), nullptr);
  EXPECT_EQ(alerts(), titles({"Couldn't Open|Continue", "Couldn't Open|Continue"}));
  EXPECT_EQ(windows(), titles());
  EXPECT_TRUE(app().recentFiles().paths().empty());
}

TEST_F(app_test, a_large_file_is_asked_about_from_one_byte_more) {
  std::string const path = folder.write("large", std::string(0xA00000, 'x'));
  EXPECT_NE(app().openFile(path), nullptr);
  EXPECT_EQ(alerts(), titles());
  perform(*app().orderedControllers().front(), "performClose:");
  folder.write("large", std::string(0xA00001, 'x'));
  EXPECT_EQ(app().openFile(path), nullptr);
  ASSERT_EQ(desktop.alerts().shown.size(), 1u);
  EXPECT_EQ(desktop.alerts().shown[0].text,
            "The file \u201c" + path +
                "\u201d has a size of 10.0 MB. Are you sure you want to load this as a text file?");
  answer("Opening Large File", "Open File");
  EXPECT_NE(app().openFile(path), nullptr);
}

TEST_F(app_test, the_open_panel_opens_all_that_was_chosen) {
  defaults().set("WynOpenFilesTogether", false);
  desktop.panels().open_answers.push_back({folder.write("a", ""), folder.write("b", "")});
  app().performSelectorWithObject("openDocument:", {});
  EXPECT_EQ(windows(), titles({"b", "a"}));
  app().performSelectorWithObject("openDocument:", {});  // cancelled
  EXPECT_EQ(windows(), titles({"b", "a"}));
  auto const recent = app().dynamicItems("recentFiles");
  ASSERT_EQ(recent.size(), 4u);  // two files, a separator, "Clear Menu"
  perform(*app().orderedControllers().front(), "performClose:");
  app().performSelectorWithObject(recent[0].selector, recent[0].argument);
  EXPECT_EQ(windows(), titles({"b", "a"}));
  EXPECT_EQ(alerts(), titles());

  // A file that has gone is missed only when it is asked for.
  std::filesystem::remove(folder / "a");
  EXPECT_EQ(app().dynamicItems("recentFiles").size(), 4u);
  for (char const* const button : {"Continue", "Remove from Menu"}) {
    answer("Couldn't Open", button);
    app().performSelectorWithObject(recent[1].selector, recent[1].argument);
    app().performSelectorWithObject(recent[0].selector, recent[0].argument);
    EXPECT_EQ(alerts(), titles({std::string("Couldn't Open|") + button}));
  }
  EXPECT_EQ(app().dynamicItems("recentFiles").size(), 3u);
  EXPECT_EQ(windows(), titles({"b", "a"}));
  app().performSelectorWithObject(recent[3].selector, {});
  EXPECT_TRUE(app().dynamicItems("recentFiles").empty());
}

TEST_F(app_test, the_line_to_go_to_is_asked_for) {
  app().openFile(folder.write("a", "one\ntwo\nthree"));
  windows::document_window& controller = *app().orderedControllers().front();
  auto const go = [&](std::optional<std::string> const& answer) {
    if (answer) desktop.prompts().answers.push_back(*answer);
    perform(controller, "orderFrontGoToLinePanel:");
    return controller.textView().view()->selection.current_mark.base.pos();
  };
  EXPECT_EQ(go("2:3"), text::pos(1, 2));
  EXPECT_EQ(desktop.prompts().last_initial, "1");
  EXPECT_EQ(go("3"), text::pos(2, 0));
  EXPECT_EQ(go("99:99"), text::pos(2, 5));
  EXPECT_EQ(go(std::nullopt), text::pos(2, 5));
  EXPECT_EQ(desktop.prompts().last_initial, "3");
  EXPECT_EQ(desktop.beeps, 0);
  EXPECT_EQ(go("nowhere"), text::pos(2, 5));
  EXPECT_EQ(desktop.beeps, 1);
}

}  // namespace
