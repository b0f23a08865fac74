#include "data_rows.h"
#include "platform/utf.h"
#include "plist/text_reader.h"
#include "textview/command_owner.h"
#include "textview/shown_view.h"

// Commands of bundles on a text: what they read, and where their output goes.

namespace {

class recording_owner final : public command_owner {
 public:
  bool willExecuteCommand(commands::command_options const& command) override {
    saves = command.saves_first;
    return may_run;
  }
  bool takesOutput(commands::finished_command const&) override { return false; }
  void openAsNewDocument(text::text_block const& text) override {
    shown += "new: " + unicode::to_utf8(text.view());
  }

  std::string shown;
  bool may_run = true, saves = false;
};

class commands_on_text : public shown_view_test {
 protected:
  static plist::value command(std::string const& text) { return plist::convert(text, nullptr); }
};

TEST_F(commands_on_text, output_goes_where_it_is_to_go) {
  for (data_row const& row : data_rows("commands.txt", "dispositions")) {
    ASSERT_EQ(row.size(), 4u) << row[0];
    recording_owner owner;
    shown_view shown(row[0]);
    shown.view.setCommandOwner(&owner);
    std::string const before = shown.text();
    testing::internal::CaptureStderr();
    shown.perform("executeCommandWithOptions:", command(row[1]));
    testing::internal::GetCapturedStderr();
    std::string const tip = unicode::to_utf8(shown.host.tool_tip);
    EXPECT_EQ(shown.get(), row[2]) << row[1];
    EXPECT_EQ(owner.shown + (tip.empty() ? "" : "tip: " + tip), row[3]) << row[1];
    std::string const after = shown.text();
    if (after == before) continue;
    shown.perform("undo:");
    EXPECT_EQ(shown.text(), before) << row[1];
    shown.perform("redo:");
    EXPECT_EQ(shown.text(), after) << row[1];
  }
}

TEST_F(commands_on_text, lines_are_scripts) {
  for (data_row const& row : data_rows("commands.txt", "lines as scripts")) {
    shown_view shown(row[0]);
    std::string const before = shown.text();
    shown.perform(row[1]);
    EXPECT_EQ(shown.get(), row[2]) << row[0];
    if (shown.text() == before) continue;
    shown.perform("undo:");
    EXPECT_EQ(shown.text(), before) << row[0];
  }
}

}  // namespace
