#include "projects/project_file.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "plist/xml_reader.h"
#include "plist/xml_writer.h"

// Any bytes: what is read of a project file can be written, and says the same when it is read
// again.

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  auto const read = plist::read_xml({reinterpret_cast<char const*>(data), size});
  if (read.error) return 0;
  auto const written_of = [](plist::value const& file) {
    auto const contents = projects::project_contents_of(file, "/nowhere/p");
    auto const value =
        projects::project_value(contents, contents.items, "/nowhere/p", "/nowhere/p");
    auto written = plist::write_xml(value);
    if (written.error) std::abort();
    return written.text;
  };
  auto const once = written_of(read.value);
  if (written_of(plist::read_xml(once).value) != once) std::abort();
  return 0;
}
