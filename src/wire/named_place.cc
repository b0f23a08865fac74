#include "wire/named_place.h"

#include <charconv>

namespace wire {
namespace {

// Takes ":NUMBER" off the end of `text`; 0 if it doesn't end so.
std::size_t take_number(std::string_view& text) {
  std::size_t const colon = text.rfind(':');
  if (colon == std::string_view::npos || colon == 0 || colon + 1 == text.size()) return 0;
  std::size_t number = 0;
  char const* const end = text.data() + text.size();
  auto const result = std::from_chars(text.data() + colon + 1, end, number);
  if (result.ec != std::errc() || result.ptr != end || number == 0) return 0;
  text = text.substr(0, colon);
  return number;
}

}  // namespace

named_place parse_named_place(std::string_view argument,
                              std::function<bool(std::string_view name)> const& exists) {
  if (exists(argument)) return {argument};
  std::string_view rest = argument;
  std::size_t const last = take_number(rest);
  if (last == 0) return {argument};
  if (exists(rest)) return {rest, last};
  std::string_view shorter = rest;
  if (std::size_t const line = take_number(shorter)) return {shorter, line, last};
  return {rest, last};
}

}  // namespace wire
