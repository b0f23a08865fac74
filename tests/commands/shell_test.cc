#include "commands/shell.h"

#include "commands/output_text.h"
#include "commands/text_source.h"
#include "headless/headless_desktop.h"
#include "path/temporary_folder.h"
#include "platform/own_defaults.h"
#include "platform/utf.h"
#include "settings/store.h"
#include "text/storage.h"

#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

namespace {

commands::shell_result run(std::string script, std::string input = "",
                           commands::variables variables = {}) {
  return commands::run_shell({.script = std::move(script),
                              .input = std::move(input),
                              .environment = std::move(variables)});
}

class shell : public testing::Test {
 private:
  own_defaults const defaults_;

 protected:
  headless::headless_desktop desktop_;
};

struct script_case {
  char const *script, *output;
  int status;
};

script_case const scripts[] = {
    {"echo a; echo b >&2; echo c", "a\nb\nc\n", 0},
    {"exit 7", "", 7},
    {"kill -9 $$", "", -1},
    {"kill 0; echo survived", "", -1},
    {"cat", "", 0},
    {"#!/usr/bin/env perl\nprint \"x$0\" =~ /temp_quirnote/ ? 1 : 0", "1", 0},
    {"exec >&- 2>&-; exit 3", "", 3},
    // A group of its own, and no terminal to change.
    {"read -r _ _ _ _ group _ </proc/$$/stat; [ $group = $$ ]", "", 0},
    {"{ : >/dev/tty; } 2>/dev/null", "", 1},
    // Who goes on in the background without the pipe isn't waited for.
    {"setsid sleep 60 >&- 2>&- <&- & echo done", "done\n", 0},
    // What comes after the shell's end is taken.
    {"echo b > >(sleep 0.1; cat); exit 2", "b\n", 2},
};

TEST_F(shell, gives_output_and_status) {
  for (script_case const& each : scripts) {
    auto const result = run(each.script);
    EXPECT_STREQ(result.output.c_str(), each.output) << each.script;
    EXPECT_EQ(result.status, each.status) << each.script;
    EXPECT_EQ(result.error, "") << each.script;
  }
  EXPECT_NE(run("#!/no/such/interpreter\n").error.find("interpreter failed"), std::string::npos);
  // One that is too long for an argument.
  EXPECT_EQ(run("# " + std::string(300000, 'x') + "\necho done").output, "done\n");
}

// Also for one that writes before it has read, never reads, or closes its input.
TEST_F(shell, input_and_output_go_at_once) {
  std::string const big(3'000'000, 'x');
  EXPECT_EQ(run("cat", big).output, big);
  EXPECT_EQ(run("head -c 200000 /dev/zero | tr '\\0' y; cat | wc -c", big).output,
            std::string(200000, 'y') + "3000000\n");
  EXPECT_EQ(run("echo done", big).output, "done\n");
  EXPECT_EQ(run("exec <&-; sleep 0.05; echo done", big).output, "done\n");
}

TEST_F(shell, environment_is_the_users_without_the_editors_own) {
  setenv("QN_FILEPATH", "/inherited", 1);
  setenv("QUIRNOTE_TEST", "kept", 1);
  // Those of a shell that the program was started from.
  setenv("SHELLOPTS", "noexec:xtrace", 1);
  setenv("BASHOPTS", "xpg_echo", 1);
  setenv("BASH_FUNC_printf%%", "() { echo another; }", 1);
  std::string const script =
      "printf '%s|' \"$QN_FILEPATH\" \"$QUIRNOTE_TEST\" \"$A\" \"$SHLVL\" \"$PATH\"";
  EXPECT_EQ(run(script, "", {{"A", "x"}, {"PATH", "::.:bin:/usr/bin:./x:/bin:"}}).output,
            "|kept|x|2|/usr/bin:/bin|");
  EXPECT_EQ(run("echo $PATH", "", {{"PATH", "."}}).output, "/usr/bin:/bin:/usr/sbin:/sbin\n");
  testing::internal::CaptureStderr();
  commands::variables large{{"A", std::string(0x20000 - 2, 'x')},
                            {"B", std::string(0x20000 - 3, 'x')}};
  EXPECT_EQ(run("echo ${#A} ${#B}", "", large).output, "0 131069\n");
  // More than the kernel takes in all: the longest ones stay out.
  for (char name = 'a'; name <= 'z'; ++name)
    for (char const* more : {"1", "2", "3"})
      large[std::string(1, name) + more] = std::string(100000, name);
  EXPECT_EQ(run("echo x", "", large).output, "x\n");
  std::string const told = testing::internal::GetCapturedStderr();
  EXPECT_NE(told.find("variable exceeds ARG_MAX: A\n"), std::string::npos);
  EXPECT_NE(told.find("variable exceeds ARG_MAX: B\n"), std::string::npos);
  unsetenv("QN_FILEPATH");
  unsetenv("QUIRNOTE_TEST");
  for (char const* name : {"SHELLOPTS", "BASHOPTS", "BASH_FUNC_printf%%"}) unsetenv(name);
}

// Names, selections and words that a shell would take for commands go through variables and
// input as they are.
TEST_F(shell, hostile_values_are_only_text) {
  char folder[] = "/tmp/quirnote-hostile.XXXXXX";
  ASSERT_NE(mkdtemp(folder), nullptr);
  std::string const mark = std::string(folder) + "/touched";
  std::string const pieces[] = {"'",
                                "\"",
                                "$(touch " + mark + ")",
                                "`touch " + mark + "`",
                                "\n",
                                " ",
                                "; touch " + mark + " ;",
                                "-rf",
                                "--",
                                "\\",
                                "\xFF",
                                "\xC3",
                                "${IFS}",
                                "*",
                                "%s%n",
                                "&",
                                "|",
                                "~",
                                "\x1B[2J",
                                "<(touch " + mark + ")",
                                "a",
                                "!",
                                "() { :; }; touch " + mark};
  std::mt19937 random(1);
  for (int round = 0; round < 10; ++round) {
    commands::variables values;
    std::string expected;
    for (int n = 0; n < 500; ++n) {
      std::string value;
      for (int count = 1 + random() % 6; count > 0; --count)
        value += pieces[random() % std::size(pieces)];
      std::string const name = "V" + std::to_string(1000 + n);
      values[name] = value;
      expected += value + '\0';
    }
    std::string const script =
        "for n in {1000..1499}; do v=V$n; printf '%s\\0' \"${!v}\"; done; cat";
    EXPECT_EQ(run(script, expected, values).output, expected + expected) << "round " << round;
  }
  EXPECT_NE(access(mark.c_str(), F_OK), 0);
  rmdir(folder);
}

TEST_F(shell, no_descriptor_goes_on) {
  int const leaked = fcntl(STDIN_FILENO, F_DUPFD, 77);
  ASSERT_GE(leaked, 77);
  std::string const number = std::to_string(leaked);
  EXPECT_EQ(run("[ -e /proc/self/fd/" + number + " ] || echo closed").output, "closed\n");
  close(leaked);
}

// A text of all kinds of characters, with lines in blocks of their own, goes out and comes back.
TEST_F(shell, texts_come_back_through_cat) {
  std::u16string const characters[] = {
      u"a",      u"plain text ",          u"\n", u"\n\n", u"é", u"漢", u"😀", u"\xD83D", u"\xDE00",
      u"\xFEFF", std::u16string(1, u'\0')};
  std::mt19937 random(2);
  for (int round = 0; round < 40; ++round) {
    text::storage storage;
    for (int edits = random() % 40; edits > 0; --edits) {
      std::u16string units;
      for (int count = random() % 300; count > 0; --count) {
        // A half beside its other half would be one character.
        auto const& next = characters[random() % std::size(characters)];
        if (!units.empty() && (units.back() & 0xFC00) == 0xD800 && (next[0] & 0xFC00) == 0xDC00)
          continue;
        units += next;
      }
      units += u'.';
      auto const line = random() % storage.lines();
      storage.insert(storage.end(line), units.begin(), units.end());
    }
    text::pos const end(storage.lines() - 1, storage.size(storage.lines() - 1));
    text::pos first(random() % storage.lines(), 0), last = end;
    commands::text_source source(storage, first, last);
    commands::output_text output(random() % 2 * 100000);
    std::string sent;
    auto const result = commands::run_shell(
        {.script = "cat"},
        [&] {
          auto const piece = source.next();
          sent += piece;
          return piece;
        },
        [&](std::string_view piece) {
          while (!piece.empty()) {  // cut anywhere
            std::size_t const count = std::min<std::size_t>(1 + random() % 200, piece.size());
            output.append(piece.substr(0, count));
            piece.remove_prefix(count);
          }
        });
    std::u16string expected;
    for (std::size_t line = first.line; line <= last.line; ++line)
      expected += (line == first.line ? u"" : u"\n") + std::u16string(storage.line_units(line));
    EXPECT_EQ(sent, unicode::to_utf8(expected)) << "round " << round;
    auto const text = output.take();
    ASSERT_TRUE(text) << "round " << round;
    EXPECT_TRUE(text->view() == expected) << "round " << round;
  }
}

TEST_F(shell, output_that_is_no_utf8_is_none) {
  for (std::string_view const bytes :
       {"\xC3", "a\xC3", "\x80", "\xC0\x80", "\xC1\xBF", "\xE0\x80\x80", "\xF0\x80\x80\x80",
        "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xE2\x82", "\xE2\x82x", "\xFF",
        "\xF8\x88\x80\x80\x80"}) {
    for (std::size_t before : {0, 200})
      for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
        commands::output_text output;
        output.append(std::string(before, 'x'));
        output.append(bytes.substr(0, cut));
        output.append(bytes.substr(cut));
        EXPECT_FALSE(output.take()) << bytes << " cut at " << cut;
      }
  }
}

