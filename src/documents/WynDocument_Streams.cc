#include <cerrno>
#include <new>
#include <optional>

#include "documents/WynDocument.h"
#include "documents/document_alerts.h"
#include "documents/storage_bytes.h"
#include "platform/system/standard_streams.h"

bool WynDocument::writeToStream(int descriptor, std::string const& name) const {
  auto const format = formatForSaving();
  if (!format) return false;
  int code = 0;
  try {
    documents::storage_bytes(*storage_, *format)
        .produce([&](unsigned char const* bytes, std::size_t size) {
          code = platform::write_to_stream(descriptor, reinterpret_cast<char const*>(bytes), size);
          return code == 0;
        });
  } catch (std::bad_alloc const&) {
    code = ENOMEM;
  }
  if (code != 0)
    documents::tell_could_not_save(path::write_error{path::make_file_error("write", name, code)},
                                   name);
  return code == 0;
}
