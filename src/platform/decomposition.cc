#include "platform/decomposition.h"

#include <unicode/normalizer2.h>
#include <unicode/unistr.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <limits>
#include <numeric>

#include "platform/unicode.h"

namespace unicode {

decomposed_text decompose(std::u16string_view text) {
  // Below this nothing is composed.
  constexpr char16_t first_composed = 0xc0;
  static icu::Normalizer2 const* const normalizer = [] {
    UErrorCode status = U_ZERO_ERROR;
    return icu::Normalizer2::getNFDInstance(status);
  }();

  auto const composed = static_cast<std::size_t>(
      std::find_if(text.begin(), text.end(), [](char16_t u) { return u >= first_composed; }) -
      text.begin());
  decomposed_text result;
  result.units = text.substr(0, composed);
  result.origins.resize(composed);
  std::iota(result.origins.begin(), result.origins.end(), 0U);
  icu::UnicodeString parts;
  for (std::size_t at = composed; at < text.size();) {
    char32_t const c = code_point_at(text, at);
    std::size_t const length = c > 0xffff ? 2 : 1;
    std::u16string_view added = text.substr(at, length);
    if (c >= first_composed && normalizer != nullptr &&
        normalizer->getDecomposition(static_cast<UChar32>(c), parts))
      added = {parts.getBuffer(), static_cast<std::size_t>(parts.length())};
    result.units += added;
    result.origins.insert(result.origins.end(), added.size(), static_cast<std::uint32_t>(at));
    at += length;
  }
  return result;
}

std::u16string compose(std::u16string text) {
  UErrorCode status = U_ZERO_ERROR;
  icu::Normalizer2 const* const normalizer = icu::Normalizer2::getNFCInstance(status);
  if (U_FAILURE(status) || text.size() > std::numeric_limits<std::int32_t>::max()) return text;
  icu::UnicodeString const whole(false, text.data(), static_cast<std::int32_t>(text.size()));
  if (normalizer->spanQuickCheckYes(whole, status) == whole.length()) return text;
  icu::UnicodeString const composed = normalizer->normalize(whole, status);
  if (U_FAILURE(status)) return text;
  return {composed.getBuffer(), static_cast<std::size_t>(composed.length())};
}

}  // namespace unicode
