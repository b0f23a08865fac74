#include "marked_text.h"

#include "platform/utf.h"
#include "text/storage_text.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace marked_text {

namespace {

constexpr char16_t virtual_column = 0xB7;

struct mark {
  size_t at;  ///< in units from the start of the text
  uint32_t offset;
};

struct drawing_marks {
  std::optional<mark> caret, first, last;
  bool column_mode = false;

  std::optional<mark>* named(char16_t unit) {
    if (unit == u'|') return &caret;
    column_mode = column_mode || unit == u'{' || unit == u'}';
    if (unit == u'[' || unit == u'{') return &first;
    if (unit == u']' || unit == u'}') return &last;
    return nullptr;
  }
};

size_t distance_from_start(text::iterator const& it) {
  return static_cast<size_t>(it - it.storage->begin_of_line(0));
}

}  // namespace

std::u16string units(std::string_view utf8) {
  return unicode::to_utf16(utf8);
}

std::string utf8(std::u16string_view units) {
  return unicode::to_utf8(units);
}

std::u16string units_of(text::storage const& storage) {
  return ::units_of(storage);
}

std::string text_of(text::storage const& storage) {
  return utf8(units_of(storage));
}

void set(text::view& view, std::string_view drawing) {
  std::u16string text;
  drawing_marks marks;
  uint32_t offset = 0;
  for (char16_t const unit : units(drawing)) {
    if (unit == virtual_column)
      ++offset;
    else if (auto* found = marks.named(unit))
      *found = mark{text.size(), std::exchange(offset, 0)};
    else
      text += unit;
  }

  view.storage->clear();
  view.storage->insert(view.storage->end(-1), text.begin(), text.end());
  auto const position = [&](mark const& at) {
    return text::view_iterator(
        &view, view.storage->begin_of_line(0) + static_cast<std::ptrdiff_t>(at.at), at.offset);
  };
  mark const caret = marks.caret.value_or(marks.last.value_or(mark{0, 0}));
  view.selection.set_caret(position(caret));
  if (marks.first && marks.last)
    view.selection.select(position(*marks.first), position(*marks.last), marks.column_mode);
}

std::string get(text::view const& view) {
  struct drawn {
    size_t at;
    uint32_t offset;
    int rank;  ///< order of marks at one place
    char16_t character;
  };
  text::selection const& selection = view.selection;
  std::vector<drawn> marks;
  auto const add = [&](text::view_iterator const& it, int rank, char16_t character) {
    marks.push_back({distance_from_start(it.base), it.offset, rank, character});
  };
  bool const only_caret = selection.empty() && selection.current_mark == selection.last_mark;
  if (only_caret || selection.current_mark != selection.last_mark)
    add(selection.current_mark, 1, u'|');
  if (!only_caret) {
    add(selection.first_mark, 0, selection.column_mode ? u'{' : u'[');
    add(selection.last_mark, 2, selection.column_mode ? u'}' : u']');
  }
  std::sort(marks.begin(), marks.end(), [](drawn const& a, drawn const& b) {
    return std::tie(a.at, a.offset, a.rank) < std::tie(b.at, b.offset, b.rank);
  });

  std::u16string text = units_of(*view.storage);
  for (auto it = marks.rbegin(); it != marks.rend(); ++it)
    text.insert(it->at, std::u16string(it->offset, virtual_column) + it->character);
  return utf8(text);
}

}  // namespace marked_text
