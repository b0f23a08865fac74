#include "data_rows.h"
#include "keys/WynKeyBindingManager.h"
#include "keys/WynKeyEvent.h"
#include "keys/key_binding_file.h"
#include "keys/key_strings.h"
#include "path/temporary_folder.h"
#include "platform/utf.h"

using namespace keys;

namespace {

using plist::array;
using plist::dictionary;

platform::key_event key(std::string_view text) {
  auto const* event = WynKeyEvent::keyEventWithString(text);
  auto const characters = unicode::to_utf16(event->key());
  return {characters, characters, event->qualifiers(), nullptr};
}

/// Writes down what it is told.
struct recorder : key_binding_target {
  bool tryToPerformWith(std::string_view selector, plist::value const&) override {
    log += "[" + std::string(selector) + "]";
    return !selector.starts_with("unknown");
  }
  void insertText(plist::value const& text) override { log += "'" + text.string_or("?") + "'"; }
  void showPendingKeys(std::string const& keys) override { shown += keys + ";"; }
  void interpretKeyEvents(platform::key_event const& event) override {
    log += "key(" + unicode::to_utf8(event.characters) + ")";
  }
  std::string log, shown;
};

class key_bindings : public testing::Test {
 protected:
  std::string file(std::string const& name, std::string const& content) {
    std::filesystem::create_directories(std::filesystem::path(folder_ / name).parent_path());
    return folder_.write(name, content);
  }

  temporary_folder folder_;
};

}  // namespace

TEST(key_strings, normalized) {
  for (auto const& row : data_rows("keys.txt", "normalized")) {
    std::string why;
    EXPECT_EQ(NormalizeKeyString(row[0], &why).value_or(""), row[1]) << row[0];
    EXPECT_EQ(why.empty(), !row[1].empty()) << row[0];
  }
}

TEST(key_strings, dictionary) {
  dictionary const nested{{"~@b", "two:"}, {"bad", "three:"}};
  dictionary const source{{"^a", "a:"},     {"#^a", "keypad:"}, {"@$x", array{"one:", "two:"}},
                          {"^k", nested},   {"@xy", "bad:"},    {"#$@e", "own:"},
                          {"@$e", "main:"}, {"n", 5},           {"m", array{1}}};
  std::string complaints;
  auto const result = NormalizeDictionary(
      source, [&](auto const& key, auto const&) { complaints += "<" + key + ">"; });
  dictionary const inner{{"~@b", "two:"}, {"#~@b", "two:"}};
  dictionary const expected{{"^a", "a:"},
                            {"#^a", "keypad:"},
                            {"$@x", array{"one:", "two:"}},
                            {"#$@x", array{"one:", "two:"}},
                            {"^k", inner},
                            {"#^k", inner},
                            {"$@e", "main:"},
                            {"#$@e", "own:"}};
  EXPECT_EQ(plist::value(result), plist::value(expected));
  EXPECT_EQ(complaints, "<@xy><^k bad><m><n>");
}

TEST_F(key_bindings, later_file_wins_and_formats_mix) {
  auto const first = file("a.dict", "{ '@a' = 'one:'; 'b' = 'two:'; }");
  auto const second = file("b.dict",
                           "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>@a</key>"
                           "<string>three:</string></dict></plist>");
  WynKeyBindingManager const manager({first, second});
  EXPECT_EQ(manager.selectorForEvent(key("@a")), "three:");
  EXPECT_EQ(manager.selectorForEvent(key("#@a")), "three:");
  EXPECT_EQ(manager.selectorForEvent(key("b")), "two:");
  EXPECT_EQ(manager.selectorForEvent(key("c")), std::nullopt);
}

