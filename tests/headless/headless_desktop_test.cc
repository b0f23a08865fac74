#include "headless/headless_desktop.h"
#include "test.h"

namespace headless {
namespace {

TEST(headless_run_loop, runs_timers_in_the_order_of_their_time) {
  headless_run_loop loop;
  std::string order;
  auto const late = loop.schedule(2, false, [&] { order += "late "; });
  auto const often = loop.schedule(0.75, true, [&] { order += "tick "; });
  auto dropped = loop.schedule(1, false, [&] { order += "never "; });
  loop.post([&] { order += "posted "; });
  dropped.reset();
  loop.run_for(2.1);
  EXPECT_EQ(order, "posted tick tick late ");
  EXPECT_DOUBLE_EQ(loop.now(), 2.1);
}

TEST(headless_run_loop, a_timer_may_drop_itself) {
  headless_run_loop loop;
  int count = 0;
  std::unique_ptr<platform::timer> timer;
  timer = loop.schedule(1, true, [&] {
    if (++count == 2) timer.reset();
  });
  loop.run_for(10);
  EXPECT_EQ(count, 2);
}

TEST(scripted_alerts, give_the_safe_button_unless_told) {
  headless_desktop desktop;
  scripted_alerts& alerts = desktop.alerts();
  platform::alert const question{"Warning", "Keep?", {"Keep", "Revert"}, 0};
  EXPECT_EQ(alerts.run(question), 0u);
  alerts.answer("Warning", "Revert");
  EXPECT_EQ(alerts.run(question), 1u);
  alerts.answer("Warning", "No such button");
  EXPECT_EQ(alerts.run(question), 0u);
  ASSERT_EQ(alerts.shown.size(), 3u);
  EXPECT_EQ(alerts.shown[1].answer, "Revert");
}

}  // namespace
}  // namespace headless
