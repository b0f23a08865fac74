#include "encoding/block_appender.h"
#include "encoding/converters.h"
#include "encoding/encoding_cases.h"
#include "encoding/supplementary.h"

namespace {

using namespace encoding;
using bytes = std::vector<unsigned char>;
using units = std::vector<char16_t>;

bytes encode(units const& in, charset_t charset) {
  bytes out;
  convert_from_unicode(in.begin(), in.end(), charset, std::back_inserter(out));
  return out;
}

bytes encode_with_pairs(units const& in) {
  bytes out;
  encode_utf8_with_pairs(in.begin(), in.end(), std::back_inserter(out));
  return out;
}

units decode(bytes const& in, charset_t charset) {
  units out;
  convert_to_unicode(in.begin(), in.end(), charset, std::back_inserter(out));
  return out;
}

TEST(encoders, rules) {
  for (auto const& c : data_rows("encodings.txt", "encoders")) {
    units const in = units_named(c[1]);
    EXPECT_EQ(encode(in, charset_named(c[0])), bytes_of(c[2])) << c[0];
    std::list<char16_t> const list(in.begin(), in.end());
    std::string from_list;
    convert_from_unicode(list.begin(), list.end(), charset_named(c[0]),
                         std::back_inserter(from_list));
    EXPECT_EQ(from_list, c[2]) << c[0];
  }
}

TEST(encoders, every_unit_comes_back_from_the_unicode_charsets) {
  units all(0x10000);
  for (unsigned i = 0; i < all.size(); ++i) all[i] = i;
  for (auto charset : {UTF8, UTF16BE, UTF16LE})
    EXPECT_EQ(decode(encode(all, charset), charset), all);
}

TEST(encoders, every_byte_comes_back_from_the_eight_bit_charsets) {
  bytes all(256);
  for (unsigned i = 0; i < all.size(); ++i) all[i] = i;
  EXPECT_EQ(encode(decode(all, Latin1), Latin1), all);
  EXPECT_EQ(encode(decode(all, MacRoman), MacRoman), all);
  for (unsigned char unassigned : {0x81, 0x8D, 0x8F, 0x90, 0x9D}) all[unassigned] = '?';
  EXPECT_EQ(encode(decode(all, CP1252), CP1252), all);
}

TEST(supplementary, pairs_are_four_bytes_and_lone_surrogates_three) {
  EXPECT_EQ(encode_with_pairs({0xD83D, 0xDE00}), (bytes{0xF0, 0x9F, 0x98, 0x80}));
  EXPECT_EQ(encode_with_pairs({0xDBFF, 0xDFFF}), (bytes{0xF4, 0x8F, 0xBF, 0xBF}));
  EXPECT_EQ(encode_with_pairs({0xDE00, 0xD83D}), (bytes{0xED, 0xB8, 0x80, 0xED, 0xA0, 0xBD}));
  EXPECT_EQ(encode_with_pairs({0xD83D, 0xD83D, 0xDE00, 0xDE00}),
            (bytes{0xED, 0xA0, 0xBD, 0xF0, 0x9F, 0x98, 0x80, 0xED, 0xB8, 0x80}));
}

TEST(supplementary, every_character_comes_back_as_its_bytes) {
  for (char32_t value = 0x10000; value <= 0x10FFFF; ++value) {
    unsigned char sequence[4];
    ASSERT_EQ(put_utf8_sequence(value, sequence), sequence + 4);
    char16_t pair[2];
    ASSERT_EQ(decode_utf8_with_pairs(sequence, sequence + 4, pair, nullptr), pair + 2);
    ASSERT_EQ(joined_surrogates(pair[0], pair[1]), value);
    unsigned char again[4];
    ASSERT_EQ(encode_utf8_with_pairs(pair, pair + 2, again), again + 4);
    ASSERT_TRUE(std::equal(again, again + 4, sequence)) << std::hex << unsigned(value);
  }
}

TEST(block_appender, copies_share_the_buffer) {
  bytes block;
  {
    block_appender<bytes> a(block);
    auto b = a;
    for (int i = 0; i < 128; ++i) {
      *a++ = 1;
      *b++ = 2;
    }
    EXPECT_EQ(block.size(), 256u);
    *b++ = 3;
    { auto const gone = std::move(b); }
    EXPECT_EQ(block.size(), 256u);
  }
  EXPECT_EQ(block.size(), 257u);
  EXPECT_EQ(block[254], 1);
  EXPECT_EQ(block[255], 2);
  EXPECT_EQ(block[256], 3);
}

}  // namespace
