#include "app_fixture.h"
#include "bundles/BundleManager.h"
#include "platform/utf.h"

#include <sys/stat.h>

// New documents by templates: what windows come of the files that their scripts make.
namespace {

class templates : public app_test {
 protected:
  templates() { setenv("TMPDIR", folder.path().c_str(), 1); }
  ~templates() override {
    BundleManager::sharedInstance().removeBundleItem("T");
    unsetenv("TMPDIR");
  }

  /// Of C files. False if nobody takes it.
  bool run(std::string const& script) {
    auto& manager = BundleManager::sharedInstance();
    manager.addBundleItem(BundleItem::bundleItemWithContent(
        manager, {{"name", "Test"}, {"uuid", "T"}, {"extension", "c"}, {"command", script}},
        bundles::item_kind::file_template));
    return manager.executeItem(manager.bundleItemForUUID("T"), app());
  }
  std::string text_of_front() {
    windows::document_window& front = *app().orderedControllers().front();
    perform(front, "selectAll:");
    return unicode::to_utf8(front.textView().selected_text());
  }
  std::string mode_of_front() {
    return app().orderedControllers().front()->textView().currentMode();
  }
};

TEST_F(templates, one_file_becomes_an_untitled_document_in_its_language) {
  EXPECT_TRUE(
      run("printf '// caf\xc3\xa9 \\n\\n%s %s' \"${QN_NEW_FILE##*/}\" $QN_NEW_FILE_BASENAME >"
          "\"$QN_NEW_FILE\""));
  EXPECT_EQ(windows(), titles{"untitled"});
  EXPECT_EQ(text_of_front(), "// caf\xc3\xa9 \n\nuntitled.c untitled");
  EXPECT_EQ(mode_of_front(), "C");
  EXPECT_TRUE(defaults().array("WynLanguageFileBindings").empty());
  EXPECT_TRUE(folder.names().empty());
  EXPECT_TRUE(app().recentFiles().paths().empty());
  EXPECT_FALSE(app().orderedControllers().front()->isDocumentEdited());

  // One that is elsewhere stays there.
  std::string const other = folder / "other.py";
  EXPECT_TRUE(run("echo x >" + other + "; echo " + other));
  EXPECT_EQ(windows(), (titles{"untitled 2", "untitled"}));
  EXPECT_EQ(mode_of_front(), "Python");
  EXPECT_EQ(folder.read(other), "x\n");
}

TEST_F(templates, a_file_is_made_where_the_panel_says) {
  desktop.panels().save_answers.push_back(platform::save_answer{folder / "new.c", 0, 0});
  std::string const script = "printf '%s' $QN_NEW_FILE_BASENAME >\"$QN_NEW_FILE\"";
  EXPECT_TRUE(run(script));
  app().performSelectorWithObject("newFileFromTemplate:", "T");
  EXPECT_EQ(windows().front(), "new.c");
  EXPECT_EQ(folder.read(folder / "new.c"), "new");
  app().performSelectorWithObject("newFileFromTemplate:", "T");  // cancelled
  EXPECT_EQ(windows().size(), 2u);
  EXPECT_EQ(desktop.panels().last_save_request.name, "untitled.c");
}

TEST_F(templates, several_files_are_opened_and_stay) {
  EXPECT_TRUE(
      run("d=$QN_NEW_FILE_DIRECTORY; echo 1 >\"$QN_NEW_FILE\"; echo 2 >\"$d/b.h\"\n"
          "echo \"$d/b.h\"; echo \"$d/none\"; echo /none; echo done"));
  EXPECT_EQ(windows(), (titles{"b.h", "untitled.c"}));
  EXPECT_EQ(desktop.beeps, 2);
  for (windows::document_window* const each : app().orderedControllers()) {
    std::string const path = each->textDocument()->filename();
    EXPECT_TRUE(path.starts_with(folder.path())) << path;
    struct stat info;
    EXPECT_EQ(::stat(path.c_str(), &info), 0) << path;
    type(*each, u"x");
    EXPECT_TRUE(each->saveDocument());
  }
  EXPECT_EQ(alerts(), titles());
}

TEST_F(templates, without_a_file_the_reason_is_told) {
  EXPECT_TRUE(run("echo out of luck; echo /none"));
  EXPECT_NE(desktop.alerts().shown.front().text.find("out of luck"), std::string::npos);
  desktop.busy().cancel_after = 3;
  EXPECT_TRUE(run("exec sleep 60"));
  EXPECT_EQ(alerts(), (titles{"The Template Created No File|Continue",
                              "The Template Created No File|Continue"}));
  EXPECT_EQ(windows(), titles());
  EXPECT_TRUE(folder.names().empty());
}

}  // namespace
