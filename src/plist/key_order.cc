#include "plist/key_order.h"

#include <unicode/coll.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <memory>

namespace plist {
namespace {

constexpr std::array<std::string_view, 17> leading_keys = {"name",
                                                           "contentName",
                                                           "scopeName",
                                                           "comment",
                                                           "firstLineMatch",
                                                           "fileTypes",
                                                           "foldingStartMarker",
                                                           "foldingStopMarker",
                                                           "begin",
                                                           "end",
                                                           "swallow",
                                                           "match",
                                                           "include",
                                                           "captures",
                                                           "beginCaptures",
                                                           "endCaptures",
                                                           "patterns"};

std::unique_ptr<icu::Collator> make_collator() {
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::Collator> result(
      icu::Collator::createInstance(icu::Locale::getRoot(), status));
  if (U_FAILURE(status)) return nullptr;
  // Case and width differ at the third level only.
  result->setAttribute(UCOL_STRENGTH, UCOL_SECONDARY, status);
  result->setAttribute(UCOL_NORMALIZATION_MODE, UCOL_ON, status);
  result->setAttribute(UCOL_ALTERNATE_HANDLING, UCOL_NON_IGNORABLE, status);
  result->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
  return U_SUCCESS(status) ? std::move(result) : nullptr;
}

icu::Collator const* shared_collator() {
  static icu::Collator const* const collator = make_collator().release();
  return collator;
}

bool sorts_before(std::string const& a, std::string const& b) {
  UErrorCode status = U_ZERO_ERROR;
  if (!shared_collator()) return a < b;
  return shared_collator()->compareUTF8(a, b, status) == UCOL_LESS;
}

}  // namespace

void SortArrayLexicographically(std::vector<std::string>& names) {
  std::stable_sort(names.begin(), names.end(), sorts_before);
}

std::string lexicographic_key(std::string_view name) {
  constexpr int usual_size = 128;
  if (!shared_collator()) return std::string(name);
  auto const units = icu::UnicodeString::fromUTF8({name.data(), static_cast<int>(name.size())});
  std::string key(usual_size, '\0');
  for (;;) {
    int const size = shared_collator()->getSortKey(
        units, reinterpret_cast<std::uint8_t*>(key.data()), static_cast<int>(key.size()));
    bool const fits = size <= static_cast<int>(key.size());
    key.resize(static_cast<std::size_t>(size));
    if (fits) return key;
  }
}

std::vector<std::string> KeySortedArray(dictionary const& entries) {
  std::vector<std::string> result, others;
  for (auto const key : leading_keys)
    if (entries.contains(key)) result.emplace_back(key);
  for (auto const& [key, v] : entries)
    if (std::find(leading_keys.begin(), leading_keys.end(), key) == leading_keys.end())
      others.push_back(key);
  SortArrayLexicographically(others);
  result.insert(result.end(), others.begin(), others.end());
  return result;
}

}  // namespace plist
