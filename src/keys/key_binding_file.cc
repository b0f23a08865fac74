#include "keys/key_binding_file.h"

#include "keys/key_strings.h"
#include "platform/system/replace_file.h"
#include "plist/text_reader.h"
#include "plist/xml_reader.h"

#include <algorithm>
#include <cstring>

namespace keys {
namespace {

constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";

bool looks_like_xml(std::string_view bytes) {
  bytes.remove_prefix(std::min(bytes.find_first_not_of(" \t\r\n"), bytes.size()));
  return bytes.starts_with("<?xml") || bytes.starts_with("<plist") || bytes.starts_with("<!");
}

std::string printable(std::string_view text) {
  std::string result;
  for (unsigned char c : text) {
    if (c < 0x20 || c == 0x7F) {
      constexpr char digits[] = "0123456789ABCDEF";
      result += {'<', digits[c >> 4], digits[c & 15], '>'};
    } else {
      result += static_cast<char>(c);
    }
  }
  return result;
}

/// The value in the file; nothing, after a complaint, when it has none.
plist::value parse(std::string const& bytes, std::function<void(std::string const&)> complain) {
  if (looks_like_xml(bytes)) {
    auto read = plist::read_xml(bytes);
    if (read.error)
      complain(":" + std::to_string(read.error->line) + ":" + std::to_string(read.error->column) +
               ": " + read.error->message);
    return read.value;
  }
  plist::dictionary error;
  auto value = plist::convert(bytes, &error);
  if (!value) {
    plist::value const e(error);
    std::string where;
    for (auto key : {"line", "column"})
      if (e[key]) where += ":" + std::to_string(e[key].integer_or(0));
    complain(where + ": " + e["info"].string_or("not a property list"));
  }
  return value;
}

}  // namespace

plist::dictionary read_key_binding_file(std::string const& path, file_complaint const& complain) {
  std::string bytes;
  if (int const error = platform::read_file(path, bytes, platform::file_calls::system())) {
    complain(path + ": " + std::strerror(error));
    return {};
  }
  if (bytes.starts_with(byte_order_mark)) bytes.erase(0, byte_order_mark.size());
  auto const value = parse(bytes, [&](std::string const& fault) { complain(path + fault); });
  if (value && !value.as_dictionary()) complain(path + ": key bindings must be a dictionary");
  return NormalizeDictionary(value.entries(), [&](std::string const& key, std::string const& why) {
    complain(path + ": key \"" + printable(key) + "\": " + why);
  });
}

}  // namespace keys
