#include "plist/xml_scalars.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "plist/blanks.h"
#include "plist/calendar.h"
#include "plist/description.h"

namespace plist::xml {
namespace {

template <typename T, typename... Options>
std::optional<T> parse_all(std::string_view text, Options... options) {
  T result{};
  char const* const last = text.data() + text.size();
  auto const [end, error] = std::from_chars(text.data(), last, result, options...);
  if (error != std::errc() || end != last) return std::nullopt;
  return result;
}

bool all_digits(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<std::int8_t, 256> sextets = [] {
  std::array<std::int8_t, 256> table{};
  table.fill(-1);
  for (int i = 0; i < 64; ++i)
    table[static_cast<unsigned char>(alphabet[i])] = static_cast<std::int8_t>(i);
  return table;
}();

// "YYYY-MM-DDTHH:MM:SS", digits wherever the pattern has a 0.
bool has_date_shape(std::string_view text) {
  constexpr std::string_view shape = "0000-00-00T00:00:00";
  return text.size() == shape.size() &&
         std::equal(text.begin(), text.end(), shape.begin(), [](char c, char pattern) {
           return pattern == '0' ? c >= '0' && c <= '9' : c == pattern;
         });
}

int number_at(std::string_view text, std::size_t at, std::size_t length) {
  return parse_all<int>(text.substr(at, length)).value_or(0);
}

/// A count of seconds as its whole part, rounded down, and the decimal digits of the rest.
struct split_seconds {
  std::int64_t whole;
  std::string fraction;
};

// -0.25 is the second -1 and the fraction 75: the digits' complement to one.
void complement(split_seconds& s) {
  s.whole -= 1;
  std::size_t const last = s.fraction.find_last_not_of('0');
  for (std::size_t i = 0; i < last; ++i)
    s.fraction[i] = static_cast<char>('0' + '9' - s.fraction[i]);
  s.fraction[last] = static_cast<char>('0' + ':' - s.fraction[last]);
}

std::optional<split_seconds> split(double seconds) {
  if (!(std::abs(seconds) < 1e12)) return std::nullopt;
  char buffer[1100];
  auto const [end, error] =
      std::to_chars(buffer, buffer + sizeof buffer, seconds, std::chars_format::fixed);
  if (error != std::errc()) return std::nullopt;
  std::string_view const text(buffer, end);
  auto const point = std::min(text.find('.'), text.size());
  auto const whole = parse_all<std::int64_t>(text.substr(0, point));
  if (!whole) return std::nullopt;
  split_seconds result{*whole, std::string(text.substr(std::min(point + 1, text.size())))};
  if (text.starts_with('-') && !result.fraction.empty()) complement(result);
  return result;
}

std::optional<double> joined(split_seconds s) {
  bool const negative = s.whole < 0 && s.fraction.find_first_not_of('0') != std::string::npos;
  if (negative) {
    s.whole += 2;  // one for complement, one for rounding down
    complement(s);
  }
  std::string text = std::to_string(s.whole) + "." + s.fraction + "0";
  if (negative && s.whole == 0) text.insert(0, "-");
  return parse_all<double>(text, std::chars_format::fixed);
}

}  // namespace

std::optional<std::int64_t> parse_integer(std::string_view text) {
  bool const negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  int base = 10;
  if (text.starts_with("0x") || text.starts_with("0X")) {
    text.remove_prefix(2);
    base = 16;
  }
  if (text.starts_with('-')) return std::nullopt;
  auto const magnitude = parse_all<std::uint64_t>(text, base);
  if (!magnitude) return std::nullopt;
  if (*magnitude > std::uint64_t{INT64_MAX} + (negative ? 1 : 0)) return std::nullopt;
  return static_cast<std::int64_t>(negative ? 0 - *magnitude : *magnitude);
}

std::optional<double> parse_real(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) return std::nullopt;
  }
  if (text.find('(') != std::string_view::npos) return std::nullopt;  // from_chars: nan(payload)
  return parse_all<double>(text);
}

std::optional<data> parse_base64(std::string_view text) {
  data result;
  result.reserve(text.size() / 4 * 3);
  std::uint32_t bits = 0;
  int count = 0, padding = 0;
  for (char const c : text) {
    if (is_blank(c)) continue;
    int const sextet = sextets[static_cast<unsigned char>(c)];
    if (c == '=' && count >= 2) {
      ++padding;
    } else if (sextet < 0 || padding != 0) {
      return std::nullopt;
    }
    bits = bits << 6 | static_cast<std::uint32_t>(std::max(sextet, 0));
    if (++count < 4) continue;
    for (int i = 0; i < 3 - padding; ++i)
      result.push_back(static_cast<std::uint8_t>(bits >> (16 - 8 * i)));
    bits = 0, count = 0;
  }
  if (count != 0) return std::nullopt;
  return result;
}

std::optional<date> parse_date(std::string_view text) {
  if (!text.ends_with('Z')) return std::nullopt;
  text.remove_suffix(1);
  auto const point = std::min(text.find('.'), text.size());
  std::string_view fraction;
  if (point < text.size()) {
    fraction = text.substr(point + 1);
    if (fraction.empty() || !all_digits(fraction)) return std::nullopt;
  }
  text = text.substr(0, point);
  if (!has_date_shape(text)) return std::nullopt;
  auto const whole =
      from_calendar({number_at(text, 0, 4), number_at(text, 5, 2), number_at(text, 8, 2),
                     number_at(text, 11, 2), number_at(text, 14, 2), number_at(text, 17, 2)});
  if (!whole) return std::nullopt;
  auto const seconds = joined({*whole, std::string(fraction)});
  if (!seconds) return std::nullopt;
  return date{*seconds};
}

std::string format_real(double d) {
  return description(d);
}

std::string format_base64(data const& bytes) {
  std::string result;
  result.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::size_t const count = std::min<std::size_t>(3, bytes.size() - i);
    std::uint32_t bits = 0;
    for (std::size_t k = 0; k < 3; ++k) bits = bits << 8 | (k < count ? bytes[i + k] : 0u);
    for (std::size_t k = 0; k < 4; ++k)
      result += k <= count ? alphabet[bits >> (18 - 6 * k) & 63] : '=';
  }
  return result;
}

std::optional<std::string> format_date(date when) {
  auto const s = split(when.seconds);
  if (!s) return std::nullopt;
  auto const t = to_calendar(s->whole);
  if (!t) return std::nullopt;
  char text[96];
  std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d", t->year, t->month, t->day,
                t->hour, t->minute, t->second);
  return text + (s->fraction.empty() ? "" : "." + s->fraction) + "Z";
}

}  // namespace plist::xml
