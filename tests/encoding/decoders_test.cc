#include <bitset>

#include "encoding/converters.h"
#include "encoding/encoding_cases.h"
#include "encoding/supplementary.h"

namespace {

using namespace encoding;
using bytes = std::vector<unsigned char>;
using units = std::vector<char16_t>;

units decode(bytes const& in, charset_t charset, bool* has_bom = nullptr) {
  units out;
  convert_to_unicode(in.begin(), in.end(), charset, std::back_inserter(out), has_bom);
  return out;
}

units decode_with_pairs(bytes const& in) {
  units out;
  decode_utf8_with_pairs(in.begin(), in.end(), std::back_inserter(out), nullptr);
  return out;
}

// The rules of UTF-8 decoding once more, on text made of the letters 0 and 1.
class bitwise_decoder {
 public:
  units operator()(bytes const& in) {
    out_.clear();
    std::size_t at = in.size() >= 3 && in[0] == 0xEF && in[1] == 0xBB && in[2] == 0xBF ? 3 : 0;
    while (at < in.size()) at = sequence(in, at);
    return out_;
  }

 private:
  static std::string bits(unsigned char byte) { return std::bitset<8>(byte).to_string(); }

  std::size_t sequence(bytes const& in, std::size_t at) {
    std::string const lead = bits(in[at++]);
    std::size_t ones = std::min(lead.find('0'), lead.size());
    if (ones == 1) return put(0xFFFD), at;
    if (ones > 6) ones = 6;
    std::string value = lead.substr(ones);
    for (std::size_t i = 1; i < ones; ++i, ++at) {
      if (at == in.size() || bits(in[at]).substr(0, 2) != "10") return put(0xFFFD), at;
      value += bits(in[at]).substr(2);
    }
    put(std::stoull(value, nullptr, 2));
    return at;
  }
  void put(unsigned long long value) { out_.push_back(static_cast<char16_t>(value)); }

  units out_;
};

// One byte from each end of each class that any rule knows.
constexpr unsigned char telling_bytes[] = {0x00, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBB,
                                           0xBF, 0xC0, 0xC1, 0xC2, 0xDF, 0xE0, 0xE1, 0xED, 0xEF,
                                           0xF0, 0xF4, 0xF5, 0xF8, 0xFC, 0xFD, 0xFE, 0xFF};

TEST(decoders, utf8_of_every_short_input) {
  bitwise_decoder reference;
  ASSERT_EQ(decode({}, UTF8), units{});
  bytes in;
  for (unsigned a = 0; a < 256; ++a) {
    in = {static_cast<unsigned char>(a)};
    ASSERT_EQ(decode(in, UTF8), reference(in));
    for (unsigned b = 0; b < 256; ++b) {
      in = {static_cast<unsigned char>(a), static_cast<unsigned char>(b)};
      ASSERT_EQ(decode(in, UTF8), reference(in)) << a << ' ' << b;
    }
  }
  for (unsigned char a : telling_bytes) {
    for (unsigned char b : telling_bytes) {
      for (unsigned char c : telling_bytes) {
        in = {a, b, c};
        ASSERT_EQ(decode(in, UTF8), reference(in));
      }
    }
  }
}

TEST(decoders, utf8_rules) {
  for (auto const& c : data_rows("encodings.txt", "utf-8"))
    EXPECT_EQ(decode(bytes_of(c[0]), UTF8), units_named(c[1])) << c[0];
}

TEST(decoders, marks_are_skipped_and_told) {
  for (auto const& c : data_rows("encodings.txt", "marks")) {
    for (bool before : {false, true}) {
      bool has_bom = before;
      EXPECT_EQ(decode(bytes_of(c[1]), charset_named(c[0]), &has_bom), units_named(c[2]));
      EXPECT_EQ(has_bom, c[3] == "true" || before);
    }
  }
}

TEST(decoders, eight_bit_charsets) {
  EXPECT_EQ(decode({0x00, 0x7F, 0x80, 0xFF}, ASCII), (units{0x00, 0x7F, 0x80, 0xFF}));
  EXPECT_EQ(decode({0x00, 0x7F, 0x80, 0xFF}, Latin1), (units{0x00, 0x7F, 0x80, 0xFF}));
  EXPECT_EQ(decode({'a', 0x80, 0x8E, 0xCA, 0xDB, 0xF0, 0xFF}, MacRoman),
            (units{'a', 0xC4, 0xE9, 0xA0, 0x20AC, 0xF8FF, 0x2C7}));
  EXPECT_EQ(decode({'a', 0x80, 0x81, 0x8D, 0x8F, 0x90, 0x9D, 0x9F, 0xA0, 0xE9}, CP1252),
            (units{'a', 0x20AC, '?', '?', '?', '?', '?', 0x178, 0xA0, 0xE9}));
}

TEST(decoders, take_signed_bytes_and_any_forward_iterator) {
  std::string const text = "\xC3\xA9\xE2\x82\xAC";
  std::list<char> const list(text.begin(), text.end());
  for (int charset = ASCII; charset < Unknown; ++charset) {
    units from_list;
    convert_to_unicode(list.begin(), list.end(), charset_t(charset), std::back_inserter(from_list));
    EXPECT_EQ(from_list, decode(bytes(text.begin(), text.end()), charset_t(charset)));
  }
}

TEST(supplementary, pairs_are_made_from_whole_four_byte_sequences_only) {
  for (auto const& c : data_rows("encodings.txt", "pairs"))
    EXPECT_EQ(decode_with_pairs(bytes_of(c[0])), units_named(c[1])) << c[0];
}

}  // namespace
