#include "bundle_fixture.h"

#include "bundles/check/check_bundle.h"
#include "data_rows.h"

// Each fault is reported with its key and line.
TEST_F(bundle_test, faults_are_reported_as_the_file_says) {
  for (std::string const section : {"bundle", "theme"}) {
    std::multiset<std::string> expected, reported;
    std::string path = folder / "Bad.qnbundle";
    for (auto const& row : data_rows("bundle_faults.txt", section)) {
      expected.insert(row.begin() + 2, row.end());
      std::string const file = put("Bad.qnbundle/" + row[0], row[1]);
      if (section == "theme") path = file;
    }
    for (auto const& fault : bundles::check_bundle(path, {"source.other"})) {
      EXPECT_GT(fault.line, 0u);
      reported.insert(fault.key + ": " + fault.reason.substr(0, 13));
    }
    EXPECT_EQ(reported, expected);
  }
}
