#include "agreement.h"
#include "encoding/lanes.h"
#include "test.h"

// The functions for whole files against the generic ones.

namespace {

using agreement::bytes;
using agreement::units;

/// Text as it occurs, and text as it shouldn't, in one: pieces of each kind in random order.
class text_maker {
 public:
  explicit text_maker(unsigned seed) : random_(seed) {}

  bytes make(std::size_t pieces) {
    bytes out;
    for (std::size_t i = 0; i < pieces; ++i) add(out);
    return out;
  }
  unsigned below(unsigned n) { return random_() % n; }

 private:
  void put(bytes& out, char32_t value) {
    encoding::put_utf8_sequence(value, std::back_inserter(out));
  }

  void add(bytes& out) {
    unsigned const length = below(40);
    switch (below(9)) {
      case 0:
      case 1:
        for (unsigned i = 0; i < length; ++i) out.push_back(32 + below(95));
        break;
      case 2:
        for (unsigned i = 0; i < length; ++i) put(out, 0x80 + below(0x780));
        break;
      case 3:
        for (unsigned i = 0; i < length; ++i) put(out, 0x800 + below(0xF800));
        break;
      case 4:
        put(out, 0x10000 + below(0x100000));
        break;
      case 5:
        out.push_back("\r\n\n\t"[below(4)]);
        break;
      case 6:
        put(out, 0xD7F0 + below(0x820));
        break;
      case 7:
        if (below(4) == 0) out.push_back(below(256));
        break;
      case 8:
        if (below(4) == 0 && !out.empty()) out.pop_back();
        break;
    }
  }

