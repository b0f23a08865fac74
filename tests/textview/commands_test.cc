#include <cstring>
#include <random>

#include "bundles/BundleManager.h"
#include "commands/WynExecuteCommandManager.h"
#include "commands/command_owner.h"
#include "data_rows.h"
#include "path/temporary_folder.h"
#include "platform/utf.h"
#include "plist/text_reader.h"
#include "textview/shown_view.h"

// Commands of bundles on a text: what they read, and where their output goes.

namespace {

class recording_owner final : public commands::command_owner {
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

TEST_F(commands_on_text, a_tool_tip_has_the_beginning_of_a_flood) {
  shown_view shown("|");
  for (auto const& [script, lines, end] :
       {std::tuple("yes | head -c 3000000", 60, u"y\n\u2026"),
        {"yes \xF0\x9F\x98\x80 | tr -d '\\n' | head -c 3000000", 0, u"\U0001F600\u2026"}}) {
    shown.perform("executeCommandWithOptions:",
                  plist::dictionary{{"command", script}, {"output", "showAsTooltip"}});
    std::u16string const& tip = shown.host.tool_tip;
    EXPECT_LT(tip.size(), 400u);
    EXPECT_EQ(std::count(tip.begin(), tip.end(), u'\n'), lines);
    EXPECT_TRUE(tip.ends_with(end)) << unicode::to_utf8(tip);
  }
}

TEST_F(commands_on_text, variables_tell_of_the_text) {
  for (data_row const& row : data_rows("commands.txt", "environment")) {
    shown_view shown;
    shown.view.setSoftWrap(true);
    shown.view.setRightMargin(10);
    shown.set(row[0]);
    auto const variables = shown.view.environmentVariables();
    auto const found = variables.find(row[1]);
    EXPECT_EQ(found == variables.end() ? "-" : found->second.string_or("?"), row[2])
        << row[0] << " " << row[1];
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

// Markup is the text, with elements that nest, whatever part of it is taken.
TEST_F(commands_on_text, markup_nests_and_holds_the_text) {
  temporary_folder const folder;
  std::string const text =
      "/* <a> & */ int f(\"x\\n\") { return 'c'; } // e\n#define A 1\n\n\"open\n";
  shown_view shown("|", WynDocument::documentWithContentsOfFile(folder.write("a.c", text)));
  std::mt19937 random(3);
  for (int round = 0; round < 50; ++round) {
    auto const place = [&] {
      auto const line = random() % shown.view.view()->storage->lines();
      return text::pos(line, random() % (shown.view.view()->storage->size(line) + 1));
    };
    text::pos first = place(), last = place();
    if (last < first) std::swap(first, last);
    shown.view.goToLineAndColumn({first.line + std::size_t{1}, first.column + std::size_t{1}});
    shown.view.selectToLineAndColumn({last.line + std::size_t{1}, last.column + std::size_t{1}},
                                     false);
    std::string rest = unicode::to_utf8(shown.view.xmlRepresentationForSelection()), plain;
    std::vector<std::string> open;
    while (!rest.empty()) {
      bool const is_tag = rest[0] == '<';
      std::size_t const end = is_tag ? rest.find('>') + 1 : std::min(rest.find('<'), rest.size());
      std::string const part = rest.substr(0, end);
      rest.erase(0, end);
      if (!is_tag) {
        plain += part;
      } else if (part[1] != '/') {
        open.push_back(part.substr(1));
      } else {
        ASSERT_FALSE(open.empty());
        EXPECT_EQ(open.back(), part.substr(2));
        open.pop_back();
      }
    }
    EXPECT_TRUE(open.empty());
    for (auto const& [escaped, unit] : {std::pair("&lt;", "<"), {"&gt;", ">"}, {"&amp;", "&"}})
      for (std::size_t at = 0; (at = plain.find(escaped, at)) != plain.npos; ++at)
        plain.replace(at, std::strlen(escaped), unit);
    EXPECT_EQ(plain, unicode::to_utf8(shown.view.selected_text()));
  }
}

struct scope_case {
  char const *before, *selector, *after;  // without a selector: the scope at the caret
};

scope_case const scope_cases[] = {
    {"x = \"a|b\"; // c", "", "x = [\"ab\"]; // c"},
    {"x = \"a|b\"; // c", "string", "x = [\"ab\"]; // c"},
    {"x = \"a[b\"]; // c", "string", "x = [\"ab\"]; // c"},
    {"/* a\n|b\n*/ c", "comment", "[/* a\nb\n*/] c"},
    {"x = |1;", "string", "x = |1;"},
};

TEST_F(commands_on_text, scopes_are_selected) {
  temporary_folder const folder;
  for (scope_case const& each : scope_cases) {
    shown_view shown("|", WynDocument::documentWithContentsOfFile(folder.write("a.c", "")));
    shown.set(each.before);
    if (*each.selector == '\0')
      shown.perform("selectCurrentScope:");
    else
      shown.perform("extendSelectionInScope:", each.selector);
    EXPECT_EQ(shown.get(), each.after) << each.before;
    plist::dictionary const tip{{"command", "cat"},
                                {"fallbackInput", "scope"},
                                {"scope", "string"},
                                {"output", "showAsTooltip"}};
    shown.set(each.before);
    shown.perform("executeCommandWithOptions:", tip);
    EXPECT_EQ(shown.get(), each.before);
  }
}

TEST_F(commands_on_text, results_are_selected) {
  shown_view shown("|one\ntwo\nthree");
  shown.perform("selectCommandResult:", plist::dictionary{{"line", 2}});
  EXPECT_EQ(shown.get(), "one\n[two]\nthree");
  shown.perform("selectCommandResult:", plist::dictionary{{"line", "3"}, {"column", "3"}});
  EXPECT_EQ(shown.get(), "one\ntwo\nth|ree");
  shown.perform("selectCommandResult:", plist::dictionary{{"line", 9}});
  EXPECT_EQ(shown.get(), "one\ntwo\n[three]");
}

TEST_F(commands_on_text, a_save_comes_first_or_nothing) {
  recording_owner owner;
  shown_view shown("a[b]c");
  shown.view.setCommandOwner(&owner);
  for (char const* before : {"nop", "saveActiveFile", "saveModifiedFiles"}) {
    owner.may_run = std::string(before) == "nop";
    plist::dictionary const upper{
        {"command", "tr b X"}, {"output", "replaceSelectedText"}, {"beforeRunningCommand", before}};
    shown.set("a[b]c");
    shown.perform("executeCommandWithOptions:", upper);
    EXPECT_EQ(owner.saves, !owner.may_run);
    EXPECT_EQ(shown.text(), owner.may_run ? "aXc" : "abc");
  }
}

// A macro holds the command; the panel's filters are commands, the last seven of which are kept.
TEST_F(commands_on_text, filters_are_kept_and_recorded) {
  shown_view shown("[b]");
  shown.perform("toggleMacroRecording:");
  for (int n = 0; n < 9; ++n)
    desktop_.commands().answers.push_back(
        {"tr b X; echo " + std::to_string(n % 8), "selection", "replaceSelection", false});
  for (int n = 0; n < 9; ++n) shown.perform("orderFrontExecuteCommandPanel:");
  shown.perform("toggleMacroRecording:");
  std::string const after = shown.text();
  EXPECT_EQ(after, "X0\n1\n2\n3\n4\n5\n6\n7\n0\n");
  EXPECT_EQ(desktop_.commands().last_request.initial.command, "tr b X; echo 7");
  auto const filters = WynExecuteCommandManager::history();
  ASSERT_EQ(filters.size(), 7u);
  EXPECT_EQ(filters[0]["command"].string_or(""), "tr b X; echo 0");
  EXPECT_EQ(filters[6]["command"].string_or(""), "tr b X; echo 2");
  shown.set("[b]");
  shown.perform("playScratchMacro:");
  EXPECT_EQ(shown.text(), after);
  shown.set("[b]");
  shown.perform("executeCommandWithTag:", 1);
  shown.perform("performExecuteCommand:");
  EXPECT_EQ(shown.text(), "X7\n0\n");
}

TEST_F(commands_on_text, dropped_files_run_their_command) {
  auto& manager = BundleManager::sharedInstance();
  auto const item = BundleItem::bundleItemWithContent(
      manager,
      {{"name", "Image"},
       {"draggedFileExtensions", plist::array{"png"}},
       {"command",
        "cat; printf '%s|%s|%s' \"$QN_DROPPED_FILE\" \"${QN_DROPPED_FILEPATH##*/}\" "
        "\"$QN_MODIFIER_FLAGS\""},
       {"output", "insertAsSnippet"}},
      bundles::item_kind::drag_command);
  item->setBundle(*manager.defaultBundle());
  manager.addBundleItem(item);
  temporary_folder const folder;
  std::string const image = folder.path() + "/im ages/a'b.PNG";
  namespace modifier = platform::modifier;
  shown_view untitled("x|");
  EXPECT_FALSE(untitled.view.dropFile(folder.path() + "/a.txt", 0));
  EXPECT_TRUE(untitled.view.dropFile(image, 0));
  EXPECT_EQ(untitled.text(), "x" + image + "|a'b.PNG|");
  shown_view shown("|", WynDocument::documentWithContentsOfFile(folder.write("a.txt", "")));
  EXPECT_TRUE(shown.view.dropFile(image, modifier::command | modifier::shift));
  EXPECT_EQ(shown.text(), "im ages/a'b.PNG|a'b.PNG|SHIFT|COMMAND");
  EXPECT_EQ(manager.currentBundleItem(), nullptr);
  manager.removeBundleItem(item->UUID());
}

// Other programs may do to the file what they want while a command runs.
TEST_F(commands_on_text, the_file_may_go) {
  temporary_folder const folder;
  std::string const path = folder.write("a'\n$(b).txt", "x");
  shown_view shown("|", WynDocument::documentWithContentsOfFile(path));
  plist::dictionary const command{
      {"command", "rm \"$QN_FILEPATH\"; rmdir \"$QN_DIRECTORY\"; printf %s \"$QN_FILENAME\""},
      {"output", "replaceDocument"}};
  shown.perform("executeCommandWithOptions:", command);
  EXPECT_EQ(shown.text(), "a'\n$(b).txt");
  shown.perform("executeCommandWithOptions:", command);
}

}  // namespace
