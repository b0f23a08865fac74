#include "actions/selecting.h"
#include "layout/geometry.h"
#include "layout/hidden_characters.h"
#include "platform/desktop.h"
#include "text/views/folding_filter.h"
#include "text/views/view.h"
#include "textview/WynTextView.h"
#include "textview/view_will_change.h"

#include <algorithm>
#include <cmath>

// Folding by name, by clicks on the marks in the gutter and at the end of folded lines, and the
// tool tip that tells what is folded.

using platform::point;
using platform::rect;
using folding_filter = class text::view::folding_filter;
using line_type = folding_filter::line_type;

namespace {

constexpr platform::size ellipsis_size{20, 11};
constexpr std::size_t tip_lines = 40, tip_columns = 100;

// Of a text that is cut short.
constexpr char16_t ellipsis = 0x2026;

std::u16string with_tabs_expanded(text::unit_view line, std::size_t tab_size, std::size_t width) {
  std::u16string result;
  for (char16_t const u : line) {
    if (result.size() >= width) return result + ellipsis;
    if (u == u'\t')
      result.append(tab_size - result.size() % tab_size, u' ');
    else
      result += u;
  }
  return result;
}

}  // namespace

void WynTextView::addFoldingMethods() {
  auto const add_folding = [this](char const* selector, auto fold) {
    addMethod(selector, [this, fold](plist::value const& argument) {
      if (view_ == nullptr || !view_->foldings_enabled) return plist::value(false);
      textview::view_will_change const scope(*this, true);
      return fold(argument) ? plist::value() : plist::value(false);
    });
  };
  auto const caret_line = [this] { return view_->selection.current_mark.base.line; };
  auto const filter = [this]() -> auto& {
    return *view_->folding_filter;
  };

  add_folding("toggleFolding:",
              [=](auto const&) { return filter().toggle_folding(caret_line(), false); });
  add_folding("foldSelection:", [=, this](auto const&) {
    auto const [first, last] = actions::selected_lines(*view_);
    return filter().fold_lines(first, last);
  });
  add_folding("foldAllAtLevel:", [=](plist::value const& sender) {
    auto const level = static_cast<std::size_t>(std::max<std::int64_t>(sender.integer_or(0), 0));
    return filter().fold_level(level) || filter().unfold_level(level);
  });
  add_folding("unfoldAll:", [=](auto const&) { return filter().unfold_level(0); });

  auto const add_query = [this](char const* name, auto ask) {
    addMethod(name, [this, ask](plist::value const&) {
      return plist::value(view_ != nullptr && view_->foldings_enabled && ask());
    });
  };
  auto const has_folds = [=] { return !filter().foldings.empty(); };
  auto const caret_is_at_fold = [=, this] {
    return view_ != nullptr && filter().is_folded(caret_line());
  };
  add_query("canToggleFolding",
            [=] { return caret_is_at_fold() || filter().can_fold(caret_line()); });
  add_query("canFoldSelection", [this] {
    auto const [first, last] = actions::selected_lines(*view_);
    return first < last;
  });
  add_query("canFoldAllAtLevel", [=] { return filter().has_patterns() || has_folds(); });
  add_query("canUnfoldAllAtLevel", has_folds);
  add_query("canUnfoldAll", has_folds);
  addMethod("toggleFoldingMenuTitle", [=](plist::value const&) {
    return plist::value(caret_is_at_fold() ? "Unfold Block" : "Fold Block");
  });
  // Escape that has closed the tip does nothing else; any other key closes it and does its work.
  addMethod("abortShowingFoldedText:", [this](plist::value const& key) {
    bool const closed = host_ != nullptr && host_->hide_tool_tip();
    return closed && key.string_or("") == "\x1B" ? plist::value(true) : plist::value();
  });
}

bool WynTextView::isFolded(std::size_t row) const {
  return view_->foldings_enabled && !view_->folding_filter->foldings.empty() &&
         view_->folding_filter->is_folded(view_->begin(row).base.line);
}

