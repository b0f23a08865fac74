#include "app_fixture.h"
#include "encoding/charset.h"

// Saving, closing and quitting: what is asked, in which order, and what each answer does.
namespace {

constexpr char const* save_title =
    "Do you want to save the changes you made in the document \u201c%\u201d?";

std::string asked(std::string const& name, std::string const& button) {
  std::string title = save_title;
  return title.replace(title.find('%'), 1, name) + "|" + button;
}

class saving : public app_test {
 protected:
  windows::document_window& open(std::string const& name, std::string const& bytes) {
    return *app().openFile(folder.write(name, bytes));
  }
  void answer_panel(std::string const& name, std::size_t encoding = 0, std::size_t ending = 0) {
    desktop.panels().save_answers.push_back(platform::save_answer{folder / name, encoding, ending});
  }
};

TEST_F(saving, the_window_shows_what_is_edited_and_what_was_saved) {
  windows::document_window& a = open("a", "x");
  EXPECT_EQ(windows(), titles({"a"}));
  EXPECT_EQ(window_of(a).filename, folder / "a");
  type(a, u"y");
  EXPECT_EQ(windows(), titles({"*a"}));
  perform(a, "undo:");
  EXPECT_EQ(windows(), titles({"a"}));
  perform(a, "redo:");
  perform(a, "saveDocument:");
  EXPECT_EQ(windows(), titles({"a"}));
  EXPECT_EQ(folder.read(folder / "a"), "yx");
}

TEST_F(saving, an_untitled_document_gets_its_name_from_the_panel) {
  app().newDocument();
  windows::document_window& controller = *app().orderedControllers().front();
  type(controller, u"\u00e9\n");
  perform(controller, "saveDocument:");  // cancelled
  EXPECT_EQ(windows(), titles({"*untitled"}));
  EXPECT_EQ(desktop.panels().last_save_request.name, "untitled.txt");
  EXPECT_EQ(desktop.panels().last_save_request.encoding, 0u);

  answer_panel("named", 3, 2);  // Latin 1 and CRLF
  perform(controller, "saveDocument:");
  EXPECT_EQ(windows(), titles({"named"}));
  EXPECT_EQ(folder.read(folder / "named"), "\xe9\r\n");
  EXPECT_EQ(window_of(controller).values["lineEnding"].string_or(""), "CR LF (Windows)");
  EXPECT_EQ(app().recentFiles().paths(), titles({folder / "named"}));
  app().newDocument();
  EXPECT_EQ(windows().front(), "untitled");  // its number is free again
}

TEST_F(saving, save_as_that_fails_changes_nothing) {
  windows::document_window& a = open("a", "x\n");
  std::filesystem::create_directory(folder / "folder");
  answer_panel("folder", 1, 1);
  perform(a, "saveDocumentAs:");
  EXPECT_EQ(alerts(), titles({"Couldn't Save|Continue"}));
  EXPECT_EQ(desktop.panels().last_save_request.name, "a");
  EXPECT_EQ(windows(), titles({"a"}));
  EXPECT_EQ(a.textDocument()->lineEnding(), line_ending::LF);
  EXPECT_EQ(a.textDocument()->fileEncoding(), encoding::ASCII);
  answer_panel("b");
  perform(a, "saveDocumentAs:");
  EXPECT_EQ(windows(), titles({"b"}));
  EXPECT_EQ(folder.read(folder / "b"), "x\n");
  EXPECT_EQ(desktop.beeps, 0);
}

TEST_F(saving, a_file_that_vanished_or_changed_its_kind_loses_no_text) {
  windows::document_window& a = open("a", "x");
  type(a, u"y");
  std::filesystem::remove(folder / "a");
  perform(a, "saveDocument:");
  EXPECT_EQ(folder.read(folder / "a"), "yx");
  type(a, u"z");
  std::filesystem::remove(folder / "a");
  std::filesystem::create_directory(folder / "a");
  perform(a, "saveDocument:");
  EXPECT_EQ(alerts(), titles({"Couldn't Save|Continue"}));
  EXPECT_EQ(windows(), titles({"*a"}));
}

TEST_F(saving, an_edited_file_is_written_as_its_project_wants) {
  folder.write(".editorconfig",
               "root = true\n[*]\nend_of_line = crlf\ncharset = utf-8-bom\n"
               "insert_final_newline = true\ntrim_trailing_whitespace = true\n");
  auto const saved = [&](std::string const& name, std::string const& bytes, bool edits,
                         bool chooses) {
    windows::document_window& controller = open(name, bytes);
    if (edits) type(controller, u"y");
    if (chooses) {
      controller.textView().tryToPerformWith("toggleByteOrderMark:", {});
      controller.textView().tryToPerformWith("toggleByteOrderMark:", {});
      controller.textView().tryToPerformWith("takeLineEndingFrom:", 0);
    }
    perform(controller, "saveDocument:");
    return folder.read(folder / name);
  };
  EXPECT_EQ(saved("same", "x\na ", false, false), "x\na ");
  EXPECT_EQ(saved("ascii", "x\na ", true, false), "\xEF\xBB\xBFyx\r\na\r\n");
  EXPECT_EQ(saved("latin", "\xE9\n", true, false), "y\xE9\r\n");
  EXPECT_EQ(saved("chosen", "\xC3\xA9\n", true, true), "y\xC3\xA9\n");
  EXPECT_EQ(alerts(), titles({}));
}

TEST_F(saving, files_are_saved_when_another_program_gets_the_focus) {
  windows::document_window &a = open("a", "x"), &locked = open("locked", "x");
  type(a, u"y");
  type(locked, u"y");
  std::filesystem::permissions(folder / "locked", std::filesystem::perms::owner_read);
  app().applicationWillResignActive();
  EXPECT_EQ(folder.read(folder / "a"), "x");
  defaults().set("WynSaveAllOnDeactivate", true);
  app().applicationWillResignActive();
  EXPECT_EQ(folder.read(folder / "a"), "yx");
  EXPECT_EQ(windows(), titles({"*locked", "a"}));
  EXPECT_EQ(alerts(), titles({}));
}

TEST_F(saving, titles_tell_files_of_one_name_apart) {
  for (char const* name : {"one", "two"}) std::filesystem::create_directory(folder / name);
  windows::document_window& first = open("one/a", "x");
  EXPECT_EQ(windows(), titles({"a"}));
  windows::document_window& second = open("two/a", "x");
  EXPECT_EQ(windows(), titles({"a (two)", "a (one)"}));
  std::filesystem::permissions(folder / "two/a", std::filesystem::perms::owner_read);
  answer_panel("b");
  perform(first, "saveDocumentAs:");
  EXPECT_EQ(windows(), titles({"a", "b"}));
  type(second, u"y");
  EXPECT_EQ(window_of(second).values["fileState"].string_or(""), "Read-Only");
}

TEST_F(saving, closing_asks_only_about_unsaved_changes) {
  perform(open("a", "x"), "performClose:");
  EXPECT_EQ(alerts(), titles());
  windows::document_window& b = open("b", "x");
  type(b, u"y");
  perform(b, "performClose:");
  EXPECT_EQ(alerts(), titles({asked("b", "Cancel")}));
  EXPECT_EQ(windows(), titles({"*b"}));
  answer_save("b", "Don't Save");
  perform(b, "performClose:");
  EXPECT_EQ(windows(), titles());
  EXPECT_EQ(folder.read(folder / "b"), "x");

  desktop.loop().run_for(0);
  windows::document_window& again = open("b", "x");
  EXPECT_EQ(again.textDocument()->length(), 1u);  // read anew
  type(again, u"z");                              // where the caret was when it was closed
  answer_save("b", "Save");
  perform(again, "performClose:");
  EXPECT_EQ(folder.read(folder / "b"), "xz");
}

TEST_F(saving, a_close_stays_open_when_the_save_panel_is_cancelled) {
  app().newDocument();
  type(*app().orderedControllers().front(), u"x");
  answer_save("untitled", "Save");
  perform(*app().orderedControllers().front(), "performClose:");
  EXPECT_EQ(windows(), titles({"*untitled"}));
  desktop.panels().save_answers.push_back(platform::save_answer{folder / "u", 0, 0});
  perform(*app().orderedControllers().front(), "performClose:");
  EXPECT_EQ(windows(), titles());
  EXPECT_EQ(folder.read(folder / "u"), "x");
}

class quitting : public saving {
 protected:
  static constexpr char const* summary =
      "You have 2 documents with unsaved changes. Do you want to review these changes before "
      "quitting?";

