#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

/// At most so many bytes of an input.
inline std::string input_text(std::uint8_t const* data, std::size_t size, std::size_t most) {
  return {data, data + std::min(size, most)};
}

/// What comes before the first `end`, which is taken off with it; all of it if there is none.
inline std::string take_until(char end, std::string& rest) {
  std::string const taken = rest.substr(0, rest.find(end));
  rest.erase(0, taken.size() + 1);
  return taken;
}
