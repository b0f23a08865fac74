#include "actions/comments.h"

#include <algorithm>
#include <optional>

#include "actions/selecting.h"

namespace actions {
namespace {

using text::unit_view;

constexpr unit_view blanks = u" \t";

unit_view trimmed(unit_view text) {
  std::size_t const first = text.find_first_not_of(blanks);
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) + 1 - first);
}

/// Units taken away at a place of a line, and others put there.
struct line_edit {
  std::size_t line, column, erased;
  std::u16string inserted;
};

/// Makes the edits, given from the top of the text down, and keeps the selection on its text.
class editing {
 public:
  /// With `enclosing` the selection's ends stay outside of what is put in there.
  explicit editing(text::view& view, bool enclosing = false) : view_(view), enclosing_(enclosing) {}

  void make(std::vector<line_edit> const& edits) {
    text::selection const& selection = view_.selection;
    bool const columns = selection.column_mode;
    text::iterator first = selection.first_mark.base, last = selection.last_mark.base,
                   caret = selection.current_mark.base;
    for (auto edit = edits.rbegin(); edit != edits.rend(); ++edit) {
      text::iterator const at(edit->line, edit->column, view_.storage);
      if (edit->erased != 0)
        view_.storage->erase(at, at + static_cast<std::ptrdiff_t>(edit->erased));
      view_.storage->insert(at, edit->inserted.begin(), edit->inserted.end());
      if (!enclosing_ || edit != edits.rend() - 1) move(first, *edit);
      move(last, *edit);
      if (!enclosing_ || edit != edits.rend() - 1 || !(caret == first)) move(caret, *edit);
    }
    view_.selection.select({&view_, first}, {&view_, last}, columns);
    view_.selection.current_mark = {&view_, caret};
    view_.scroll_caret_pending = true;
  }

 private:
  // What stands right where something is put in goes after it.
  static void move(text::iterator& mark, line_edit const& edit) {
    if (mark.line != edit.line || mark.column < edit.column) return;
    std::size_t const kept =
        mark.column - edit.column - std::min<std::size_t>(mark.column - edit.column, edit.erased);
    mark.column = static_cast<std::uint32_t>(edit.column + edit.inserted.size() + kept);
  }

  text::view& view_;
  bool enclosing_;
};

/// Lines, the last one not included.
struct line_range {
  std::size_t first, last;
};

class line_comments {
 public:
  line_comments(text::view const& view, line_range lines, std::u16string const& marker)
      : storage_(*view.storage), lines_(lines), marker_(marker), bare_(trimmed(marker)) {}

  std::vector<line_edit> edits() const {
    std::vector<line_edit> result;
    bool const are_comments = all_are_comments();
    bool const are_blank = are_all_blank();
    std::size_t const column = are_comments || are_blank ? 0 : least_indent();
    for (std::size_t line = lines_.first; line < lines_.last; ++line) {
      unit_view const text = storage_.line_units(line);
      if (are_comments) {
        if (!trimmed(text).empty()) result.push_back(removal(line, text));
      } else if (are_blank || !trimmed(text).empty()) {
        result.push_back({line, are_blank ? text.size() : column, 0, marker_});
      }
    }
    return result;
  }

 private:
  bool all_are_comments() const {
    bool any = false;
    for (std::size_t line = lines_.first; line < lines_.last; ++line) {
      unit_view const text = trimmed(storage_.line_units(line));
      if (text.empty()) continue;
      if (!text.starts_with(bare_)) return false;
      any = true;
    }
    return any;
  }
  bool are_all_blank() const {
    for (std::size_t line = lines_.first; line < lines_.last; ++line)
      if (!trimmed(storage_.line_units(line)).empty()) return false;
    return true;
  }
  /// In units: what all lines begin with.
  std::size_t least_indent() const {
    std::optional<unit_view> common;
    for (std::size_t line = lines_.first; line < lines_.last; ++line) {
      unit_view const text = storage_.line_units(line);
      std::size_t const size = text.find_first_not_of(blanks);
      if (size == text.npos) continue;
      unit_view const indent = text.substr(0, size);
      if (!common) common = indent;
      std::size_t same = 0;
      while (same < std::min(common->size(), size) && (*common)[same] == indent[same]) ++same;
      common = common->substr(0, same);
    }
    return common ? common->size() : 0;
  }
  line_edit removal(std::size_t line, unit_view text) const {
    std::size_t const at = text.find_first_not_of(blanks);
    bool const is_whole = text.substr(at).starts_with(marker_);
    return {line, at, is_whole ? marker_.size() : bare_.size(), u""};
  }

  text::storage const& storage_;
  line_range lines_;
  std::u16string marker_;
  unit_view bare_;
};

/// Enclosing from one place to another.
class block_comment {
 public:
  block_comment(text::view const& view, comment_marker const& marker, text::pos first,
                text::pos last)
      : storage_(*view.storage), marker_(marker), first_(first), last_(last) {}

