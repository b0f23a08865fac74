#include "conventions/indentation.h"

#include <algorithm>
#include <array>

namespace conventions {
namespace {

bool is_blank(text::char_t unit) {
  return unit == u' ' || unit == u'\t';
}

/// The last unit but blanks, of those that are looked at.
text::char_t last_of(text::unit_view line) {
  std::size_t const least = line.size() - std::min(line.size(), deepest_indent);
  std::size_t end = line.size();
  while (end > least && is_blank(line[end - 1])) --end;
  return end > least ? line[end - 1] : u'\0';
}

/// "public:" and its like, which many indent by half a level.
bool is_label(text::unit_view line) {
  for (text::unit_view const word : {u"public", u"protected", u"private"})
    if (line.starts_with(word)) return last_of(line) == u':';
  return false;
}

/// The part of a line in which signs are looked for, so that a file of long lines costs no more.
text::unit_view head_of(text::unit_view line) {
  return line.substr(0, deepest_indent);
}

/// Comments from a line that begins with "/*" to one with "*/": their text is aligned with the
/// sign.
class block_comments {
 public:
  block_comments(text::storage const& text, std::size_t end) : text_(text), end_(end) {}

  /// Of the comment that begins in this line, or the line itself. Lines must be asked about in
  /// order.
  std::size_t last_line_of(std::size_t line) {
    text::unit_view const opener = text_.line_units(line);
    std::size_t begin = 0;
    while (begin < opener.size() && begin < deepest_indent && is_blank(opener[begin])) ++begin;
    if (!opener.substr(begin).starts_with(u"/*") || closes(line)) return line;
    // In shell scripts "/*" is a pattern, and nothing closes it.
    std::size_t const limit = std::min(end_, line + longest_comment);
    closer_ = std::max(closer_, line + 1);
    while (closer_ < limit && !closes(closer_)) ++closer_;
    return closer_ < limit ? closer_ : line;
  }

 private:
  static constexpr std::size_t longest_comment = 100;  // lines

  bool closes(std::size_t line) const {
    return head_of(text_.line_units(line)).find(u"*/") != text::unit_view::npos;
  }

  text::storage const& text_;
  std::size_t end_;
  std::size_t closer_ = 0;  // none of the lines from the one last asked about up to this one closes
};

class ballot {
 public:
  void add(text::unit_view line);
  indentation result() const;

 private:
  std::optional<unsigned> step() const;

  std::size_t tab_lines_ = 0, blank_lines_ = 0;
  std::array<std::size_t, widest_step + 1> steps_{};      // by their columns
  std::array<std::size_t, deepest_indent + 1> depths_{};  // lines, by their blanks
  std::optional<std::size_t> previous_;                   // its blanks
  bool after_comma_ = false;
};

void ballot::add(text::unit_view line) {
  std::size_t const end = std::min(line.size(), deepest_indent + 1);
  std::size_t blanks = 0;
  while (blanks < end && line[blanks] == u' ') ++blanks;
  std::size_t indent = blanks;
  while (indent < end && is_blank(line[indent])) ++indent;
  if (indent == line.size() || indent > deepest_indent) return;
  if (blanks % 2 == 1 && (line[indent] == u'*' || is_label(line.substr(indent)))) return;
  if (blanks != indent) {
    if (blanks == 0) ++tab_lines_;
    previous_.reset();
    return;
  }
  if (blanks != 0) {
    ++blank_lines_;
    ++depths_[blanks];
  }
  if (previous_ && blanks > *previous_ && blanks - *previous_ <= widest_step && !after_comma_)
    ++steps_[blanks - *previous_];
  previous_ = blanks;
  after_comma_ = last_of(line) == u',';
}

std::optional<unsigned> ballot::step() const {
  auto const best =
      static_cast<std::size_t>(std::max_element(steps_.begin(), steps_.end()) - steps_.begin());
  if (steps_[best] < 2) return std::nullopt;
  std::size_t all = 0, multiples = 0, fitting = 0;
  for (std::size_t step = 1; step < steps_.size(); ++step) {
    all += steps_[step];
    if (step % best == 0) multiples += steps_[step];
  }
  for (std::size_t depth = best; depth < depths_.size(); depth += best) fitting += depths_[depth];
  // All steps are multiples of one.
  bool const agreed =
      best == 1 ? 2 * steps_[best] > all : 3 * steps_[best] > all && 4 * multiples >= 3 * all;
  if (!agreed || 4 * fitting < 3 * blank_lines_) return std::nullopt;
  return static_cast<unsigned>(best);
}

indentation ballot::result() const {
  indentation found;
  if (tab_lines_ != 0 && tab_lines_ >= 4 * blank_lines_) found.soft_tabs = false;
  if (blank_lines_ >= 2 && blank_lines_ >= 4 * tab_lines_) {
    found.soft_tabs = true;
    found.indent_size = step();
  }
  return found;
}

}  // namespace

indentation detect_indentation(text::storage const& text) {
  ballot votes;
  std::size_t const end = std::min(text.lines(), most_lines_looked_at);
  block_comments comments(text, end);
  for (std::size_t line = 0; line < end; ++line) {
    votes.add(text.line_units(line));
    line = comments.last_line_of(line);
  }
  return votes.result();
}

}  // namespace conventions
