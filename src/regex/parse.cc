#include "regex/parse.h"

#include "platform/log.h"
#include "platform/utf.h"

namespace regex {

std::string printable(unit_t u) {
  return unicode::to_utf8(std::u16string_view(&u, 1));
}

void report(std::string_view message) {
  platform::log_text("*** " + std::string(message) + "\n");
}

void report_end_of_pattern(std::string_view expected) {
  report("at end of pattern, expected '" + std::string(expected) + "'");
}

void report_unexpected(unit_t expected, std::string_view inside, unit_t got) {
  std::string message = "expected '" + printable(expected) + "'";
  if (!inside.empty()) message += " (from '" + std::string(inside) + "')";
  report(message + ", got '" + printable(got) + "'");
}

}  // namespace regex
