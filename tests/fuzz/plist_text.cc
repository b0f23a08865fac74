#include <string_view>

#include "fuzz/fuzz.h"
#include "plist/text_reader.h"
#include "plist/text_writer.h"

// Any bytes: what can be read prints as a text that reads as the same value, but for dictionaries
// with an empty key, which print as what can't be read.

static bool has_empty_key(plist::value const& v) {
  for (auto const& element : v.elements())
    if (has_empty_key(element)) return true;
  for (auto const& [key, content] : v.entries())
    if (key.empty() || has_empty_key(content)) return true;
  return false;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  plist::dictionary error;
  auto const read = plist::convert({reinterpret_cast<char const*>(data), size}, &error);
  if (!read) return error.contains("info") ? 0 : (std::abort(), 0);
  if (has_empty_key(read)) return 0;
  if (!(plist::convert(plist::PrettyPrintPList(read)) == read)) std::abort();
  return 0;
}
