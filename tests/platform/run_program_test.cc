#include "platform/system/run_program.h"
#include "test.h"

namespace {

platform::program_result run_shell(std::string const& script, double seconds, int* calls = nullptr,
                                   int most_calls = 1000) {
  int const input = open("/dev/null", O_RDONLY | O_CLOEXEC);
  int own_calls = 0;
  auto const result = platform::run_program({"sh", "-c", script}, input, seconds, [&] {
    return ++(calls ? *calls : own_calls) < most_calls;
  });
  close(input);
  return result;
}

TEST(run_program, gives_status_and_messages) {
  auto const result = run_shell("echo said; echo told >&2; exit 3", 10);
  EXPECT_EQ(result.error, 0);
  EXPECT_EQ(WEXITSTATUS(result.status), 3);
  EXPECT_EQ(result.standard_output, "said\n");
  EXPECT_EQ(result.standard_error, "told\n");
  EXPECT_EQ(platform::run_program({"/no/such"}, 0, 1, [] { return true; }).error, ENOENT);
}

TEST(run_program, takes_no_more_than_it_can_hold) {
  auto const result = run_shell("yes | head -c 1000000 | tee /dev/stderr", 10);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.standard_output.size(), 65536u);
  EXPECT_EQ(result.standard_error.size(), 65536u);
}

TEST(run_program, waits_for_the_program_alone_and_not_for_ever) {
  int calls = 0;
  auto const result = run_shell("sleep 2 >&2 & exec sleep 20", 0.2, &calls);
  EXPECT_TRUE(WIFSIGNALED(result.status));
  EXPECT_GT(calls, 5);
  calls = 0;
  EXPECT_TRUE(WIFSIGNALED(run_shell("exec sleep 20", 30, &calls, 3).status));
  auto const closed = run_shell("exec 2>&-; sleep 0.1", 10, &calls);
  EXPECT_EQ(closed.status, 0);
}

}  // namespace
