#include "grammar/bit_stack.h"
#include "test.h"

namespace {

using elements = std::vector<std::pair<unsigned, unsigned>>;  // index, modulo

bit_stack::storage packed(elements const& of, unsigned* bits = nullptr) {
  bit_stack::builder builder;
  for (auto const& [index, modulo] : of) builder.push(index, modulo);
  if (bits) *bits = builder.bits_used();
  return bit_stack::storage(builder);
}

TEST(bit_stack, reads_back_what_was_pushed) {
  std::mt19937 random(1);
  for (int round = 0; round < 2000; ++round) {
    elements written(random() % 40);
    for (auto& [index, modulo] : written) {
      modulo = 1 + random() % (1u << (random() % 31));
      index = random() % modulo;
    }
    bit_stack::storage const made = packed(written), copy = made;
    EXPECT_EQ(made, copy);
    EXPECT_FALSE(made < copy);
    bit_stack::reader reader(copy);
    for (auto const& [index, modulo] : written) {
      ASSERT_FALSE(reader.empty());
      ASSERT_EQ(reader.pop(modulo), index);
    }
    EXPECT_TRUE(reader.empty());
    EXPECT_EQ(reader.pop(5), 5u) << "past the end";
  }
}

TEST(bit_stack, moves_to_a_block_when_31_bits_are_full) {
  unsigned bits = 0;
  elements of(31, {0, 1});
  EXPECT_TRUE(packed(of, &bits).is_inline());
  EXPECT_EQ(bits, 32u);
  of.emplace_back(0, 1);
  EXPECT_FALSE(packed(of, &bits).is_inline());
  EXPECT_EQ(bits, 32u);
  EXPECT_TRUE(packed({{0, 7}, {9, 1000}}).is_inline());
}

TEST(bit_stack, orders_words_before_blocks) {
  elements const all_set(20, {6, 7}), longer(40, {0, 7});
  elements first_less = all_set;
  first_less[0].first = 0;
  std::vector<bit_stack::storage> const ascending = {
      packed({}),         packed({{0, 3}}), packed({{1, 3}}), packed({{0, 3}, {0, 3}}),
      packed(first_less), packed(all_set),  packed(longer)};
  for (std::size_t i = 0; i < ascending.size(); ++i)
    for (std::size_t j = 0; j < ascending.size(); ++j) {
      EXPECT_EQ(ascending[i] < ascending[j], i < j);
      EXPECT_EQ(ascending[i] == ascending[j], i == j);
    }
}

TEST(bit_stack, reads_only_with_the_numbers_it_was_written_with) {
  bit_stack::storage const empty;
  EXPECT_TRUE(bit_stack::reader(empty).empty());
  bit_stack::storage const wide(packed({{0, 1}}));
  bit_stack::reader reader(wide);
  reader.pop(1u << 30);
  EXPECT_EQ(reader.pop(3), 3u);
}

}  // namespace
