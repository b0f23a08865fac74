#include "platform/unicode.h"

#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/ustring.h>
#include <unicode/utext.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <cassert>
#include <memory>

#include "platform/utf.h"

namespace unicode {
namespace {

constexpr bool ascii_lower(char16_t u) {
  return u >= u'a' && u <= u'z';
}
constexpr bool ascii_upper(char16_t u) {
  return u >= u'A' && u <= u'Z';
}
constexpr bool ascii_digit(char16_t u) {
  return u >= u'0' && u <= u'9';
}

bool in_categories(char32_t c, std::uint32_t mask) {
  return (U_MASK(u_charType(static_cast<UChar32>(c))) & mask) != 0;
}

using full_mapping = std::int32_t (*)(UChar*, std::int32_t, UChar const*, std::int32_t, char const*,
                                      UErrorCode*);

char16_t mapped_unit(char16_t u, full_mapping map) {
  char16_t result[8];
  UErrorCode status = U_ZERO_ERROR;
  std::int32_t const length = map(result, 8, &u, 1, "", &status);
  return U_SUCCESS(status) && length == 1 ? result[0] : u;
}

// Clusters are found within a window that starts at a unit before which a cluster surely ends,
// so that a query does not cost the length of the text. A longer run of joined emoji or regional
// indicators than this is cut.
constexpr std::size_t window_before = 128;
constexpr std::size_t first_window_after = 32;

bool surely_starts_cluster(std::u16string_view text, std::size_t index) {
  char16_t const before = text[index - 1], at = text[index];
  if (before == u'\r' && at == u'\n') return false;
  return before < 0x80 && at < 0x80;
}

std::size_t window_start(std::u16string_view text, std::size_t from) {
  std::size_t const limit = from > window_before ? from - window_before : 0;
  for (std::size_t i = from; i > limit; --i)
    if (i < text.size() && surely_starts_cluster(text, i)) return i;
  if (limit != 0 && U16_IS_TRAIL(text[limit]) && U16_IS_LEAD(text[limit - 1])) return limit - 1;
  return limit;
}

/// One for each thread: break iterators have state and are costly to make.
class cluster_iterator {
 public:
  cluster_iterator() {
    UErrorCode status = U_ZERO_ERROR;
    breaks_.reset(icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    if (U_FAILURE(status)) breaks_.reset();
  }

  std::size_t following(std::u16string_view text, std::size_t offset) {
    if (!set_text(text)) return next_code_point(text, offset);
    auto const result = breaks_->following(static_cast<std::int32_t>(offset));
    return result == icu::BreakIterator::DONE ? text.size() : static_cast<std::size_t>(result);
  }

  std::size_t preceding(std::u16string_view text, std::size_t offset) {
    if (!set_text(text)) return previous_code_point(text, offset);
    auto const result = breaks_->preceding(static_cast<std::int32_t>(offset));
    return result == icu::BreakIterator::DONE ? 0 : static_cast<std::size_t>(result);
  }

 private:
  static std::size_t next_code_point(std::u16string_view text, std::size_t offset) {
    U16_FWD_1(text.data(), offset, text.size());
    return offset;
  }

  static std::size_t previous_code_point(std::u16string_view text, std::size_t offset) {
    U16_BACK_1(text.data(), 0, offset);
    return offset;
  }

  bool set_text(std::u16string_view text) {
    if (!breaks_) return false;
    UErrorCode status = U_ZERO_ERROR;
    UText handle = UTEXT_INITIALIZER;
    utext_openUChars(&handle, text.data(), static_cast<std::int64_t>(text.size()), &status);
    breaks_->setText(&handle, status);  // makes a shallow clone of its own
    utext_close(&handle);
    return U_SUCCESS(status);
  }

  std::unique_ptr<icu::BreakIterator> breaks_;
};

cluster_iterator& clusters() {
  thread_local cluster_iterator instance;
  return instance;
}

icu::UnicodeString to_icu(std::string_view utf8) {
  std::u16string const text = to_utf16(utf8);
  return {text.data(), static_cast<std::int32_t>(text.size())};
}

std::string from_icu(icu::UnicodeString const& text) {
  return to_utf8({text.getBuffer(), static_cast<std::size_t>(text.length())});
}

}  // namespace

bool is_lower(char16_t u) {
  return u < 128 ? ascii_lower(u) : in_categories(u, U_GC_LL_MASK);
}

bool is_upper(char16_t u) {
  return u < 128 ? ascii_upper(u) : in_categories(u, U_GC_LU_MASK | U_GC_LT_MASK);
}

bool is_alpha(char16_t u) {
  if (u < 128) return ascii_lower(u) || ascii_upper(u);
  return in_categories(u, U_GC_L_MASK | U_GC_M_MASK);
}

bool is_alnum(char16_t u) {
  if (u < 128) return ascii_lower(u) || ascii_upper(u) || ascii_digit(u);
  return in_categories(u, U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK);
}

bool is_digit(char16_t u) {
  return u < 128 ? ascii_digit(u) : in_categories(u, U_GC_ND_MASK);
}

bool is_space(char16_t u) {
  if (u < 128) return u == u' ' || (u >= u'\t' && u <= u'\r');
  return in_categories(u, U_GC_ZS_MASK);
}

char16_t to_lower(char16_t u) {
  if (u < 128) return ascii_upper(u) ? static_cast<char16_t>(u + 32) : u;
  return mapped_unit(u, u_strToLower);
}

char16_t to_upper(char16_t u) {
  if (u < 128) return ascii_lower(u) ? static_cast<char16_t>(u - 32) : u;
  return mapped_unit(u, u_strToUpper);
}

std::string uppercase(std::string_view utf8) {
  return from_icu(to_icu(utf8).toUpper(icu::Locale::getRoot()));
}

std::string lowercase(std::string_view utf8) {
  return from_icu(to_icu(utf8).toLower(icu::Locale::getRoot()));
}

bool is_wide(char32_t c) {
  if (c < 0x1100) return false;
  auto const width = u_getIntPropertyValue(static_cast<UChar32>(c), UCHAR_EAST_ASIAN_WIDTH);
  return width == U_EA_WIDE || width == U_EA_FULLWIDTH;
}

bool is_zero_width(char32_t c) {
  if (c < 0x300) return c == 0xAD;
  if (in_categories(c, U_GC_MN_MASK | U_GC_ME_MASK | U_GC_CF_MASK)) return true;
  return c >= 0x1160 && c <= 0x11FF;  // Hangul vowels and finals join the syllable before
}

bool is_combining(char32_t c) {
  return c >= 0x300 && in_categories(c, U_GC_M_MASK);
}

char32_t code_point_at(std::u16string_view text, std::size_t index) {
  assert(index < text.size());
  char32_t const unit = text[index];
  if (!U16_IS_LEAD(unit) || index + 1 == text.size() || !U16_IS_TRAIL(text[index + 1])) return unit;
  return static_cast<char32_t>(U16_GET_SUPPLEMENTARY(unit, text[index + 1]));
}

std::size_t next_grapheme_break(std::u16string_view text, std::size_t from) {
  if (from >= text.size()) return text.size();
  if (from + 1 < text.size() && surely_starts_cluster(text, from + 1)) return from + 1;
  std::size_t const start = window_start(text, from);
  for (std::size_t ahead = first_window_after;; ahead *= 2) {
    std::size_t const end = text.size() - from > ahead ? from + ahead : text.size();
    auto const found = start + clusters().following(text.substr(start, end - start), from - start);
    // A break at the window's end may be the window's alone.
    if (found < end || end == text.size()) return found;
  }
}

std::size_t previous_grapheme_break(std::u16string_view text, std::size_t from) {
  from = std::min(from, text.size());
  if (from <= 1) return 0;
  if (surely_starts_cluster(text, from - 1)) return from - 1;
  std::size_t const start = window_start(text, from - 1);
  std::size_t const end = std::min(text.size(), from + first_window_after);
  return start + clusters().preceding(text.substr(start, end - start), from - start);
}

}  // namespace unicode
