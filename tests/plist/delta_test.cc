#include "plist/delta.h"

#include "plist/text_reader.h"
#include "random_values.h"
#include "test.h"

namespace {

using plist::array;
using plist::dictionary;
using plist::value;

value read(std::string_view text) {
  dictionary error;
  value result = plist::convert(text, &error);
  EXPECT_TRUE(result) << text << error["info"];
  return result;
}

TEST(delta, records_paths_of_what_differs) {
  auto const before = read(
      "{ uuid = U; same = 1; gone = x; list = ( a, b ); deep = { a = 1; b = 2; c = { }; };"
      "  flat = { x = 1; }; }");
  auto const now = read(
      "{ uuid = V; same = 1; new = { k = 1; }; list = ( a ); deep = { a = 1; b = 3; };"
      "  flat = y; }");
  EXPECT_EQ(
      value(plist::DeltaPList(before.entries(), now.entries())),
      value(dictionary{{"isDelta", true},
                       {"uuid", "U"},
                       {"deleted", array{"gone", "deep.c"}},
                       {"changed", read("{ uuid = V; new = { k = 1; }; list = ( a ); 'deep.b' = 3;"
                                        "  flat = y; }")}}));
}

TEST(delta, of_equal_dictionaries_is_empty) {
  auto const base = read("{ uuid = U; a = { b = ( 1 ); }; }");
  value const delta = plist::DeltaPList(base.entries(), base.entries());
  EXPECT_EQ(delta["changed"], value(dictionary{}));
  EXPECT_EQ(delta["deleted"], value(array{}));
  EXPECT_EQ(plist::MergePLists({delta, base}), base);
}

TEST(delta, merging_gives_the_new_dictionary) {
  rc::check([] {
    random_values::kinds const kinds{.dots_in_keys = false};
    dictionary before = {{"a", random_values::value(kinds)}, {"b", random_values::value(kinds)}};
    dictionary now = before;
    now.insert_or_assign("a", random_values::value(kinds));
    now.merge(dictionary(random_values::value(kinds).entries()));
    value const base = before, kept = plist::mutableDeepCopy(base);
    RC_ASSERT(plist::MergePLists({plist::DeltaPList(before, now), base}) == value(now));
    RC_ASSERT(base == kept);
  });
}

TEST(delta, merging) {
  std::string const delta =
      "{ isDelta = 1; deleted = ( x, 'd.e', 'no.such' ); "
      "changed = { y = 2; 'd.f' = 3; 'a.b' = 4; 's.t' = 5; }; }";
  struct {
    std::string layers, result;  // an empty result is nothing
  } const cases[] = {
      {"( )", ""},
      {"( " + delta + " )", ""},
      {"( " + delta + ", { x = 1; y = 1; s = z; d = { e = 1; g = 1; }; } )",
       "{ y = 2; s = z; d = { f = 3; g = 1; }; }"},
      {"( { a = 1; }, { b = 1; } )", "{ a = 1; }"},
      {"( { isDelta = 1; changed = { a = 3; }; }, { isDelta = 1; changed = { a = 2; b = 2; }; },"
       " { a = 1; b = 1; c = 1; } )",
       "{ a = 3; b = 2; c = 1; }"},
      {"( { a = 1; }, " + delta + ", { x = 1; } )", "{ a = 1; }"},
      {"( { isDelta = 1; }, { a = 1; } )", "{ a = 1; }"},
      {"( { isDelta = 1; changed = ( a ); deleted = { a = 1; }; }, { a = 1; } )", "{ a = 1; }"},
      {"( { isDelta = 0; a = 2; }, { a = 1; } )", "{ isDelta = 0; a = 2; }"},
      {"( { isDelta = 1; deleted = ( ( a ), 1, '', '.', 'a.' ); }, { a = 1; } )", "{ a = 1; }"},
      {"( x, { a = 1; }, ( y ) )", "{ a = 1; }"},
      {"( x )", ""},
  };
  for (auto const& c : cases)
    EXPECT_EQ(plist::MergePLists(read(c.layers).elements()),
              c.result.empty() ? value() : read(c.result))
        << c.layers;
}

}  // namespace
