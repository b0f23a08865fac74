#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "regex/valid_utf8.h"

struct re_pattern_buffer;
struct re_registers;

/// Patterns over UTF-8 text with named captures, shared and cheap to copy: for format strings and
/// paths. Run by Oniguruma in the syntax of Ruby; offsets are bytes. Wrong bytes in a text are seen
/// as other characters. Any thread, though not one object on several.
namespace regexp {

/// A compiled pattern; false when unset or when it did not compile, which is told on standard
/// error.
class pattern_t {
 public:
  pattern_t() = default;
  /// `options` are Oniguruma's. Plain groups capture even beside named ones.
  explicit pattern_t(std::string source, unsigned options = 0);

  explicit operator bool() const { return regex_ != nullptr; }
  std::string const& source() const { return source_; }
  std::shared_ptr<re_pattern_buffer> const& regex() const { return regex_; }

 private:
  std::shared_ptr<re_pattern_buffer> regex_;
  std::string source_;
};

/// What a search found; false when nothing. Borrows the searched text.
class match_t {
 public:
  using captures_t = std::map<std::string, std::string>;

  match_t() = default;
  match_t(std::shared_ptr<re_registers> region, std::shared_ptr<re_pattern_buffer> regex,
          char const* text)
      : region_(std::move(region)), regex_(std::move(regex)), text_(text) {}

  /// The answer of a search that was broken off: there may be a match.
  static match_t broken_off();
  bool gave_up() const { return gave_up_; }

  explicit operator bool() const { return region_ != nullptr; }
  std::size_t size() const;  // number of groups, 0 when nothing matched
  bool did_match(std::size_t i) const;
  /// Of the whole match; all bits set when nothing matched.
  std::size_t begin() const;
  std::size_t end() const;
  /// Both are end() for a group that took no part.
  std::size_t begin(std::size_t i) const;
  std::size_t end(std::size_t i) const;
  bool empty(std::size_t i) const { return begin(i) == end(i); }

  /// The text of each group that took part, by its number in decimal and by its name, where groups
  /// of one name are joined. Made when first asked for, while the text must still be there.
  captures_t const& captures() const;

 private:
  std::shared_ptr<re_registers> region_;
  std::shared_ptr<re_pattern_buffer> regex_;
  char const* text_ = nullptr;
  mutable std::shared_ptr<captures_t> captures_;
  bool gave_up_ = false;
};

/// The first match in [first, last) that begins within [from, to]; null stands for the end of the
/// text on that side. An unset pattern matches nothing.
match_t search(pattern_t const& pattern, char const* first, char const* last,
               char const* from = nullptr, char const* to = nullptr, unsigned options = 0);

/// The first match that begins at the byte `from` or later, for many searches in one text. `from`
/// is where a character begins.
match_t search(pattern_t const& pattern, regex::valid_utf8 const& text, std::size_t from);

}  // namespace regexp
