#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "snippets/expand_visitor.h"
#include "snippets/snippet.h"

/// The text of snippets:
///
///     $1 ${1}                    a field to fill in; where it stands again, a mirror of it
///     ${1:text}                  a field with its first text, which may hold fields of its own
///     ${1/regexp/format/gime}    a mirror with a substitution made at every key
///     $0                         where the caret ends up
///     $NAME ${NAME:text}         a variable; the text where there is none of that name
///     ${NAME/regexp/format/gime} a variable with a substitution
///     `code`                     what a shell command prints when the snippet is inserted
///
/// A backslash takes the meaning off "$", "`", "\", tab and line feed, and within braces off "}".
/// Tabs become blanks where the document has it so, in formats too ("\t" does not), and line feeds
/// get the line's indentation, empty lines apart.
namespace snippet {

struct parse_options {
  std::string indent = {};  ///< UTF-8, of each further line
  std::size_t tab_size = 4;
  bool soft_tabs = false;
  std::map<std::string, std::string> variables = {};
  run_command_callback_t run_command = {};  ///< without it code prints nothing
};

/// More fields and mirrors than these are refused.
constexpr std::size_t max_stops = 100'000;

/// Null for a text that is no snippet, with the reason in `fault`; nothing of it has been run then.
/// What is only left out of one (a field in itself, say) is put into `warnings`, one line each.
/// `text` is UTF-8. Main thread only.
std::unique_ptr<snippet_t> parse(std::string const& text, parse_options const& options,
                                 std::string& fault, std::vector<std::string>& warnings);

/// Whether the text is a snippet; the reason why not is put into `fault`. Runs nothing.
bool validate(std::string const& text, std::string& fault);

}  // namespace snippet
