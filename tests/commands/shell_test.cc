#include "commands/shell.h"

#include "headless/headless_desktop.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

commands::shell_result run(std::string script, std::string input = "",
                           commands::variables variables = {}) {
  return commands::run_shell({.script = std::move(script),
                              .input = std::move(input),
                              .environment = std::move(variables)});
}

TEST(shell, gives_output_and_status) {
  headless::headless_desktop desktop;
  EXPECT_EQ(run("echo a; echo b >&2; echo c").output, "a\nb\nc\n");
  EXPECT_EQ(run("exit 7").status, 7);
  EXPECT_EQ(run("kill -9 $$").status, -1);
  EXPECT_EQ(run("cat").output, "");
  EXPECT_EQ(run("#!/usr/bin/env perl\nprint \"x$0\" =~ /temp_quirnote/ ? 1 : 0").output, "1");
  EXPECT_NE(run("#!/no/such/interpreter\n").error.find("interpreter failed"), std::string::npos);
  EXPECT_EQ(run("exec >&- 2>&-; exit 3").status, 3);
}

// Also for one that writes before it has read, or never reads.
TEST(shell, input_and_output_go_at_once) {
  headless::headless_desktop desktop;
  std::string const big(3'000'000, 'x');
  EXPECT_EQ(run("cat", big).output, big);
  EXPECT_EQ(run("head -c 200000 /dev/zero | tr '\\0' y; cat | wc -c", big).output,
            std::string(200000, 'y') + "3000000\n");
  EXPECT_EQ(run("echo done", big).output, "done\n");
}

TEST(shell, environment_is_the_users_without_the_editors_own) {
  headless::headless_desktop desktop;
  setenv("QN_FILEPATH", "/inherited", 1);
  setenv("QUIRNOTE_TEST", "kept", 1);
  std::string const script = "printf '%s|' \"$QN_FILEPATH\" \"$QUIRNOTE_TEST\" \"$A\" \"$SHLVL\"";
  EXPECT_EQ(run(script, "", {{"A", "$(touch /tmp/never)'\"\n;"}}).output,
            "|kept|$(touch /tmp/never)'\"\n;|2|");
  testing::internal::CaptureStderr();
  EXPECT_EQ(run("echo ${#A} ${#B}", "",
                {{"A", std::string(0x20000 - 2, 'x')}, {"B", std::string(0x20000 - 3, 'x')}})
                .output,
            "0 131069\n");
  EXPECT_NE(testing::internal::GetCapturedStderr().find("variable exceeds ARG_MAX: A"),
            std::string::npos);
  unsetenv("QN_FILEPATH");
  unsetenv("QUIRNOTE_TEST");
}

TEST(shell, a_flood_is_ended) {
  headless::headless_desktop desktop;
  auto const result = run("yes");
  EXPECT_FALSE(result.error.empty());
  EXPECT_GE(result.output.size(), std::size_t{64} << 20);
  EXPECT_EQ(result.status, -1);
}

TEST(shell, the_user_can_end_it) {
  headless::headless_desktop desktop;
  desktop.busy().cancel_after = 3;
  auto const result = run("trap '' INT; sleep 1000");
  EXPECT_TRUE(result.cancelled);
  EXPECT_EQ(result.status, -1);
  EXPECT_FALSE(desktop.waits().is_waiting());
}

}  // namespace
