#include "grammar/line_tokens.h"

#include <algorithm>

namespace grammar {
namespace {

bool is_before(token const& t, std::uint32_t column) {
  return t.column < column;
}

bool is_small(token const& t) {
  return t.column < 0x10000 && t.path < 0x10000;
}

}  // namespace

void token_list::set(std::uint32_t column, path_tree::id path) {
  if (tokens_.empty() || tokens_.back().column < column) {
    tokens_.push_back({column, path});
    return;
  }
  auto const at = std::lower_bound(tokens_.begin(), tokens_.end(), column, is_before);
  if (at->column == column)
    at->path = path;
  else
    tokens_.insert(at, {column, path});
}

std::vector<token> token_list::from(std::uint32_t column) const {
  return {std::lower_bound(tokens_.begin(), tokens_.end(), column, is_before), tokens_.end()};
}

void token_list::erase_from(std::uint32_t column) {
  tokens_.erase(std::lower_bound(tokens_.begin(), tokens_.end(), std::max(column, 1u), is_before),
                tokens_.end());
}

line_tokens::line_tokens(token_list const& list) : line_tokens(list.tokens().front().path) {
  std::vector<token> const& tokens = list.tokens();
  if (tokens.size() == 1) return;
  bool const small = std::all_of(tokens.begin(), tokens.end(), is_small);
  auto* to = new std::uint32_t[1 + tokens.size() * (small ? 1 : 2)];
  value_ = reinterpret_cast<std::uint64_t>(to);
  *to++ = static_cast<std::uint32_t>(tokens.size() << 1 | (small ? 0 : 1));
  for (token const& t : tokens) {
    *to++ = small ? t.column << 16 | t.path : t.column;
    if (!small) *to++ = t.path;
  }
}

line_tokens::line_tokens(line_tokens const& other) : value_(other.value_) {
  if (other.is_lone()) return;
  auto* const copy = new std::uint32_t[other.words()];
  std::copy_n(other.block(), other.words(), copy);
  value_ = reinterpret_cast<std::uint64_t>(copy);
}

std::size_t line_tokens::words() const {
  std::uint32_t const head = block()[0];
  return 1 + (head >> 1) * (1 + (head & 1));
}

token line_tokens::operator[](std::size_t index) const {
  if (is_lone()) return {0, static_cast<path_tree::id>(value_ >> 1)};
  std::uint32_t const* const tokens = block() + 1;
  if (block()[0] & 1) return {tokens[2 * index], tokens[2 * index + 1]};
  return {tokens[index] >> 16, tokens[index] & 0xffff};
}

token line_tokens::at(std::uint32_t column) const {
  std::size_t first = 0, count = size();
  while (count > 1) {
    std::size_t const half = count / 2;
    if ((*this)[first + half].column <= column) {
      first += half;
      count -= half;
    } else {
      count = half;
    }
  }
  return (*this)[first];
}

bool operator==(line_tokens const& a, line_tokens const& b) {
  if (a.is_lone() || b.is_lone()) return a.value_ == b.value_;
  return a.block()[0] == b.block()[0] && std::equal(a.block(), a.block() + a.words(), b.block());
}

}  // namespace grammar