  std::vector<line_edit> edits() const { return is_comment() ? uncommented() : commented(); }

 private:
  unit_view start() const { return trimmed(marker_.start); }
  unit_view end() const { return trimmed(marker_.end); }
  unit_view before_last() const { return storage_.line_units(last_.line).substr(0, last_.column); }
  unit_view after_first() const { return storage_.line_units(first_.line).substr(first_.column); }

  bool is_comment() const {
    std::size_t const room =
        first_.line == last_.line ? last_.column - first_.column : start().size() + end().size();
    return after_first().starts_with(start()) && before_last().ends_with(end()) &&
           room >= start().size() + end().size();
  }

  /// The places on the lines at which the end marker, with any blanks after its first unit, stands.
  template <typename Use>
  void for_each_end(std::size_t from, std::size_t to, Use use) const {
    unit_view const mark = end();
    for (std::size_t line = first_.line; line <= last_.line; ++line) {
      unit_view const text = storage_.line_units(line);
      std::size_t at = line == first_.line ? from : 0;
      std::size_t const stop = line == last_.line ? to : text.size();
      for (; (at = text.find(mark[0], at)) < stop; ++at) {
        std::size_t const rest = text.find_first_not_of(u' ', at + 1);
        if (rest < stop && text.substr(rest, stop - rest).starts_with(mark.substr(1)))
          use(line, at + 1, rest - at - 1);
      }
    }
  }

  std::vector<line_edit> commented() const {
    std::vector<line_edit> result{{first_.line, first_.column, 0, marker_.start}};
    if (end().size() > 1)
      for_each_end(first_.column, last_.column,
                   [&](std::size_t line, std::size_t column, std::size_t) {
                     result.push_back({line, column, 0, u" "});
                   });
    result.push_back({last_.line, last_.column, 0, marker_.end});
    return result;
  }

  std::vector<line_edit> uncommented() const {
    std::size_t const opening =
        after_first().starts_with(marker_.start) ? marker_.start.size() : start().size();
    std::size_t const from = first_.line == last_.line ? first_.column + opening : 0;
    bool const is_whole =
        before_last().ends_with(marker_.end) && last_.column >= from + marker_.end.size();
    std::size_t const closing = is_whole ? marker_.end.size() : end().size();
    std::vector<line_edit> result{{first_.line, first_.column, opening, u""}};
    if (end().size() > 1)
      for_each_end(first_.column + opening, last_.column - closing,
                   [&](std::size_t line, std::size_t column, std::size_t count) {
                     if (count > 0) result.push_back({line, column, 1, u""});
                   });
    result.push_back({last_.line, last_.column - closing, closing, u""});
    return result;
  }

  text::storage const& storage_;
  comment_marker const& marker_;
  text::pos first_, last_;
};

/// Of the lines, without the blanks round them; nothing if there is no text.
std::optional<std::pair<text::pos, text::pos>> text_of_lines(text::storage const& storage,
                                                             line_range lines) {
  while (lines.first < lines.last && trimmed(storage.line_units(lines.first)).empty())
    ++lines.first;
  while (lines.last > lines.first && trimmed(storage.line_units(lines.last - 1)).empty())
    --lines.last;
  if (lines.first == lines.last) return std::nullopt;
  auto const column = [](std::size_t at) { return static_cast<std::uint32_t>(at); };
  auto const line = [](std::size_t at) { return static_cast<std::uint32_t>(at); };
  return std::pair(
      text::pos{line(lines.first),
                column(storage.line_units(lines.first).find_first_not_of(blanks))},
      text::pos{line(lines.last - 1),
                column(storage.line_units(lines.last - 1).find_last_not_of(blanks) + 1)});
}

}  // namespace

bool toggle_comments(text::view& view, std::vector<comment_marker> const& markers) {
  auto const is_usable = [](comment_marker const& m) { return !trimmed(m.start).empty(); };
  auto const for_lines = std::find_if(markers.begin(), markers.end(), [&](auto const& m) {
    return is_usable(m) && trimmed(m.end).empty();
  });
  auto const for_blocks = std::find_if(markers.begin(), markers.end(), [&](auto const& m) {
    return is_usable(m) && !trimmed(m.end).empty();
  });
  auto const [first, last] = selected_lines(view);
  if (for_lines != markers.end()) {
    editing(view).make(line_comments(view, {first, last + 1}, for_lines->start).edits());
    return true;
  }
  if (for_blocks == markers.end()) return false;
  text::selection const& selection = view.selection;
  bool const is_part = view.has_selection() && !selection.column_mode &&
                       selection.first().base.line == selection.last().base.line;
  auto range = text_of_lines(*view.storage, {first, last + 1});
  if (is_part) range = {selection.first().base.pos(), selection.last().base.pos()};
  if (!range) return false;
  editing(view, is_part)
      .make(block_comment(view, *for_blocks, range->first, range->second).edits());
  return true;
}

}  // namespace actions
