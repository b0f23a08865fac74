#include "documents/file_metadata.h"
#include "fuzz/fuzz.h"
#include "plist/text_writer.h"

// Any bytes as the value of an extended attribute: what can be read is stored so that it reads the
// same, if it reads back from text at all, and never larger than that text.

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::string const bytes(reinterpret_cast<char const*>(data), size);
  auto const value = documents::attribute_value(bytes);
  if (!value) return 0;
  std::string const text = plist::PrettyPrintPList(value),
                    stored = documents::attribute_bytes(value);
  if (stored.size() > text.size()) std::abort();
  if (!(documents::attribute_value(stored) == documents::attribute_value(text))) std::abort();
  return 0;
}