// More than is wanted is taken only if the user says so, or if as much was read.
TEST_F(shell, a_flood_is_ended) {
  settings::store().set("WynCommandOutputLimit", 1);
  std::string const three(3 << 20, 'x');
  EXPECT_EQ(run("cat; head -c 2000000 /dev/zero", three).output.size(), three.size() + 2000000);
  EXPECT_TRUE(desktop_.alerts().shown.empty());
  auto const result = run("yes");
  EXPECT_EQ(result.error, "it has written more than 1 MB");
  EXPECT_EQ(result.status, -1);
  EXPECT_EQ(desktop_.alerts().shown.size(), 1u);
  desktop_.alerts().answer("Large Command Output", "Take More");
  EXPECT_EQ(run("head -c 3000000 /dev/zero").output.size(), 3000000u);
}

TEST_F(shell, the_user_can_end_it) {
  desktop_.busy().cancel_after = 3;
  auto const result = run("trap '' INT; sleep 1000");
  EXPECT_TRUE(result.cancelled);
  EXPECT_EQ(result.status, -1);
  EXPECT_FALSE(desktop_.waits().is_waiting());
}

TEST_F(shell, a_command_that_is_ended_has_time_to_clean_up) {
  temporary_folder const folder;
  desktop_.busy().cancel_after = 1'000'000;
  desktop_.busy().while_busy = [&] {
    if (!folder.names().empty()) desktop_.busy().cancel_after = 0;
  };
  auto const result = run("trap 'sleep 0.1; echo cleaned; exit' INT; : >" + folder.path() +
                          "/begun; while :; do sleep 0.02; done");
  EXPECT_TRUE(result.cancelled);
  EXPECT_EQ(result.output, "cleaned\n");
}

