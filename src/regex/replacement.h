#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// The replacement texts of find and replace and of regular expressions in snippets:
///
///     $1            what group 1 matched         (?1:yes:no)  by whether group 1 took part
///     \U \L \E      case from here on            \u \l        case of the next character
///     \n \t         line feed, tab               \$ \( \\      the character
///
/// `oniguruma::format` writes them for UTF-16 texts, `onig::replace` for UTF-8.
namespace regex {

/// A parsed replacement text. Plain data: any thread may expand it.
struct replacement_node {
  enum class kind { text, newline, case_mode, next_char_case, capture, condition };

  kind what;
  std::string text;                                  // of text, UTF-8
  unsigned number = 0;                               // of a group, or one of `letter_case`
  std::vector<replacement_node> if_set, if_not_set;  // of a condition
};

enum letter_case : unsigned { as_is, upper, lower };

using replacement = std::vector<replacement_node>;

/// Nothing when the text is no replacement text: a condition without its end, a backslash at the
/// end, conditions nested 200 deep. Main thread only.
std::unique_ptr<replacement const> parse_replacement(std::string_view text);

/// Walks a replacement for one match. What is written where is the derived class's.
class replacement_visitor {
 public:
  virtual ~replacement_visitor() = default;
  void visit(replacement const& nodes);

 protected:
  virtual bool is_set(unsigned group) const = 0;
  virtual void put_text(std::string const& utf8) = 0;
  virtual void put_newline() = 0;
  virtual void put_group(unsigned group) = 0;
  /// Before the case of what follows changes.
  virtual void flush() {}

  unsigned case_mode = as_is;       // until it is changed
  unsigned next_char_case = as_is;  // for one unit
};

}  // namespace regex
