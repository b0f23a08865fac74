#include "fuzz/fuzz.h"
#include "keys/WynKeyEvent.h"
#include "keys/key_strings.h"
#include "plist/text_reader.h"

// Bytes as a dictionary of key bindings: each key is taken in its canonical form, which stays as it
// is when it is taken again, or is complained about.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::string const text = input_text(data, size, 8192);
  std::string why;
  if (auto const key = keys::NormalizeKeyString(text, &why)) {
    if (WynKeyEvent event; !event.initWithString(*key) || event.key().empty()) std::abort();
  } else if (why.empty()) {
    std::abort();
  }
  plist::value const read = plist::convert(text, nullptr);
  std::size_t complaints = 0;
  plist::dictionary const bindings = keys::NormalizeDictionary(
      read.entries(), [&](std::string const&, std::string const&) { ++complaints; });
  if (bindings.empty() && !read.entries().empty() && complaints == 0) std::abort();
  return 0;
}
