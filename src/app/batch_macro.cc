#include "app/batch_macro.h"

#include "app/batch_output.h"
#include "platform/system/replace_file.h"
#include "plist/xml_reader.h"
#include "textview/macro_steps.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace app {
namespace {

// 0 or an errno.
int read_standard_input(std::string& contents) {
  char buffer[65536];
  while (std::size_t const n = std::fread(buffer, 1, sizeof buffer, stdin))
    contents.append(buffer, n);
  return std::ferror(stdin) ? errno : 0;
}

void report(std::string const& path, std::string const& place, std::string const& reason) {
  std::fprintf(stderr, "quirnote: %s%s: %s\n", platform::escaped_name(path).c_str(), place.c_str(),
               reason.c_str());
}

std::optional<plist::value> read_value(std::string const& path) {
  std::string contents;
  int const error = path == "-"
                        ? read_standard_input(contents)
                        : platform::read_file(path, contents, platform::file_calls::system());
  if (error) {
    report(path, "", std::strerror(error));
    return std::nullopt;
  }
  plist::read_result const result = plist::read_xml(contents);
  if (!result.error) return result.value;
  auto const& e = *result.error;
  report(path, ":" + std::to_string(e.line) + ":" + std::to_string(e.column), e.message);
  return std::nullopt;
}

// A key that isn't known is perhaps a known one that was misspelt.
std::string fault_of(plist::value const& step) {
  if (std::string const fault = textview::fault_of_macro_step(step); !fault.empty()) return fault;
  for (auto const& [key, value] : step.entries())
    if (key != "command" && key != "argument") return "has an unknown key `" + key + "`";
  return "";
}

}  // namespace

std::optional<batch_macro> read_batch_macro(std::string const& path) {
  auto const value = read_value(path);
  if (!value) return std::nullopt;
  plist::value const& list = value->as_array() ? *value : (*value)["commands"];
  if (list.as_array() == nullptr) {
    report(path, "", "no array of steps, and no dictionary with `commands`");
    return std::nullopt;
  }
  batch_macro macro;
  bool is_whole = true;
  for (std::size_t n = 0; n < list.elements().size(); ++n) {
    plist::value const& step = list.elements()[n];
    std::string const fault = fault_of(step);
    if (!fault.empty()) report(path, "", "step " + std::to_string(n) + " " + fault);
    is_whole = is_whole && fault.empty();
    macro.steps.push_back({step["command"], step["argument"]});
  }
  return is_whole ? std::optional(std::move(macro)) : std::nullopt;
}

}  // namespace app
