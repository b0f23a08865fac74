#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// The pieces of the text between separators, without the empty ones.
inline std::vector<std::string> split(std::string_view text, char separator) {
  std::vector<std::string> pieces;
  while (!text.empty()) {
    std::size_t const length = std::min(text.find(separator), text.size());
    if (length > 0) pieces.emplace_back(text.substr(0, length));
    text.remove_prefix(std::min(length + 1, text.size()));
  }
  return pieces;
}

}  // namespace platform
