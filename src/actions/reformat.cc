#include "actions/reformat.h"

#include <algorithm>

#include "actions/align.h"
#include "regex/traits.h"
#include "text/row_break.h"
#include "text/tab_width.h"

namespace actions {
namespace {

using text::unit_view;

bool is_space(text::char_t unit) {
  return regex::traits<text::char_t>::is_space(unit);
}

std::size_t spaces_at(unit_view text, std::size_t from) {
  std::size_t end = from;
  while (end < text.size() && is_space(text[end])) ++end;
  return end - from;
}

/// The units of a mark such as "  * ", with text after its blank.
std::size_t list_mark(unit_view text) {
  std::size_t const mark = text.find_first_not_of(u' ');
  if (mark == text.npos || unit_view(u"*-o\u2022\xb7").find(text[mark]) == unit_view::npos)
    return 0;
  bool const has_text = text.substr(mark + 1).starts_with(u' ') && mark + 2 < text.size() &&
                        !is_space(text[mark + 2]) && text[mark + 2] != u'\n';
  return has_text ? mark + 2 : 0;
}

std::size_t prefix_length(unit_view text) {
  if (std::size_t const mark = list_mark(text)) return mark;
  std::size_t const spaces = spaces_at(text, 0);
  return spaces >= 2 ? spaces : 0;
}

/// Appends the rows of a paragraph, each with its prefix but for empty ones; the first row gets
/// `prefix`, and leaves there what the others get.
class row_writer {
 public:
  row_writer(std::u16string prefix, reformat_options const& options)
      : options_(options), first_(std::move(prefix)) {
    std::size_t const columns = text::expanded_width(first_, 0, text::tab_stops(options.tab_size));
    further_ = std::u16string(columns, u' ');
    width_ = options.width - std::min(options.width, columns);
  }

  void add_paragraph(unit_view paragraph) {
    text::row_start start;
    while (auto const end = text::find_row_break(paragraph, start, width_, options_.tab_size)) {
      // A word that is cut loses nothing: what the screen's rows leave out stands here too.
      std::size_t const last = end->next.hard ? end->next.unit : end->last;
      add_row(paragraph.substr(start.unit, last - start.unit), options_.justify);
      result_ += u'\n';
      start = {end->next.unit, false};
    }
    add_row(paragraph.substr(start.unit), false);
  }

  void end_line() { result_ += u'\n'; }
  std::u16string result() && { return std::move(result_); }

 private:
  void add_row(unit_view row, bool justify) {
    if (row.empty()) return;
    result_ += is_first_ ? first_ : further_;
    is_first_ = false;
    if (justify)
      result_ += justified_row(row, width_, options_.tab_size);
    else
      result_ += row;
  }

  reformat_options const& options_;
  std::u16string first_, further_, result_;
  std::size_t width_ = 0;
  bool is_first_ = true;
};

}  // namespace

std::u16string unwrapped(unit_view text) {
  std::u16string result;
  result.reserve(text.size());
  std::size_t at = 0;
  while (at < text.size()) {
    if (text[at] != u'\n' && !is_space(text[at])) {
      result += text[at++];
      continue;
    }
    bool const is_start = at == 0;
    std::size_t line_ends = 0, line_start = at;
    for (; at < text.size() && (text[at] == u'\n' || is_space(text[at])); ++at)
      if (text[at] == u'\n') {
        ++line_ends;
        line_start = at + 1;
      }
    unit_view const blanks = text.substr(line_start, at - line_start);
    bool const is_end = at == text.size();
    if (is_start) {
      result += blanks;
    } else if (is_end && blanks.empty()) {
      result += u'\n';
    } else {
      if (line_ends > 1) result += u"\n\n";
      if (!is_end && (line_ends < 2 || !blanks.empty())) result += u' ';
    }
  }
  return result;
}

std::u16string reformatted(unit_view text, reformat_options const& options) {
  std::size_t const prefix = options.keep_prefix ? prefix_length(text) : 0;
  std::u16string const paragraphs = unwrapped(text.substr(prefix));
  row_writer rows(std::u16string(text.substr(0, prefix)), options);
  unit_view rest = paragraphs;
  while (true) {
    std::size_t const length = std::min(rest.find(u'\n'), rest.size());
    rows.add_paragraph(rest.substr(0, length));
    if (length == rest.size()) break;
    rows.end_line();
    rest.remove_prefix(length + 1);
  }
  return std::move(rows).result();
}

}  // namespace actions
