#include <gtest/gtest.h>

#include <bitset>
#include <list>

#include "encoding/converters.h"
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

TEST(Decoders, Utf8OfEveryShortInput) {
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

TEST(Decoders, Utf8Rules) {
  struct {
    bytes in;
    units out;
  } const cases[] = {
      {{0xF0, 0x9F, 0x98, 0x80}, {0xF600}},                       // U+1F600 loses its top
      {{0xC0, 0x80}, {0}},                                        // longer than need be
      {{0xED, 0xA0, 0x80}, {0xD800}},                             // a surrogate
      {{0xC3, 0xA9, 0xA9}, {0xE9, 0xFFFD}},                       // a lone continuation
      {{0xE2, 0x82}, {0xFFFD}},                                   // cut short
      {{0xE2, 0x82, 0xC3, 0xA9}, {0xFFFD, 0xE9}},                 // read again from C3
      {{0xFF, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80}, {0, 0xFFFD}},  // taken for six bytes
      {{0xEF, 0xBB}, {0xFFFD}},                                   // not a mark
      {{'a', 0xEF, 0xBB, 0xBF}, {'a', 0xFEFF}},                   // nor this
      {{0xEF, 0xBB, 0xBF, 0xEF, 0xBB, 0xBF}, {0xFEFF}},           // one mark is skipped
  };
  for (auto const& [in, out] : cases) EXPECT_EQ(decode(in, UTF8), out);
}

TEST(Decoders, MarksAreSkippedAndTold) {
  struct {
    charset_t charset;
    bytes in;
    units out;
    bool has_bom;
  } const cases[] = {
      {UTF8, {0xEF, 0xBB, 0xBF}, {}, true},
      {UTF8, {0xEF, 0xBB}, {0xFFFD}, false},
      {UTF16BE, {0xFE, 0xFF}, {}, true},
      {UTF16BE, {0xFE}, {}, false},
      {UTF16BE, {0xFE, 0xFF, 0x20}, {}, true},  // a lone last byte is dropped
      {UTF16BE, {0x20, 0xAC, 0xD8, 0x3D}, {0x20AC, 0xD83D}, false},
      {UTF16BE, {0xFF, 0xFE}, {0xFFFE}, false},
      {UTF16LE, {0xFF, 0xFE, 0xAC, 0x20, 0x41}, {0x20AC}, true},
      {UTF16LE, {0xFE, 0xFF}, {0xFFFE}, false},
      {Latin1, {0xEF, 0xBB, 0xBF}, {0xEF, 0xBB, 0xBF}, false},
  };
  for (auto const& c : cases) {
    for (bool before : {false, true}) {
      bool has_bom = before;
      EXPECT_EQ(decode(c.in, c.charset, &has_bom), c.out);
      EXPECT_EQ(has_bom, c.has_bom || before);
    }
  }
}

TEST(Decoders, EightBitCharsets) {
  EXPECT_EQ(decode({0x00, 0x7F, 0x80, 0xFF}, ASCII), (units{0x00, 0x7F, 0x80, 0xFF}));
  EXPECT_EQ(decode({0x00, 0x7F, 0x80, 0xFF}, Latin1), (units{0x00, 0x7F, 0x80, 0xFF}));
  EXPECT_EQ(decode({'a', 0x80, 0x8E, 0xCA, 0xDB, 0xF0, 0xFF}, MacRoman),
            (units{'a', 0xC4, 0xE9, 0xA0, 0x20AC, 0xF8FF, 0x2C7}));
  EXPECT_EQ(decode({'a', 0x80, 0x81, 0x8D, 0x8F, 0x90, 0x9D, 0x9F, 0xA0, 0xE9}, CP1252),
            (units{'a', 0x20AC, '?', '?', '?', '?', '?', 0x178, 0xA0, 0xE9}));
}

TEST(Decoders, TakeSignedBytesAndAnyForwardIterator) {
  std::string const text = "\xC3\xA9\xE2\x82\xAC";
  std::list<char> const list(text.begin(), text.end());
  for (int charset = ASCII; charset < Unknown; ++charset) {
    units from_list;
    convert_to_unicode(list.begin(), list.end(), charset_t(charset), std::back_inserter(from_list));
    EXPECT_EQ(from_list, decode(bytes(text.begin(), text.end()), charset_t(charset)));
  }
}

TEST(Supplementary, PairsAreMadeFromWholeFourByteSequencesOnly) {
  struct {
    bytes in;
    units out;
  } const cases[] = {
      {{0xF0, 0x90, 0x80, 0x80}, {0xD800, 0xDC00}},
      {{0xF0, 0x9F, 0x98, 0x80}, {0xD83D, 0xDE00}},
      {{0xF4, 0x8F, 0xBF, 0xBF}, {0xDBFF, 0xDFFF}},
      {{0xF0, 0x8F, 0xBF, 0xBF}, {0xFFFF}},              // longer than need be
      {{0xF4, 0x90, 0x80, 0x80}, {0x0000}},              // U+110000 loses its top
      {{0xF7, 0xBF, 0xBF, 0xBF}, {0xFFFF}},              // so does U+1FFFFF
      {{0xF8, 0x80, 0x90, 0x80, 0x81}, {0x0001}},        // U+10001 in five bytes
      {{0xFC, 0x80, 0x80, 0x90, 0x80, 0x81}, {0x0001}},  // and in six
      {{0xED, 0xA0, 0x80}, {0xD800}},
      {{0xED, 0xA0, 0x80, 0xED, 0xB0, 0x80}, {0xD800, 0xDC00}},
      {{0xF0, 0x9F, 0x98}, {0xFFFD}},
  };
  for (auto const& [in, out] : cases) EXPECT_EQ(decode_with_pairs(in), out);
}

}  // namespace
