#include "text/shared_buffer.h"

#include "random_text.h"
#include "test.h"
#include "text/text_block.h"

namespace {

using buffer = text::shared_buffer<char16_t>;

std::u16string content(buffer const& b) {
  return {b.data(), b.data() + b.size()};
}
void append(buffer& b, char16_t unit) {
  b.replace(b.size(), 0, &unit, 1);
}

TEST(shared_buffer, copies_alias_one_array_once_it_is_touched) {
  buffer a;
  buffer const untouched = a;
  EXPECT_EQ(a.get_pimpl(false), nullptr);
  append(a, u'x');
  EXPECT_EQ(untouched.size(), 0u);

  buffer b = a, c;
  c = b;
  EXPECT_EQ(a.get_pimpl(false)->count, 3u);
  append(b, u'y');
  EXPECT_EQ(content(a), u"xy");
  EXPECT_EQ(content(c), u"xy");
  c = buffer();
  b.release();
  EXPECT_EQ(a.get_pimpl(false)->count, 1u);
}

TEST(shared_buffer, borrowed_slice_is_copied_by_the_first_change_or_alias) {
  std::u16string const memory = u"abcdef";
  buffer a = buffer::borrow(memory.data() + 1, 3);
  EXPECT_EQ(a.data(), memory.data() + 1);
  EXPECT_TRUE(a.is_borrowed());

  buffer b = a;
  EXPECT_FALSE(a.is_borrowed());
  append(b, u'!');
  EXPECT_EQ(content(a), u"bcd!");
  EXPECT_EQ(memory, u"abcdef");
  EXPECT_TRUE(buffer::borrow(memory.data(), 0).is_null());
}

TEST(shared_buffer, replace_equals_the_string_operation_in_each_state) {
  std::u16string const memory = u"0123456789";
  for (size_t column = 0; column <= 10; ++column)
    for (size_t erased = 0; column + erased <= 10; ++erased)
      for (std::u16string const inserted : {u"", u"x", u"xyzxyz"}) {
        std::u16string expected = memory;
        expected.replace(column, erased, inserted);
        buffer slice = buffer::borrow(memory.data(), memory.size());
        slice.replace(column, erased, inserted.data(), inserted.size());
        EXPECT_EQ(content(slice), expected);
        buffer owned;
        owned.replace(0, 0, memory.data(), memory.size());
        owned.replace(column, erased, inserted.data(), inserted.size());
        EXPECT_EQ(content(owned), expected);
      }
}

TEST(shared_buffer, trimming_a_slice_keeps_it_borrowed) {
  std::u16string const memory = u"0123456789";
  buffer slice = buffer::borrow(memory.data(), memory.size());
  slice.replace(0, 2, nullptr, 0);
  slice.replace(6, 2, nullptr, 0);
  EXPECT_TRUE(slice.is_borrowed());
  EXPECT_EQ(content(slice), u"234567");
}

TEST(paged_array, equals_a_string_while_it_grows_into_pages_and_shrinks) {
  constexpr size_t limit = text::paged_allocation / sizeof(char16_t);
  for (unsigned seed = 1; seed <= 4; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    random_source random(seed);
    std::u16string model = random.text(limit - random.below(1000), u"abcdefgh");
    text::paged_array<char16_t> array;
    array.append(model.data(), model.size());
    for (int step = 0; step < 30; ++step) {
      size_t const at = random.up_to(model.size());
      size_t const bound = random.one_in(8) ? 2 * limit : 500;
      size_t const erased = std::min(random.below(bound), model.size() - at);
      std::u16string const added(random.below(random.one_in(8) ? limit : 500), u'x');
      array.replace(at, erased, added.data(), added.size());
      model.replace(at, erased, added);
      ASSERT_EQ(array.size(), model.size());
      ASSERT_TRUE(std::equal(model.begin(), model.end(), array.data()));
    }
    text::paged_array<char16_t> const moved = std::move(array);
    EXPECT_EQ(moved.size(), model.size());
  }
}

TEST(text_block, builder_keeps_what_was_written_at_any_capacity) {
  for (size_t const capacity : {size_t{1}, size_t{1000}, size_t{3} << 20}) {
    text::text_block_builder builder(capacity);
    builder.data()[0] = u'a';
    builder.data()[capacity - 1] = u'z';
    text::text_block const all = builder.finish(capacity);
    EXPECT_EQ(all.size(), capacity);
    EXPECT_EQ(all[capacity - 1], u'z');

    text::text_block_builder partly(capacity);
    partly.data()[0] = u'b';
    EXPECT_EQ(partly.finish(1).view(), u"b");
  }
  EXPECT_TRUE(text::text_block::fill(0, u'x').empty());
  EXPECT_EQ(text::text_block::fill(3, u'x').view(), u"xxx");
}

}  // namespace
