#include <string_view>

#include "fuzz/fuzz.h"
#include "plist/xml_reader.h"
#include "plist/xml_writer.h"

// Any bytes: what can be read can be written, and reads again as bytes that no longer change.

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  auto const read = plist::read_xml({reinterpret_cast<char const*>(data), size});
  if (read.error) return read.value || read.error->message.empty() ? std::abort(), 0 : 0;
  auto const written = plist::write_xml(read.value);
  if (written.error) std::abort();
  auto const again = plist::read_xml(written.text);
  // Texts are compared, since a NaN equals nothing.
  if (again.error || plist::write_xml(again.value).text != written.text) std::abort();
  return 0;
}
