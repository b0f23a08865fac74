#include "fuzz/fuzz.h"
#include "platform/utf.h"
#include "regex/oniguruma_format.h"
#include "snippets/format_string.h"

// Bytes as a replacement text of either language: whatever it is, it parses and expands.

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::string const format = input_text(data, size, 4096);
  format_string::format_string_t(format).expand({{"NAME", "a bé"}, {"1", ""}, {"a", format}});

  std::u16string const text = u"ab\xd83d";
  oniguruma::format older(format.c_str());
  std::u16string const expanded = older.expand(text, {{0, {0, 3}}, {1, {1, 2}}});
  if (older.has_failed() && !expanded.empty()) std::abort();
  return 0;
}
