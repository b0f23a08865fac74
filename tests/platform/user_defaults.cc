#include "platform/user_defaults.h"

#include <gtest/gtest.h>

TEST(user_defaults, smoke) {
  char folder[] = "/tmp/qn-defaults-XXXXXX";
  ASSERT_TRUE(mkdtemp(folder));
  std::string const path = std::string(folder) + "/Quirnote/Defaults.plist";
  platform::user_defaults a(path), b(path);
  a.set("x", 3);
  EXPECT_TRUE(a.save());
  EXPECT_EQ(b.integer("x"), 3);
  b.set("y", "z");
  EXPECT_TRUE(b.save());
  a.check_for_changes();
  EXPECT_EQ(a.string("y"), "z");
}
