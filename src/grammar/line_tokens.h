#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>
#include <vector>

#include "grammar/scope_path.h"

namespace grammar {

/// From a token's column (in code units) on, up to the next token or the line's end, its path
/// holds.
struct token {
  std::uint32_t column;
  path_tree::id path;
  friend bool operator==(token, token) = default;
};

/// Tokens of a line while they change, sorted by column.
class token_list {
 public:
  explicit token_list(std::vector<token> tokens = {}) : tokens_(std::move(tokens)) {}

  std::vector<token> const& tokens() const { return tokens_; }
  void clear() { tokens_.clear(); }
  /// Replaces the token of that column or adds one.
  void set(std::uint32_t column, path_tree::id path);
  /// The tokens at `column` and after it.
  std::vector<token> from(std::uint32_t column) const;
  /// Takes the tokens from `column` on away, but for the one at column 0.
  void erase_from(std::uint32_t column);

 private:
  std::vector<token> tokens_;
};

/// Where the scope changes within a line: tokens sorted by column, always one at column 0. There is
/// one of these for each line of a text, so it is small: a lone token takes no memory but the
/// object's eight bytes, others four bytes each, eight if a number is large.
class line_tokens {
 public:
  using token = grammar::token;

  /// Goes to any place at once; what it points at is a copy.
  class iterator {
   public:
    struct arrow {
      token value;
      token const* operator->() const { return &value; }
    };
    using iterator_category = std::random_access_iterator_tag;
    using value_type = token;
    using difference_type = std::ptrdiff_t;
    using pointer = arrow;
    using reference = token;

    iterator() = default;
    iterator(line_tokens const* line, std::ptrdiff_t index) : line_(line), index_(index) {}
    token operator*() const { return (*line_)[static_cast<std::size_t>(index_)]; }
    arrow operator->() const { return {**this}; }
    iterator& operator+=(std::ptrdiff_t by) {
      index_ += by;
      return *this;
    }
    iterator& operator++() { return *this += 1; }
    iterator& operator--() { return *this += -1; }
    iterator operator++(int) { return {line_, index_++}; }
    iterator operator+(std::ptrdiff_t by) const { return {line_, index_ + by}; }
    iterator operator-(std::ptrdiff_t by) const { return {line_, index_ - by}; }
    std::ptrdiff_t operator-(iterator const& other) const { return index_ - other.index_; }
    friend bool operator==(iterator const& a, iterator const& b) { return a.index_ == b.index_; }
    friend auto operator<=>(iterator const& a, iterator const& b) { return a.index_ <=> b.index_; }

   private:
    line_tokens const* line_ = nullptr;
    std::ptrdiff_t index_ = 0;
  };

  explicit line_tokens(path_tree::id path = 0) : value_(std::uint64_t{path} << 1 | 1) {}
  /// Of a list that begins at column 0.
  explicit line_tokens(token_list const& list);
  line_tokens(line_tokens const& other);
  line_tokens(line_tokens&& other) noexcept : value_(std::exchange(other.value_, 1)) {}
  line_tokens& operator=(line_tokens other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  ~line_tokens() {
    if (!is_lone()) delete[] block();
  }

  std::size_t size() const { return is_lone() ? 1 : block()[0] >> 1; }
  token operator[](std::size_t index) const;
  token back() const { return (*this)[size() - 1]; }
  iterator begin() const { return {this, 0}; }
  iterator end() const { return {this, static_cast<std::ptrdiff_t>(size())}; }
  /// The token in force at a column.
  token at(std::uint32_t column) const;
  token_list list() const { return token_list({begin(), end()}); }
  /// Bytes that it takes beside the object.
  std::size_t memory() const { return is_lone() ? 0 : words() * sizeof(std::uint32_t); }

  friend bool operator==(line_tokens const& a, line_tokens const& b);

 private:
  bool is_lone() const { return (value_ & 1) != 0; }
  // First the number of tokens and, as bit 0, whether each takes two words; then the tokens.
  std::uint32_t* block() const { return reinterpret_cast<std::uint32_t*>(value_); }
  std::size_t words() const;

  std::uint64_t value_;  ///< the lone token's path with bit 0 set, or a block's address
};

}  // namespace grammar
