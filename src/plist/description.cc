#include "plist/description.h"

#include <charconv>
#include <cmath>
#include <cstdio>

#include "plist/calendar.h"
#include "plist/text_writer.h"

namespace plist {
namespace {

std::string digits_of(double d) {
  if (std::isnan(d)) return "nan";
  if (std::isinf(d)) return d < 0 ? "-inf" : "inf";
  char text[32];
  auto const [end, error] = std::to_chars(text, text + sizeof text, d);
  return error == std::errc() ? std::string(text, end) : std::string();
}

std::string describe(date when) {
  double const whole = std::floor(when.seconds);
  std::optional<calendar_time> t;
  if (std::abs(whole) < 1e15) t = to_calendar(static_cast<std::int64_t>(whole));
  if (!t) return digits_of(when.seconds);
  char text[96];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d +0000", t->year, t->month, t->day,
                t->hour, t->minute, t->second);
  return text;
}

std::string describe(data const& bytes) {
  constexpr char hex[] = "0123456789abcdef";
  std::string result = "<";
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i != 0 && i % 4 == 0) result += ' ';
    result += hex[bytes[i] >> 4];
    result += hex[bytes[i] & 15];
  }
  return result + ">";
}

}  // namespace

std::string description(value const& v) {
  switch (v.kind()) {
    case kind::none:
      return {};
    case kind::boolean:
      return v.boolean_or(false) ? "1" : "0";
    case kind::integer:
      return std::to_string(v.integer_or(0));
    case kind::real:
      return digits_of(v.real_or(0));
    case kind::string:
      return *v.as_string();
    case kind::date:
      return describe(*v.as_date());
    case kind::data:
      return describe(*v.as_data());
    case kind::array:
    case kind::dictionary:
      return PrettyPrintPList(v);
  }
  return {};
}

}  // namespace plist
