#include "grammar/verify_rule.h"

#include "data_rows.h"
#include "plist/text_reader.h"

namespace {

TEST(verify_rule, tells_the_first_fault) {
  for (auto const& row : data_rows("grammars.txt", "faults")) {
    std::string const &rule = row[0], &fault = row[1];
    auto const found = grammar::verify_rule(plist::convert(rule));
    EXPECT_EQ(found.value_or("").substr(0, fault.size()), fault) << rule;
    EXPECT_EQ(found.has_value(), !fault.empty()) << rule;
  }
}

}  // namespace
