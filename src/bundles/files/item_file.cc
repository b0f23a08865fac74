#include "bundles/files/item_file.h"

#include "path/file_writer.h"
#include "platform/log.h"
#include "platform/system/replace_file.h"
#include "plist/xml_reader.h"
#include "plist/xml_writer.h"

#include <cerrno>
#include <cstring>

namespace bundles {
namespace {

bool fail(std::string const& reason, std::string* fault) {
  platform::log_once(reason);
  if (fault != nullptr) *fault = reason;
  return false;
}

}  // namespace

plist::value read_dictionary(std::string const& path) {
  std::string bytes;
  if (int const error = platform::read_file(path, bytes, platform::file_calls::system())) {
    platform::log_once(path + ": " + std::strerror(error));
    return {};
  }
  plist::read_result read = plist::read_xml(bytes);
  if (read.error) {
    platform::log_once(path + ":" + std::to_string(read.error->line) + ":" +
                       std::to_string(read.error->column) + ": " + read.error->message);
    return {};
  }
  if (!read.value.as_dictionary()) {
    platform::log_once(path + ": the property list is no dictionary");
    return {};
  }
  return std::move(read.value);
}

bool write_dictionary(std::string const& path, plist::dictionary const& content,
                      std::string* fault) {
  plist::write_result const written = plist::write_xml(content);
  return written.error ? fail(path + ": " + *written.error, fault)
                       : write_file(path, written.text, fault);
}

bool write_file(std::string const& path, std::string_view bytes, std::string* fault) {
  auto const contents = path::contents_of(bytes);
  auto error = path::write_atomically(path, contents);
  // Others may share it: a file of another owner, or one that has several names.
  if (error && (error->code == EPERM || error->code == EMLINK))
    error = path::write_in_place(path, contents);
  return error ? fail(path + ": " + error->message, fault) : true;
}

std::vector<std::string> string_array(plist::value const& dictionary, std::string_view key) {
  std::vector<std::string> result;
  for (plist::value const& element : dictionary[key].elements())
    if (auto const* text = element.as_string()) result.push_back(*text);
  return result;
}

}  // namespace bundles