  std::mt19937 random_;
};

TEST(whole_files, decoding_agrees_on_short_input_at_every_distance_from_the_end) {
  unsigned char const telling[] = {'a',  0x80, 0x9F, 0xA0, 0xBF, 0xC1, 0xC2, 0xE0, 0xED,
                                   0xEF, 0xF0, 0xF4, 0xF7, 0xF8, 0xFC, 0xFE, 0xFF};
  for (unsigned char a : telling) {
    for (unsigned char b : telling) {
      for (unsigned char c : {0x41, 0x80, 0xB0, 0xED}) {
        for (std::size_t before : {0, 15, 45, 63}) {
          bytes in(before, 'x');
          for (unsigned char byte : {a, b, c, (unsigned char)0x80, (unsigned char)0x90, a, b, c})
            in.push_back(byte);
          ASSERT_EQ(agreement::in_decoding(in), "");
          for (std::size_t after : {40, 100}) {
            in.resize(in.size() + after, 'y');
            ASSERT_EQ(agreement::in_decoding(in), "");
          }
        }
      }
    }
  }
}

TEST(whole_files, one_odd_sequence_in_good_text_is_seen_at_every_place) {
  std::istringstream odd(
      "\xC1\xBF \xE0\x9F\xBF \xE0\xA0\x80 \xED\x9F\xBF \xED\xA0\x80 \xED\xA0\x80\xED\xB0\x80 "
      "\xEE\x80\x80 \xF0\x8F\xBF\xBF \xF0\x90\x80\x80 \xF4\x8F\xBF\xBF \xF4\x90\x80\x80 "
      "\xF8\x88\x80\x80\x80 \xC3 \xA9 \xE2\x82 \xFE");
  for (std::string sequence; odd >> sequence;) {
    for (std::string const sound : {"x", "\u00E9", "\u5929", "x\u00E9\u5929", "caf\u00E9 "}) {
      std::string before;
      for (; before.size() < 80; before += sound) {
        std::string text = before + sequence;
        while (text.size() < 200) text += sound;
        ASSERT_EQ(agreement::in_decoding({text.begin(), text.end()}), "");
      }
    }
  }
}

TEST(whole_files, encoding_agrees_beyond_the_buffer) {
  text_maker maker(3);
  units in = agreement::decode(maker.make(20000), encoding::UTF8, true, nullptr);
  EXPECT_EQ(agreement::in_encoding(in, in.size()), "");
  EXPECT_EQ(agreement::in_encoding(units(100000, u'\n'), 100000), "");
  units pairs(4095, u'x');  // then pairs that lie across the pieces
  for (int i = 0; i < 10000; ++i) pairs.insert(pairs.end(), {0xD83D, 0xDE00});
  EXPECT_EQ(agreement::in_encoding(pairs, pairs.size()), "");
}

TEST(whole_files, every_unit_is_kept_or_lost_as_the_generic_converters_say) {
  for (unsigned unit = 0; unit < 0x10000; ++unit)
    ASSERT_EQ(agreement::in_losses({static_cast<char16_t>(unit)}), "");
  units const text(1000, u'\u0100');
  for (auto charset : {encoding::UTF8, encoding::UTF16BE, encoding::UTF16LE}) {
    auto const* last = text.data() + text.size();
    EXPECT_EQ(encoding::first_lost_unit(text.data(), last, charset), last);
  }
}

TEST(whole_files, a_failed_sink_ends_the_encoding) {
  int calls = 0;
  encoding::stream_encoder encoder({},
                                   [&](unsigned char const*, std::size_t) { return ++calls < 2; });
  units const text(100000, u'x');
  bool good = true;
  int parts = 0;
  for (; good && parts < 100; ++parts) good = encoder.put(text.data(), text.data() + text.size());
  EXPECT_FALSE(good);
  EXPECT_LT(parts, 5);
  EXPECT_FALSE(encoder.finish());
  EXPECT_EQ(calls, 2);
}

#if defined(__SSE2__)
TEST(whole_files, both_kinds_of_lanes_agree) {
  using P = encoding::portable_lanes;
  using S = encoding::sse2_lanes;
  text_maker maker(4);
  for (int i = 0; i < 20000; ++i) {
    bytes in = maker.make(10);
    in.resize(64, 'x');
    units u(32), a(16), b(16);
    std::memcpy(u.data(), in.data(), 64);
    if (maker.below(2)) {
      for (char16_t& unit : u) unit &= maker.below(2) ? 0xFF : 0x0F;
    }
    ASSERT_EQ(P::widen(a.data(), in.data()), S::widen(b.data(), in.data()));
    ASSERT_EQ(a, b);
    ASSERT_EQ(P::two_byte_sequences(a.data(), in.data()),
              S::two_byte_sequences(b.data(), in.data()));
    ASSERT_EQ(a, b);
    if (maker.below(2)) {
      for (char16_t& unit : u) unit &= 0x8FF;
    }
    bytes x(16), y(16);
    ASSERT_EQ(P::put_two_byte_sequences(x.data(), u.data()),
              S::put_two_byte_sequences(y.data(), u.data()));
    ASSERT_EQ(x, y);
    for (int limit : {0, 0x80, 0xA0, 0xC0, 0xE0, 0xF0, 0xF8, 0xFC, 0xFE}) {
      auto const l = static_cast<signed char>(limit);
      ASSERT_EQ(P::below(in.data(), l), S::below(in.data(), l));
    }
    for (char16_t refused : {0xFF80, 0xFF00}) {
      unsigned const mask = P::narrow(x.data(), u.data(), refused, u'\n');
      ASSERT_EQ(mask, S::narrow(y.data(), u.data(), refused, u'\n'));
      for (int k = 0; k < 16; ++k) ASSERT_TRUE(mask >> k & 1 || x[k] == y[k]);
    }
    ASSERT_EQ(P::equal(u.data(), u'\r'), S::equal(u.data(), u'\r'));
    P::swap_bytes(a.data(), u.data());
    S::swap_bytes(b.data(), u.data());
    ASSERT_EQ(a, b);
    std::size_t lf_a = 0, lf_b = 0;
    ASSERT_EQ(P::skip_to_cr(u.data(), 32, lf_a), S::skip_to_cr(u.data(), 32, lf_b));
    ASSERT_EQ(lf_a, lf_b);
  }
}
#endif

}  // namespace