// Escape and Ctrl+C ask first; what is answered "Cancel" goes on.
TEST_F(shell, keys_ask_before_it_is_ended) {
  desktop_.busy().cancel_after = 1'000'000;
  bool is_asked = false;
  desktop_.busy().while_busy = [&] {
    is_asked = std::exchange(is_asked, true) || desktop_.waits().interrupt();
  };
  EXPECT_EQ(run("sleep 0.2; echo done").output, "done\n");
  ASSERT_EQ(desktop_.alerts().shown.size(), 1u);
  EXPECT_EQ(desktop_.alerts().shown[0].title, "Stop Command Execution");
  desktop_.alerts().answer("Stop Command Execution", "Kill Command");
  is_asked = false;
  desktop_.busy().while_busy = [&] {
    is_asked = std::exchange(is_asked, true) || desktop_.waits().escape();
  };
  auto const result = run("echo begun; exec sleep 1000");
  EXPECT_TRUE(result.cancelled);
  EXPECT_EQ(result.output, "begun\n");
}

// What doesn't want to end, and what has left the group with the pipe, can't keep the program.
TEST_F(shell, the_program_ends_while_it_runs) {
  desktop_.busy().cancel_after = 1'000'000;
  bool has_ended = false;
  desktop_.busy().while_busy = [&] {
    if (!desktop_.waits().is_ending()) desktop_.waits().finish([&] { has_ended = true; });
  };
  auto const result =
      run("trap '' INT TERM; setsid bash -c 'trap \"\" INT TERM; exec sleep 20' & while :; do "
          "sleep 1; done");
  EXPECT_TRUE(result.cancelled);
  EXPECT_TRUE(desktop_.alerts().shown.empty());
  desktop_.loop().run_for(0);
  EXPECT_TRUE(has_ended);
}

}  // namespace