TEST_F(key_bindings, performing) {
  auto const path = file("k.dict", R"({
    'a' = 'act:'; 'u' = 'unknown:'; 'n' = 'noop:';
    'l' = ( 'one:', 'insertText:', 'insertText:', 'two:', 'insertText:' );
    '^k' = { 'a' = 'nested:'; '^k' = { 'b' = 'deep:'; }; };
  })");
  WynKeyBindingManager manager({path});
  recorder view, other;
  EXPECT_TRUE(manager.interpretKeyEventForTextView(key("a"), view));
  EXPECT_FALSE(manager.interpretKeyEventForTextView(key("u"), view));
  EXPECT_TRUE(manager.interpretKeyEventForTextView(key("n"), view));
  EXPECT_TRUE(manager.interpretKeyEventForTextView(key("x"), view));
  EXPECT_EQ(view.log, "[act:][unknown:]key(x)");

  view.log.clear();
  manager.interpretKeyEventForTextView(key("l"), view);
  EXPECT_EQ(view.log, "[one:]'insertText:'[two:]");
  EXPECT_EQ(manager.selectorForEvent(key("l")), std::nullopt);

  view.log.clear();
  for (auto const* stroke : {"^k", "a", "a", "^k", "^k", "b", "^k", "z", "a"})
    EXPECT_TRUE(manager.interpretKeyEventForTextView(key(stroke), view));
  EXPECT_EQ(view.log, "[nested:][act:][deep:]key(z)[act:]");

  view.log.clear();
  view.shown.clear();
  for (auto const* stroke : {"^k", "^k", "\x1B", "a"})
    manager.interpretKeyEventForTextView(key(stroke), view);
  EXPECT_EQ(view.log, "[act:]");
  EXPECT_EQ(view.shown, "Meta+K;;Meta+K Meta+K;;");

  view.log.clear();
  manager.interpretKeyEventForTextView(key("^k"), view);
  manager.interpretKeyEventForTextView(key("a"), other);
  manager.forgetTextView(view);
  manager.interpretKeyEventForTextView(key("a"), view);
  EXPECT_EQ(view.log + other.log, "[act:][act:]");
}

TEST_F(key_bindings, faults_are_told_and_the_rest_is_used) {
  struct {
    char const* content;
    char const* complaint;  // a part of it
  } const rows[] = {
      {"{ '@a' = 'one:';\n  '@xy' = 'two:'; }", "key \"@xy\""},
      {"{ '\x1B\x1B' = 'one:'; '@a' = 'one:'; }", "key \"<1B><1B>\""},
      {"{ '@a' = 'one:'; '@b' = 3; }", "key \"@b\""},
      {"{ '@a' = 'one:';\n '@b' 'two:'; }", ":2:"},
      {"( '@a' )", "dictionary"},
      {"<?xml version='1.0'?>\n<plist><dict><key>a</key></dict></plist>", ":2:"},
      {"", ""},
  };
  for (auto const& row : rows) {
    auto const path = file("bad.dict", row.content);
    std::vector<std::string> complaints;
    auto const result =
        read_key_binding_file(path, [&](auto const& message) { complaints.push_back(message); });
    ASSERT_EQ(complaints.size(), 1U) << row.content;
    EXPECT_TRUE(complaints[0].starts_with(path)) << complaints[0];
    EXPECT_NE(complaints[0].find(row.complaint), std::string::npos) << complaints[0];
    EXPECT_EQ(result.count("@a"), std::string_view(row.complaint).starts_with("key") ? 1U : 0U);
  }
  int count = 0;
  EXPECT_TRUE(read_key_binding_file(folder_ / "none", [&](auto const&) { ++count; }).empty());
  EXPECT_EQ(count, 1);
}

TEST_F(key_bindings, files_of_the_library_domains) {
  auto const user = file("user/Quirnote/KeyBindings.dict", "{ }");
  auto const system = file("system/Quirnote/KeyBindings.dict", "{ }");
  setenv("XDG_DATA_HOME", (folder_ / "user").c_str(), 1);
  setenv("XDG_DATA_DIRS", (folder_ / "none:" + folder_ / "system").c_str(), 1);
  auto const files = WynKeyBindingManager::allKeyBindingFiles();
  unsetenv("XDG_DATA_HOME");
  unsetenv("XDG_DATA_DIRS");
  ASSERT_GE(files.size(), 2U);
  EXPECT_EQ(files[files.size() - 2], system);
  EXPECT_EQ(files.back(), user);
}
