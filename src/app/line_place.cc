#include "app/line_place.h"

#include <charconv>

namespace app {
namespace {

std::string_view without_blanks(std::string_view text) {
  constexpr char const* blanks = " \t";
  std::size_t const first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::optional<std::size_t> number_of(std::string_view text) {
  std::size_t number = 0;
  char const* const end = text.data() + text.size();
  auto const result = std::from_chars(text.data(), end, number);
  if (result.ec != std::errc() || result.ptr != end || number == 0) return std::nullopt;
  return number;
}

}  // namespace

std::optional<text::line_place> parse_line_place(std::string_view text) {
  std::string_view const place = without_blanks(text);
  std::size_t const colon = place.find(':');
  auto const line = number_of(place.substr(0, colon));
  if (!line) return std::nullopt;
  if (colon == std::string_view::npos) return text::line_place{*line, 0};
  auto const column = number_of(place.substr(colon + 1));
  if (!column) return std::nullopt;
  return text::line_place{*line, *column};
}

}  // namespace app