  bool quit() {
    app().performSelectorWithObject("terminate:", {});
    return desktop.terminated;
  }
  void edit_two() {
    type(open("back", "x"), u"1");
    open("clean", "x");
    type(open("front", "x"), u"2");
  }
};

TEST_F(quitting, without_changes_nothing_is_asked) {
  open("a", "x");
  EXPECT_TRUE(quit());
  EXPECT_EQ(alerts(), titles());
}

TEST_F(quitting, one_edited_window_is_asked_about_at_once) {
  type(open("a", "x"), u"1");
  open("b", "x");
  EXPECT_FALSE(quit());
  EXPECT_EQ(alerts(), titles({asked("a", "Cancel")}));
  EXPECT_EQ(windows(), titles({"*a", "b"}));
}

TEST_F(quitting, cancelling_the_summary_asks_nothing_more) {
  edit_two();
  EXPECT_FALSE(quit());
  EXPECT_EQ(alerts(), titles({std::string(summary) + "|Cancel"}));
}

TEST_F(quitting, changes_can_be_discarded_at_one_go) {
  edit_two();
  answer(summary, "Discard Changes");
  EXPECT_TRUE(quit());
  EXPECT_EQ(folder.read(folder / "back"), "x");
}

TEST_F(quitting, a_review_goes_front_to_back) {
  edit_two();
  answer(summary, "Review Changes\u2026");
  answer_save("front", "Save");
  answer_save("back", "Don't Save");
  EXPECT_TRUE(quit());
  EXPECT_EQ(alerts(), titles({std::string(summary) + "|Review Changes\u2026",
                              asked("front", "Save"), asked("back", "Don't Save")}));
  EXPECT_EQ(folder.read(folder / "front"), "2x");
  EXPECT_EQ(folder.read(folder / "back"), "x");
}

TEST_F(quitting, a_cancel_in_a_review_ends_the_quit) {
  edit_two();
  answer(summary, "Review Changes\u2026");
  answer_save("front", "Save");
  EXPECT_FALSE(quit());
  EXPECT_EQ(windows().front(), "*back");
  EXPECT_EQ(folder.read(folder / "front"), "2x");
}

// The key that quits goes through a view that the review may close before the next question.
TEST_F(quitting, a_closed_window_outlives_the_review_that_its_own_key_began) {
  edit_two();
  answer(summary, "Review Changes\u2026");
  answer_save("front", "Don't Save");
  bool asked_again = true;
  desktop.alerts().while_open = [&] {
    desktop.loop().run_for(0);
    asked_again = app().applicationShouldTerminate();
  };
  windows::document_window& front = *app().orderedControllers().front();
  std::weak_ptr<WynDocument> const document = front.textDocument();
  perform(front, "terminate:");
  EXPECT_FALSE(asked_again);
  EXPECT_EQ(windows(), titles({"*back", "clean"}));
  EXPECT_FALSE(document.expired());
  desktop.loop().run_for(0);
  EXPECT_TRUE(document.expired());
}

TEST_F(saving, reverting_asks_and_can_be_undone) {
  windows::document_window& a = open("a", "x");
  type(a, u"y");
  perform(a, "revertDocumentToSaved:");
  EXPECT_EQ(windows(), titles({"*a"}));
  answer("Do you want to revert to the saved version of \u201ca\u201d?", "Revert");
  perform(a, "revertDocumentToSaved:");
  EXPECT_EQ(windows(), titles({"a"}));
  EXPECT_EQ(a.textDocument()->length(), 1u);
  perform(a, "undo:");
  EXPECT_EQ(windows(), titles({"*a"}));
  EXPECT_EQ(a.textDocument()->length(), 2u);
}

TEST_F(saving, a_file_changed_outside_is_read_when_its_window_comes_forward) {
  windows::document_window& a = open("a", "one\ntwo\nthree");
  a.textView().goToLineAndColumn({2, 3});
  open("b", "");
  folder.write("a", "ONE\nTWO\nTHREE\nFOUR");
  a.showWindow();
  desktop.loop().run_for(0);
  EXPECT_EQ(a.textDocument()->storage().lines(), 4u);
  EXPECT_EQ(a.textView().view()->selection.current_mark.base.pos(), text::pos(1, 2));
  EXPECT_EQ(alerts(), titles());
}

TEST_F(saving, encoding_and_line_ends_follow_the_status_bar) {
  windows::document_window& a = open("a", "x\ny\n");
  auto const choose = [&](char const* selector, int value) {
    a.textView().tryToPerformWith(selector, value);
  };
  choose("takeFileEncodingFrom:", encoding::UTF16BE);
  choose("takeLineEndingFrom:", line_ending::CRLF);
  EXPECT_EQ(window_of(a).values["fileEncoding"].string_or(""), "UTF-16 (Big Endian)");
  perform(a, "saveDocument:");
  EXPECT_EQ(folder.read(folder / "a"), std::string("\xFE\xFF\0x\0\r\0\n\0y\0\r\0\n", 14));
  choose("takeFileEncodingFrom:", 99);
  choose("takeLineEndingFrom:", -1);
  EXPECT_EQ(desktop.beeps, 2);
  EXPECT_EQ(a.textDocument()->fileEncoding(), encoding::UTF16BE);
}

}  // namespace
