#include "app/batch_macro.h"

#include "platform/replace_file.h"
#include "plist/xml_reader.h"

#include <cstdio>
#include <cstring>

namespace {

std::string read_standard_input() {
  std::string contents;
  char buffer[65536];
  while (std::size_t const n = std::fread(buffer, 1, sizeof buffer, stdin))
    contents.append(buffer, n);
  return contents;
}

void report(std::string const& path, std::string const& reason) {
  std::fprintf(stderr, "quirnote: %s: %s\n", path.c_str(), reason.c_str());
}

std::optional<plist::value> read_value(std::string const& path) {
  std::string contents;
  if (path == "-") {
    contents = read_standard_input();
  } else if (int const error =
                 platform::read_file(path, contents, platform::file_calls::system())) {
    report(path, std::strerror(error));
    return std::nullopt;
  }
  plist::read_result const result = plist::read_xml(contents);
  if (!result.error) return result.value;
  auto const& e = *result.error;
  report(path + ":" + std::to_string(e.line) + ":" + std::to_string(e.column), e.message);
  return std::nullopt;
}

}  // namespace

batch_macro read_batch_macro(std::string const& path) {
  auto const value = read_value(path);
  if (!value) return {{}, false};
  plist::value const& list = value->as_array() ? *value : (*value)["commands"];
  if (list.as_array() == nullptr) {
    report(path, "no array of steps, and no dictionary with `commands`");
    return {{}, false};
  }
  batch_macro macro;
  for (std::size_t n = 0; n < list.elements().size(); ++n) {
    plist::value const& step = list.elements()[n];
    if (plist::value const& command = step["command"]; command.as_string() != nullptr) {
      macro.steps.push_back({command, step["argument"]});
    } else {
      report(path, "step " + std::to_string(n) + " has no `command`");
      macro.complete = false;
    }
  }
  return macro;
}