rect WynTextView::foldEllipsis(std::size_t row) const {
  if (!isFolded(row)) return {};
  text::view_iterator const end = view_->end(row);
  if (end.base.column != view_->storage->size(end.base.line)) return {};
  double const width = ellipsis_size.width * layout_.imageScale();
  double const height = ellipsis_size.height * layout_.imageScale();
  double const y = layout_.y_of_row(row) + std::round((layout_.lineHeight() - height) / 2);
  return {layout::position_of(*this, end).x + std::round(layout_.charWidth() / 2), y, width,
          height};
}

std::optional<std::size_t> WynTextView::rowOfEllipsisAt(point p) const {
  std::size_t const row = layout_.row_at(p.y);
  if (row >= view_->lines() || !visibleTextRect().contains(p)) return std::nullopt;
  return foldEllipsis(row).contains(p) ? std::optional(row) : std::nullopt;
}

// Alt folds or unfolds all blocks of the same level, Shift also those inside.
bool WynTextView::toggleFoldingAtClick(platform::mouse_event const& event) {
  point const p = event.position;
  auto& filter = *view_->folding_filter;
  if (auto const row = rowOfEllipsisAt(p)) {
    textview::view_will_change const scope(*this, true);
    return filter.unfold_if_possible(view_->begin(*row).base.line, false);
  }
  double const gutter_end = visibleTextRect().x;
  std::size_t const row = layout_.row_at(p.y);
  if (p.x < gutter_end - layout_.foldWidth() || p.x >= gutter_end || row >= view_->lines())
    return false;
  text::iterator const begin = view_->begin(row).base;
  line_type const type = filter.mark_of(begin.line);
  if (begin.column != 0 || type == line_type::none) return false;
  textview::view_will_change const scope(*this, true);
  bool done = false;
  if (event.modifiers & platform::modifier::option) {
    std::size_t const level = filter.level_of(begin.line);
    done = level != 0 &&
           (type == line_type::folded ? filter.unfold_level(level) : filter.fold_level(level));
  } else {
    done = filter.toggle_folding(begin.line, event.modifiers & platform::modifier::shift);
  }
  if (!done) platform::desktop::current().beep();
  return true;
}

// What the marks of characters stand for that can't be seen otherwise.
std::optional<platform::tool_tip> WynTextView::tipOfHiddenCharacters(point p) const {
  if (!visibleTextRect().contains(p) || layout_.row_at(p.y) >= view_->lines()) return std::nullopt;
  auto const at = iter_from_view_pos(view_, {layout_.row_at(p.y), layout_.nearest_column(p.x)},
                                     text::freehanded_t::off);
  std::u16string names = layout::hidden_characters_at(at);
  if (names.empty()) return std::nullopt;
  point const place = layout::position_of(*this, at);
  double const half = layout_.charWidth() / 2;
  return platform::tool_tip{std::move(names),
                            {place.x - half, place.y, 2 * half, layout_.lineHeight()}};
}

std::optional<platform::tool_tip> WynTextView::tool_tip_at(point p) const {
  if (view_ == nullptr) return std::nullopt;
  auto const row = rowOfEllipsisAt(p);
  if (!row) return tipOfHiddenCharacters(p);
  auto const& folds = view_->folding_filter->foldings;
  std::size_t const line = view_->begin(*row).base.line;
  auto const fold = folds.lower_bound({static_cast<std::uint32_t>(line), 0});
  platform::tool_tip tip{{}, foldEllipsis(*row)};
  std::size_t const end = std::min<std::size_t>(fold->last, line + tip_lines);
  for (std::size_t at = line + 1; at <= end; ++at)
    tip.text += with_tabs_expanded(view_->storage->line_units(at), tabSize(), tip_columns) +
                (at < end ? u"\n" : u"");
  if (end < fold->last) tip.text += std::u16string(u"\n") + ellipsis;
  return tip;
}
