#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace platform {

struct string_hash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const {
    return std::hash<std::string_view>()(text);
  }
};

/// A table by names that is searched without making a string.
template <typename T>
using string_table = std::unordered_map<std::string, T, string_hash, std::equal_to<>>;

}  // namespace platform
