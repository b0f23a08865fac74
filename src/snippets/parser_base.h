#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace parser {

/// A cursor over UTF-8 text, which is borrowed. What fails leaves it where it was.
class parser_base_t {
 public:
  explicit parser_base_t(std::string_view text)
      : begin_(text.data()),
        it_(text.data()),
        last_(text.data() + text.size()),
        steps_left_(10'000 + 8 * text.size()) {}

  /// Takes one character of the set.
  bool parse_char(std::string_view set);
  /// A run of decimal digits, without its leading zeros.
  bool parse_int(std::string& value);
  /// The longest run of characters of the set, if there is any.
  bool parse_chars(std::string_view set, std::string& out);
  /// Up to the first of the stops, which is taken too. A backslash makes a stop or a backslash
  /// stand for itself.
  bool parse_until(std::string_view stops, std::string& out);

 protected:
  bool at_end() const { return it_ == last_; }
  bool is_at(std::string_view set) const {
    return !at_end() && set.find(*it_) != std::string_view::npos;
  }
  std::size_t offset() const { return static_cast<std::size_t>(it_ - begin_); }
  char last_taken() const { return it_[-1]; }
  /// False once so much has been read again and again that the text must be a trap; then nothing
  /// that can be nested parses any more.
  bool spend_step() { return steps_left_ > 0 && --steps_left_ > 0; }

  char const* begin_;
  char const* it_;
  char const* last_;

 private:
  std::size_t steps_left_;
};

}  // namespace parser
