#include "platform/unicode.h"

#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <cassert>

#include "platform/utf.h"

namespace unicode {
namespace {

constexpr bool ascii_lower(char32_t c) {
  return c >= U'a' && c <= U'z';
}
constexpr bool ascii_upper(char32_t c) {
  return c >= U'A' && c <= U'Z';
}
constexpr bool ascii_digit(char32_t c) {
  return c >= U'0' && c <= U'9';
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

icu::UnicodeString to_icu(std::string_view utf8) {
  std::u16string const text = to_utf16(utf8);
  return {text.data(), static_cast<std::int32_t>(text.size())};
}

std::string from_icu(icu::UnicodeString const& text) {
  return to_utf8({text.getBuffer(), static_cast<std::size_t>(text.length())});
}

}  // namespace

bool is_lower(char32_t c) {
  return c < 128 ? ascii_lower(c) : in_categories(c, U_GC_LL_MASK);
}

bool is_upper(char32_t c) {
  return c < 128 ? ascii_upper(c) : in_categories(c, U_GC_LU_MASK | U_GC_LT_MASK);
}

bool is_alpha(char32_t c) {
  if (c < 128) return ascii_lower(c) || ascii_upper(c);
  return in_categories(c, U_GC_L_MASK | U_GC_M_MASK);
}

bool is_alnum(char32_t c) {
  if (c < 128) return ascii_lower(c) || ascii_upper(c) || ascii_digit(c);
  return in_categories(c, U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK);
}

bool is_digit(char32_t c) {
  return c < 128 ? ascii_digit(c) : in_categories(c, U_GC_ND_MASK);
}

bool is_space(char32_t c) {
  if (c < 128) return c == u' ' || (c >= u'\t' && c <= u'\r');
  return in_categories(c, U_GC_ZS_MASK);
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
  if (c < 0x300) return false;
  if (in_categories(c, U_GC_MN_MASK | U_GC_ME_MASK)) return true;
  auto const point = static_cast<UChar32>(c);
  if (in_categories(c, U_GC_CF_MASK))
    return !u_hasBinaryProperty(point, UCHAR_PREPENDED_CONCATENATION_MARK);
  auto const syllable = u_getIntPropertyValue(point, UCHAR_HANGUL_SYLLABLE_TYPE);
  return syllable == U_HST_VOWEL_JAMO || syllable == U_HST_TRAILING_JAMO;
}

bool is_combining(char32_t c) {
  return c >= 0x300 && in_categories(c, U_GC_M_MASK);
}

bool runs_right_to_left(char32_t c) {
  if (c < 0x590) return false;
  auto const direction = u_charDirection(static_cast<UChar32>(c));
  return direction == U_RIGHT_TO_LEFT || direction == U_RIGHT_TO_LEFT_ARABIC;
}

char32_t code_point_at(std::u16string_view text, std::size_t index) {
  assert(index < text.size());
  char32_t const unit = text[index];
  if (!U16_IS_LEAD(unit) || index + 1 == text.size() || !U16_IS_TRAIL(text[index + 1])) return unit;
  return static_cast<char32_t>(U16_GET_SUPPLEMENTARY(unit, text[index + 1]));
}

}  // namespace unicode
