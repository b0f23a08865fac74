#include "textview/access/text_access.h"

#include "grammar/tokenize_filter.h"
#include "layout/geometry.h"
#include "text/cluster.h"
#include "text/views/box.h"
#include "text/views/view.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <utility>

namespace textview {

using platform::unit_range;

namespace {

// More is of no use to who listens, and each goes over a bus.
constexpr std::size_t most_changes = 64, most_units_told = 1 << 16;

std::u16string units_between(text::iterator const& first, text::iterator const& last) {
  std::u16string units(static_cast<std::size_t>(last - first), u'\0');
  text::copy_units(first, last, units.data());
  return units;
}

}  // namespace

text_access::text_access(pointed_view& text_view, platform::accessible_text_observer& observer)
    : text_view_(text_view),
      observer_(observer),
      storage_(*text_view.view()->storage),
      offsets_(storage_) {
  storage_.add_observer(this);
}

text_access::~text_access() {
  storage_.remove_observer(this);
}

void text_access::will_insert(text::iterator const& at, int) {
  offsets_.will_change(at.line);
}

void text_access::did_insert(text::iterator const& first, text::iterator const& last) {
  note(true, first, last);
}

void text_access::will_erase(text::iterator const& first, text::iterator const& last) {
  offsets_.will_change(first.line);
  note(false, first, last);
}

void text_access::note(bool is_insertion, text::iterator const& first, text::iterator const& last) {
  if (changes_.size() == most_changes) return;
  std::size_t const length = static_cast<std::size_t>(last - first);
  text::iterator const end =
      length <= most_units_told ? last : first + static_cast<std::ptrdiff_t>(most_units_told);
  changes_.push_back({is_insertion, offsets_.offset_of(first.pos()), units_between(first, end)});
}

void text_access::tell() {
  for (change const& each : std::exchange(changes_, {}))
    each.is_insertion ? observer_.text_inserted(each.at, each.text)
                      : observer_.text_erased(each.at, each.text);
}

std::size_t text_access::length() const {
  return storage_.length();
}

std::u16string text_access::text(unit_range range) {
  if (range.first >= range.last) return {};
  text::iterator const first = offsets_.position_of(range.first);
  return units_between(first, offsets_.position_of(range.last));
}

std::size_t text_access::caret() {
  return offsets_.offset_of(view().selection.current_mark.base.pos());
}

std::size_t text_access::selection_count() {
  if (!view().has_selection()) return 0;
  if (!view().is_in_column_mode()) return 1;
  text::box const box(&view());
  return box.last_line - box.first_line;
}

unit_range text_access::selection(std::size_t index) {
  if (index >= selection_count()) return {};
  text::selection const& selection = view().selection;
  text::iterator first = selection.first().base, last = selection.last().base;
  if (selection.column_mode) {
    text::box const box(&view());
    auto const at = [&](std::size_t column) {
      return iter_from_hybrid_pos(&view(), {box.first_line + index, column},
                                  text::freehanded_t::off)
          .base;
    };
    first = at(box.first_column);
    last = at(box.last_column);
  }
  std::size_t const begin = offsets_.offset_of(first.pos());
  return {begin, offsets_.offset_of(last.pos())};
}

void text_access::select(std::size_t anchor, std::size_t caret) {
  text_view_.change([&] {
    view().selection.set_caret(view().in_view(offsets_.position_of(anchor)));
    if (anchor != caret)
      view().selection.select_to(view().in_view(offsets_.position_of(caret)), false);
  });
}

unit_range text_access::character_at(std::size_t offset) {
  text::iterator const at = offsets_.position_of(offset);
  std::size_t const begin = offsets_.offset_of({at.line, 0}), here = begin + at.column;
  text::unit_view const line = storage_.line_units(at.line);
  if (at.column == line.size()) return {here, std::min(here + 1, length())};
  std::size_t const end = text::next_cluster(line, at.column);
  return {begin + text::previous_cluster(line, end), begin + end};
}

unit_range text_access::line_range(std::size_t line) {
  std::size_t const first = offsets_.offset_of({static_cast<std::uint32_t>(line), 0});
  return {first, std::min(first + storage_.size(line) + 1, length())};
}

unit_range text_access::line_at(std::size_t offset) {
  return line_range(offsets_.position_of(offset).line);
}

// The line end belongs to the last row; the other rows end where the next one begins.
unit_range text_access::row_at(std::size_t offset) {
  text::iterator const at = offsets_.position_of(offset);
  unit_range range = line_range(at.line);
  if (!view().is_visible(at)) return range;
  std::size_t const row = view().line_in_view({&view(), at});
  text::iterator const first = view().begin(row).base;
  if (first.line == at.line) range.first += first.column;
  if (row + 1 == view().lines()) return range;
  text::iterator const next = view().begin(row + 1).base;
  if (next.line == at.line) range.last = offsets_.offset_of(next.pos());
  return range;
}

platform::rect text_access::rect_of(std::size_t offset) {
  text::iterator const at = offsets_.position_of(offset);
  if (!view().is_visible(at)) return {};
  auto const place = layout::position_of(text_view_, {&view(), at});
  TextLayout const& layout = text_view_.layout();
  text::unit_view const line = storage_.line_units(at.line);
  bool const is_character = at.column < line.size() && line[at.column] != u'\t';
  if (is_character) return layout::character_rectangle(text_view_, {&view(), at});
  return {place.x, place.y, layout.charWidth(), layout.lineHeight()};
}

std::size_t text_access::offset_at(platform::point p) {
  auto const at = layout::position_at(text_view_, p, text::freehanded_t::off);
  return offsets_.offset_of(at.base.pos());
}

platform::accessible_style text_access::style_at(std::size_t offset) {
  text::iterator const at = offsets_.position_of(offset);
  platform::accessible_style result{.range = line_range(at.line),
                                    .text = {},
                                    .background = {},
                                    .letters = text_view_.layout().font()};
  std::size_t const begin = result.range.first;
  grammar::path_tree::id path = 0;
  auto* const tokenizer = text_view_.tokenizer();
  if (tokenizer != nullptr && tokenizer->wait_for(at.line)) {
    std::lock_guard const lock(storage_.mutex);
    grammar::line_tokens const& tokens = tokenizer->tokens(at.line);
    auto const next = std::upper_bound(
        tokens.begin(), tokens.end(), at.column,
        [](std::size_t column, auto const& token) { return column < token.column; });
    if (next != tokens.begin()) {
      path = (*(next - 1)).path;
      result.range.first = begin + (*(next - 1)).column;
    }
    if (next != tokens.end()) result.range.last = begin + (*next).column;
  }
  styles::drawn_style const style = text_view_.styleOfPath(path);
  result.text = style.text;
  platform::color const desktop = text_view_.host() == nullptr
                                      ? platform::color{255, 255, 255}
                                      : text_view_.host()->palette().background;
  result.background =
      style.background.value_or(text_view_.styleOfPath(0).background.value_or(desktop));
  return result;
}

void text_access::replace(unit_range range, std::u16string_view text) {
  // Typing in columns ends where it isn't replaced.
  select(range.first, std::max(range.first, range.last));
  text_view_.change([&] {
    text::iterator const first = offsets_.position_of(range.first);
    text::iterator const last = offsets_.position_of(std::max(range.first, range.last));
    view().selection.set_caret(view().in_view(first));
    if (!(first == last)) storage_.erase(first, last);
    text::iterator const end = storage_.insert(first, text.begin(), text.end());
    view().selection.set_caret(view().in_view(end));
  });
}

void text_access::scroll_to(unit_range range) {
  if (text_view_.host() == nullptr) return;
  platform::rect const place = rect_of(range.first), seen = text_view_.visibleTextRect();
  if (place.empty() || seen.contains(place)) return;
  text_view_.host()->scroll_to({0, place.y - (seen.height - place.height) / 2});
}

}  // namespace textview
