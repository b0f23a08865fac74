#include "platform/notification_center.h"
#include "test.h"

namespace {

using platform::notification_center;

TEST(notification_center, names_and_objects_select_observers) {
  notification_center center;
  std::string heard;
  int a = 0, b = 0;
  auto const any = center.observe("x", [&](auto const& n) { heard += n.info.string_or("-"); });
  auto const of_a = center.observe(
      "x", [&](auto const&) { heard += "A"; }, &a);
  auto const other = center.observe("y", [&](auto const&) { heard += "y"; });
  center.post("x", &a, "1");
  center.post("x", &b, "2");
  center.post("x");
  center.post("y", &a);
  center.post("z");
  EXPECT_EQ(heard, "1A2-y");
}

TEST(notification_center, observers_may_come_and_go_during_a_post) {
  notification_center center;
  std::string heard;
  notification_center::token self, later, added;
  self = center.observe("x", [&](auto const&) {
    heard += "s";
    self.reset();
    later.reset();
    if (!added) added = center.observe("x", [&](auto const&) { heard += "n"; });
  });
  later = center.observe("x", [&](auto const&) { heard += "l"; });
  center.post("x");
  EXPECT_EQ(heard, "s");
  center.post("x");
  EXPECT_EQ(heard, "sn");
}

TEST(notification_center, posts_may_nest) {
  notification_center center;
  int depth = 0, calls = 0;
  auto const token = center.observe("x", [&](auto const&) {
    ++calls;
    if (++depth < 3) center.post("x");
  });
  center.post("x");
  EXPECT_EQ(calls, 3);
}

TEST(notification_center, tokens_outlive_the_centre) {
  auto center = std::make_unique<notification_center>();
  auto first = center->observe("x", [](auto const&) {});
  notification_center::token second = std::move(first);
  EXPECT_FALSE(first);
  EXPECT_TRUE(second);
  center.reset();
  second.reset();
  EXPECT_FALSE(second);
}

}  // namespace
