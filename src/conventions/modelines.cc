#include "conventions/modelines.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string>
#include <vector>

#include "platform/utf.h"
#include "settings/limits.h"

namespace conventions {
namespace {

constexpr std::size_t vim_lines = 5;        // at each end
constexpr std::size_t variable_lines = 60;  // at the end
constexpr std::size_t longest_line = 1024;  // units

using std::string_view;

bool is_blank(char c) {
  return c == ' ' || c == '\t';
}

string_view trimmed(string_view text) {
  while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
  return text;
}

std::optional<unsigned> columns(string_view digits) {
  unsigned number = 0;
  auto const [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  bool const is_number = error == std::errc() && end == digits.data() + digits.size();
  if (!is_number || number < 1 || number > settings::max_tab_size) return std::nullopt;
  return number;
}

void set_columns(std::optional<unsigned>& what, string_view digits) {
  if (auto const number = columns(digits)) what = number;
}

// Options of vim

void set_option(string_view option, modeline& result) {
  std::size_t const equals = std::min(option.find('='), option.size());
  string_view const name = option.substr(0, equals);
  string_view const value = option.substr(std::min(equals + 1, option.size()));
  indentation& indent = result.indentation;
  bool const has_value = equals != option.size();
  if (name == "tabstop" || name == "ts") set_columns(indent.tab_width, value);
  if (name == "shiftwidth" || name == "sw") set_columns(indent.indent_size, value);
  // The columns of the Tab key, where those of a level aren't told.
  if ((name == "softtabstop" || name == "sts") && !indent.indent_size)
    set_columns(indent.indent_size, value);
  if (has_value) return;
  if (name == "expandtab" || name == "et") indent.soft_tabs = true;
  if (name == "noexpandtab" || name == "noet") indent.soft_tabs = false;
  if (name == "fixendofline" || name == "fixeol") result.final_newline = true;
  if (name == "nofixendofline" || name == "nofixeol") result.final_newline = false;
}

/// What comes after "vim:" in the line, "vi:", "ex:" or "vim" and a version; nothing without one.
std::optional<string_view> after_marker(string_view line) {
  for (std::size_t at = 0; (at = line.find(':', at)) != line.npos; ++at) {
    string_view before = line.substr(0, at);
    std::size_t const digits =
        before.size() - std::min(before.find_last_not_of("0123456789") + 1, before.size());
    before.remove_suffix(digits);
    if (digits != 0 && !before.empty() && string_view("<=>").find(before.back()) != line.npos)
      before.remove_suffix(1);
    for (string_view const marker : {"vim", "Vim", "vi", "ex"}) {
      if (!before.ends_with(marker) || (digits != 0 && marker.size() != 3)) continue;
      std::size_t const begin = before.size() - marker.size();
      if (begin == 0 ? marker != "ex" : is_blank(before[begin - 1])) return line.substr(at + 1);
    }
  }
  return std::nullopt;
}

void read_vim_line(string_view line, modeline& result) {
  auto const found = after_marker(line);
  if (!found) return;
  string_view rest = trimmed(*found);
  bool is_set = false;
  for (string_view const word : {"set ", "se "})
    if (rest.starts_with(word)) {
      rest.remove_prefix(word.size());
      is_set = true;
      break;
    }
  // In the form with "set" what follows the colon is text, and without one it is none.
  std::size_t end = 0;
  while (end < rest.size() && (rest[end] != ':' || (end != 0 && rest[end - 1] == '\\'))) ++end;
  if (is_set && end == rest.size()) return;
  if (is_set) rest = rest.substr(0, end);
  std::size_t from = 0;
  while (from < rest.size()) {
    std::size_t const to = std::min(rest.find_first_of(" \t:", from), rest.size());
    set_option(rest.substr(from, to - from), result);
    from = to + 1;
  }
}

// Variables of Emacs

constexpr std::array<string_view, 18> names_of_indent_size = {
    "c-basic-offset",          "standard-indent",    "python-indent-offset", "python-indent",
    "sh-basic-offset",         "js-indent-level",    "js2-basic-offset",     "css-indent-offset",
    "perl-indent-level",       "cperl-indent-level", "ruby-indent-level",    "lua-indent-level",
    "nxml-child-indent",       "sgml-basic-offset",  "rust-indent-offset",   "yaml-indent-offset",
    "typescript-indent-level", "evil-shift-width"};

void set_variable(string_view text, modeline& result) {
  std::size_t const colon = text.find(':');
  if (colon == text.npos) return;
  string_view const name = trimmed(text.substr(0, colon));
  string_view const value = trimmed(text.substr(colon + 1));
  auto const truth = [&](std::optional<bool>& what) {
    if (value == "t") what = true;
    if (value == "nil") what = false;
  };
  if (name == "tab-width") set_columns(result.indentation.tab_width, value);
  if (std::count(names_of_indent_size.begin(), names_of_indent_size.end(), name) != 0)
    set_columns(result.indentation.indent_size, value);
  if (name == "require-final-newline") truth(result.final_newline);
  std::optional<bool> by_tabs;
  if (name == "indent-tabs-mode") truth(by_tabs);
  if (by_tabs) result.indentation.soft_tabs = !*by_tabs;
}

void read_emacs_line(string_view line, modeline& result) {
  constexpr string_view mark = "-*-";
  std::size_t const begin = line.find(mark);
  if (begin == line.npos) return;
  std::size_t const end = line.find(mark, begin + mark.size());
  if (end == line.npos) return;
  string_view rest = line.substr(begin + mark.size(), end - begin - mark.size());
  while (!rest.empty()) {
    std::size_t const semicolon = std::min(rest.find(';'), rest.size());
    set_variable(rest.substr(0, semicolon), result);
    rest.remove_prefix(std::min(semicolon + 1, rest.size()));
  }
}

/// Each line of the list has what stands before and after its heading.
void read_local_variables(std::vector<std::string> const& lines, modeline& result) {
  constexpr string_view heading = "Local Variables:";
  auto const has_heading = [&](std::string const& line) { return line.find(heading) != line.npos; };
  auto const found = std::find_if(lines.rbegin(), lines.rend(), has_heading);
  if (found == lines.rend()) return;
  string_view const first = *found;
  string_view const prefix = first.substr(0, first.find(heading));
  string_view const suffix = trimmed(first.substr(prefix.size() + heading.size()));
  for (auto line = found.base(); line != lines.end(); ++line) {
    string_view text = *line;
    if (!text.starts_with(prefix)) return;
    text = trimmed(text.substr(prefix.size()));
    if (!text.ends_with(suffix)) return;
    text = trimmed(text.substr(0, text.size() - suffix.size()));
    if (text == "End:") return;
    set_variable(text, result);
  }
}

std::vector<std::string> lines_of(text::storage const& text, std::size_t first, std::size_t end) {
  std::vector<std::string> result;
  for (std::size_t line = first; line < end; ++line)
    result.push_back(unicode::to_utf8(text.line_units(line).substr(0, longest_line)));
  return result;
}

}  // namespace

modeline modeline_of(text::storage const& text) {
  modeline result;
  // What ends with a line feed has one more line, which is empty.
  std::size_t const lines = text.lines() - (text.size(text.lines() - 1) == 0 ? 1 : 0);
  auto const last = [&](std::size_t count) { return lines - std::min(lines, count); };
  auto const head = lines_of(text, 0, std::min(lines, vim_lines));
  bool const has_interpreter = !head.empty() && head[0].starts_with("#!");
  for (std::size_t line = 0; line < head.size(); ++line) {
    if (line == 0 || (line == 1 && has_interpreter)) read_emacs_line(head[line], result);
    read_vim_line(head[line], result);
  }
  read_local_variables(lines_of(text, last(variable_lines), lines), result);
  for (std::string const& line : lines_of(text, std::max(head.size(), last(vim_lines)), lines))
    read_vim_line(line, result);
  return result;
}

}  // namespace conventions
