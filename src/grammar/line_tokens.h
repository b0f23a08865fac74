#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "grammar/scope_path.h"

namespace grammar {

/// Where the scope changes within a line: from a token's column (in code units) on, up to the next
/// token or the line's end, its path holds. Sorted by column; there is always one at column 0.
class line_tokens {
 public:
  struct token {
    std::uint32_t column;
    path_tree::id path;
    friend bool operator==(token, token) = default;
  };

  explicit line_tokens(path_tree::id path = 0) : tokens_{{0, path}} {}

  auto begin() const { return tokens_.begin(); }
  auto end() const { return tokens_.end(); }
  token const& back() const { return tokens_.back(); }
  /// Replaces the token of that column or adds one.
  void set(std::uint32_t column, path_tree::id path) {
    auto const at = std::lower_bound(tokens_.begin(), tokens_.end(), column, is_before);
    if (at != tokens_.end() && at->column == column)
      at->path = path;
    else
      tokens_.insert(at, {column, path});
  }
  /// The token in force at a column.
  token const& at(std::uint32_t column) const {
    auto const behind = std::lower_bound(tokens_.begin(), tokens_.end(), column, is_before);
    return behind != tokens_.end() && behind->column == column ? *behind : *(behind - 1);
  }
  /// The tokens at `column` and behind it.
  std::vector<token> from(std::uint32_t column) const {
    return {std::lower_bound(tokens_.begin(), tokens_.end(), column, is_before), tokens_.end()};
  }
  /// Takes the tokens from `column` on away, but for the one at column 0.
  void erase_from(std::uint32_t column) {
    tokens_.erase(std::lower_bound(tokens_.begin(), tokens_.end(), std::max(column, 1u), is_before),
                  tokens_.end());
  }
  friend bool operator==(line_tokens const&, line_tokens const&) = default;

 private:
  static bool is_before(token const& t, std::uint32_t column) { return t.column < column; }

  std::vector<token> tokens_;
};

}  // namespace grammar
