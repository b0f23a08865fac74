#include "text/views/folding_filter.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "text/replacement.h"
#include "text/views/mark_history.h"
#include "text/views/soft_wrap_filter.h"

namespace text {

namespace {

// Of folds that are opened at once: laying all lines out costs less than reporting more.
constexpr size_t most_told = 8;

}  // namespace

void view::folding_filter::set_patterns(pattern start, pattern stop) {
  bool const same =
      start && stop && has_patterns() && *start == *begin_pattern && *stop == *end_pattern;
  if (same) return;
  begin_pattern = std::move(start);
  end_pattern = std::move(stop);
  forget_markers();
}

void view::folding_filter::set_indent_folding(pattern ignored) {
  bool const same =
      ignored && ignored_pattern ? *ignored == *ignored_pattern : ignored == ignored_pattern;
  if (same) return;
  ignored_pattern = std::move(ignored);
  forget_markers();
}

void view::folding_filter::reset() {
  forget_markers();
  foldings.clear();
  forget_survey();
}

/// The folds in the order of their lines, without those inside others: what the coordinates need,
/// found by bisection.
std::vector<view::folding_filter::outer_fold> const& view::folding_filter::outer_folds() const {
  if (!surveyed_) survey_folds();
  return outer_;
}

std::vector<view::folding_filter::outer_fold>::const_iterator
view::folding_filter::fold_at_or_after(size_t line) const {
  auto const& folds = outer_folds();
  return std::partition_point(folds.begin(), folds.end(),
                              [&](outer_fold const& fold) { return fold.first < line; });
}

bool view::folding_filter::is_folded(size_t line) const {
  auto const found = border_at_or_after(line);
  return found != borders_.end() && found->line == line && !found->is_last;
}

/// The lines of a fold's border are not free for another one.
bool view::folding_filter::is_end_of_fold(size_t line) const {
  auto const found = border_at_or_after(line);
  return found != borders_.end() && found->line == line;
}

std::vector<view::folding_filter::border>::const_iterator view::folding_filter::border_at_or_after(
    size_t line) const {
  if (!surveyed_) survey_folds();
  return std::partition_point(borders_.begin(), borders_.end(),
                              [&](border const& each) { return each.line < line; });
}

void view::folding_filter::survey_folds() const {
  outer_.clear();
  borders_.clear();
  uint32_t hidden = 0;
  for (folding_t const& fold : foldings) {
    borders_.push_back({fold.first, false});
    borders_.push_back({fold.last, true});
    if (!outer_.empty() && fold.first < outer_.back().last) continue;
    hidden += fold.last - fold.first;
    outer_.push_back({fold.first, fold.last, hidden});
  }
  auto const is_before = [](border const& a, border const& b) { return a.line < b.line; };
  // Without folds in folds they are in order already.
  if (!std::is_sorted(borders_.begin(), borders_.end(), is_before))
    std::sort(borders_.begin(), borders_.end(), is_before);
  surveyed_ = true;
}

/// The last of the folds for which something holds that holds for all before them too; null
/// without one. `near`, where the last one was found, is tried first with its neighbour: rows and
/// lines are mostly asked for one after the other.
template <typename IsAbove>
view::folding_filter::outer_fold const* view::folding_filter::last_fold(size_t& near,
                                                                        IsAbove is_above) const {
  auto const& folds = outer_folds();
  auto const fits = [&](size_t count) {
    return count <= folds.size() && (count == 0 || is_above(folds[count - 1])) &&
           (count == folds.size() || !is_above(folds[count]));
  };
  if (!fits(near) && !fits(++near))
    near = static_cast<size_t>(std::partition_point(folds.begin(), folds.end(), is_above) -
                               folds.begin());
  return near == 0 ? nullptr : &folds[near - 1];
}

view::folding_filter::outer_fold const* view::folding_filter::last_fold_above(size_t line) const {
  return last_fold(near_line_, [&](outer_fold const& fold) { return fold.first < line; });
}

text::pos view::folding_filter::in_view(text::pos const& at) const {
  outer_fold const* const found = last_fold_above(at.line);
  if (found == nullptr) return at;
  outer_fold const& above = *found;
  return {size_t{at.line} - above.hidden + (at.line < above.last ? above.last - at.line : 0),
          at.column};
}

text::pos view::folding_filter::in_storage(text::pos const& at) const {
  outer_fold const* const above = last_fold(near_row_, [&](outer_fold const& fold) {
    // The row of the line that stays of this fold.
    return fold.last - fold.hidden < at.line;
  });
  if (above == nullptr) return at;
  return {size_t{at.line} + above->hidden, at.column};
}

bool view::folding_filter::is_visible(text::pos const& at) const {
  outer_fold const* const above = last_fold_above(at.line);
  return above == nullptr || above->last < at.line;
}

void view::folding_filter::make_visible(text::pos const& at) {
  if (is_visible(at)) return;
  std::vector<folding_t> hiding;
  for (folding_t const& fold : foldings) {
    if (fold.first >= at.line) break;
    if (at.line <= fold.last) hiding.push_back(fold);
  }
  for (auto fold = hiding.rbegin(); fold != hiding.rend(); ++fold)
    view_.mark_history->will_open(*fold);
  unfold(hiding);
  put_caret_at_end_of(hiding.front().first);
}

void view::folding_filter::put_caret_at_end_of(size_t line) {
  view_.selection.set_caret({&view_, text::iterator(end_of(line), view_.storage)});
}

// The lines between must hold whole folds only. Costs what lies between, so that a level of many
// blocks is tested in one pass over the folds.
bool view::folding_filter::crosses_a_fold(folding_t const& fold) const {
  if (is_end_of_fold(fold.first) || is_end_of_fold(fold.last)) return true;
  size_t open = 0;
  for (auto at = border_at_or_after(fold.first); at != borders_.end() && at->line < fold.last;
       ++at) {
    if (at->is_last && open == 0) return true;
    at->is_last ? --open : ++open;
  }
  return open != 0;
}

bool view::folding_filter::fold(folding_t const& fold) {
  if (fold.first >= fold.last || crosses_a_fold(fold)) return false;
  text::pos const from = end_of(fold.first), to = end_of(fold.last);
  bool const shown = is_visible(from) && is_visible(to);
  if (shown) filter::will_erase(from, to);
  foldings.insert(fold);
  forget_survey();
  // The length is not that of what is hidden: nothing has gone from the text.
  if (shown) filter::did_erase(text::iterator(from, view_.storage), 1);
  return true;
}

bool view::folding_filter::make_lines_visible(size_t first, size_t last) {
  std::vector<folding_t> hiding;
  for (folding_t const& fold : foldings) {
    if (fold.first + size_t{1} >= last) break;
    if (first <= fold.last) hiding.push_back(fold);
  }
  for (auto fold = hiding.rbegin(); fold != hiding.rend(); ++fold)
    view_.mark_history->will_open(*fold);
  unfold(hiding);
  return !hiding.empty();
}

// Those in others, which hide nothing by themselves, go first, and then the last one of the others:
// each is reported with its contents; if there are many, everything is laid out again.
void view::folding_filter::unfold(std::vector<folding_t> const& folds) {
  std::vector<folding_t> hidden, shown;
  for (folding_t const& fold : folds)
    (is_visible({fold.first, 0}) ? shown : hidden).push_back(fold);
  bool const one_by_one = shown.size() <= most_told;
  erase_folds(one_by_one ? hidden : folds);
  if (!one_by_one) return lay_out_again();
  for (auto fold = shown.rbegin(); fold != shown.rend(); ++fold) {
    foldings.erase(*fold);
    forget_survey();
    filter::did_insert(end_of(fold->first), end_of(fold->last));
  }
}

/// Of a list in order.
void view::folding_filter::erase_folds(std::vector<folding_t> const& folds) {
  if (folds.empty()) return;
  folding_set kept;
  std::set_difference(foldings.begin(), foldings.end(), folds.begin(), folds.end(),
                      std::inserter(kept, kept.end()));
  foldings.swap(kept);
  forget_survey();
}

// When there are many all is laid out again, as for unfold().
void view::folding_filter::fold_again(std::vector<folding_t> const& folds) {
  if (!view_.foldings_enabled) return;
  bool const one_by_one = folds.size() <= most_told;
  bool changed = false;
  for (folding_t const& again : folds) {
    if (again.last >= view_.storage->lines()) continue;
    if (one_by_one)
      fold(again);
    else if (again.first < again.last && !crosses_a_fold(again))
      changed = foldings.insert(again).second || changed;
  }
  if (changed) lay_out_again();
}

void view::folding_filter::open_again(std::vector<folding_t> const& folds) {
  std::vector<folding_t> found;
  std::copy_if(folds.begin(), folds.end(), std::back_inserter(found),
               [this](folding_t const& fold) { return foldings.contains(fold); });
  std::sort(found.begin(), found.end(), foldings.key_comp());
  unfold(found);
}

bool view::folding_filter::fold_lines(size_t first, size_t last) {
  if (!fold({static_cast<uint32_t>(first), static_cast<uint32_t>(last)})) return false;
  put_caret_at_end_of(first);
  return true;
}

bool view::folding_filter::fold_if_possible(size_t line, bool nested) {
  auto const found = block_around(line);
  if (!found) return false;
  unfold_those_ending_with(*found);
  if (!fold(*found)) return false;
  if (nested) add_folds(blocks(found->first + size_t{1}, found->last), 0);
  put_caret_at_end_of(found->first);
  return true;
}

/// A line is the last one of one fold only.
void view::folding_filter::unfold_those_ending_with(folding_t const& fold) {
  if (!ignored_pattern) return;
  auto const is_one = [&](folding_t const& other) {
    return other.last == fold.last && other.first > fold.first;
  };
  auto const found = std::find_if(foldings.begin(), foldings.end(), is_one);
  if (found == foldings.end()) return;
  folding_t const inner = *found;
  unfold({inner});
}

bool view::folding_filter::unfold_if_possible(size_t line, bool nested) {
  auto const found = foldings.lower_bound({static_cast<uint32_t>(line), 0});
  if (found == foldings.end() || found->first != line) return false;
  folding_t const outer = *found;
  if (nested) foldings.erase(std::next(found), foldings.lower_bound({outer.last, 0}));
  unfold({outer});
  put_caret_at_end_of(line);
  return true;
}

bool view::folding_filter::toggle_folding(size_t line, bool nested) {
  return unfold_if_possible(line, nested) || fold_if_possible(line, nested);
}

/// Those of a level, or of any for 0. No one is notified. Blocks don't cross each other, so that
/// comparing with the folds that were there is enough.
bool view::folding_filter::add_folds(std::vector<block> const& blocks, size_t level) {
  std::vector<folding_t> fitting;
  for (block const& found : blocks) {
    if (level != 0 && found.level != level) continue;
    unfold_those_ending_with(found.lines);
    // The inner ones come first.
    if (!fitting.empty() && fitting.back().last == found.lines.last) fitting.pop_back();
    if (!crosses_a_fold(found.lines)) fitting.push_back(found.lines);
  }
  foldings.insert(fitting.begin(), fitting.end());
  if (!fitting.empty()) forget_survey();
  return !fitting.empty();
}

bool view::folding_filter::fold_level(size_t level) {
  bool const changed = add_folds(blocks(0, view_.storage->lines()), level);
  if (changed) lay_out_again();
  return changed;
}

bool view::folding_filter::unfold_level(size_t level) {
  size_t const before = foldings.size();
  if (level == 0)
    foldings.clear();
  else
    for (block const& found : blocks(0, view_.storage->lines()))
      if (found.level == level) foldings.erase(found.lines);
  if (foldings.size() == before) return false;
  lay_out_again();
  return true;
}

void view::folding_filter::restore(std::vector<folding_t> const& kept) {
  for (folding_t const& fold : kept) {
    if (fold.first >= fold.last || fold.last >= view_.storage->lines()) continue;
    if (crosses_a_fold(fold)) continue;
    foldings.insert(fold);
    forget_survey();
  }
  lay_out_again();
}

void view::folding_filter::restore_all(folding_set folds) {
  if (!view_.foldings_enabled || folds == foldings) return;
  foldings = std::move(folds);
  lay_out_again();
}

/// After many folds at once, of which the filters above have not been notified.
void view::folding_filter::lay_out_again() {
  forget_survey();
  if (view_.soft_wrap) view_.soft_wrap_filter->reset();
  view_.forget_max_columns();
  view_.refresh_lines(0, std::numeric_limits<uint32_t>::max());
  text::selection const& selection = view_.selection;
  auto const shows = [this](view_iterator const& mark) { return is_visible(mark.base.pos()); };
  if (shows(selection.current_mark) && shows(selection.first_mark) && shows(selection.last_mark))
    return;
  put_caret_at_end_of(in_storage({in_view(selection.current_mark.base.pos()).line, 0}).line);
}

template <typename Crossed>
void view::folding_filter::unfold_where(Crossed crossed) {
  std::vector<folding_t> found;
  std::copy_if(foldings.begin(), foldings.end(), std::back_inserter(found), crossed);
  for (folding_t const& fold : found) touched.push_back({fold, {}});
  unfold(found);
}

/// Moves the folds of line `from` and of the lines after it down by so many lines; up if `by` is
/// negative, as a number that wraps around. The survey goes with them.
void view::folding_filter::move_folds(uint32_t from, uint32_t by) {
  auto const move = [=](uint32_t& line) { line += line < from ? 0 : by; };
  auto folds = foldings.extract_sequence();
  for (folding_t& fold : folds) {
    move(fold.first);
    move(fold.last);
  }
  foldings.adopt_sequence(boost::container::ordered_unique_range, std::move(folds));
  if (!surveyed_) return;
  for (border& each : borders_) move(each.line);
  uint32_t hidden = 0;
  for (outer_fold& fold : outer_) {
    move(fold.first);
    move(fold.last);
    fold.hidden = hidden += fold.last - fold.first;
  }
}

void view::folding_filter::did_insert(text::pos const& first, text::pos const& last) {
  uint32_t const added = last.line - first.line;
  forget_marks(first.line, 0, added);
  if (added == 0 || foldings.empty()) return filter::did_insert(first, last);

  // A fold whose first or last line is split: what was inserted is to be seen.
  std::vector<folding_t> split;
  if (first.column != 0 && is_end_of_fold(first.line))
    for (folding_t const& fold : foldings)
      if (fold.first == first.line || fold.last == first.line) {
        touched.push_back({fold, {}});
        split.push_back({fold.first + (fold.first == first.line ? added : 0), fold.last + added});
      }
  move_folds(first.line, added);
  filter::did_insert(first, last);
  unfold(split);
}

void view::folding_filter::will_erase(text::pos const& first, text::pos const& last) {
  erase_first_ = first;
  erase_last_ = last;
  if (first.line != last.line)
    unfold_where([&](folding_t const& fold) {
      bool const apart = last.line <= fold.first || fold.last < first.line;
      bool const inside = fold.first < first.line && last.line <= fold.last;
      bool const around = first.line <= fold.first && fold.last < last.line;
      return !apart && !inside && !around;
    });
  // What stands on the line that joins the first one would be split from it again.
  if (first.line != last.line && first.column != 0 && is_end_of_fold(last.line))
    for (folding_t const& fold : foldings)
      if (fold.first == last.line || fold.last == last.line)
        touched.push_back(
            {fold,
             folding_t{fold.first < last.line ? fold.first : fold.first - last.line + first.line,
                       fold.last - last.line + first.line}});
  filter::will_erase(first, last);
}

void view::folding_filter::did_erase(text::iterator const& pos, int length) {
  uint32_t const first = erase_first_.line, last = erase_last_.line;
  forget_marks(first, last - first, 0);
  if (first != last && !foldings.empty()) {
    // Those that begin there also end there: others have been unfolded.
    auto const begin = foldings.lower_bound({first, 0});
    auto const end = foldings.lower_bound({last, 0});
    if (begin != end) forget_survey();
    for (auto fold = begin; fold != end; ++fold) touched.push_back({*fold, {}});
    foldings.erase(begin, end);
    move_folds(last, first - last);
  }
  filter::did_erase(pos, length);
}

// By the rules of the functions above, for each edit that changes the number of lines. What happens
// to a fold depends on its first and its last line alone, so those are moved one by one, from the
// last edit to the first.
void view::folding_filter::will_replace(text::replacement const& what) {
  struct fold_end {
    uint32_t line;
    size_t fold;
    bool is_last;
  };
  std::vector<folding_t> folds(foldings.begin(), foldings.end());
  std::vector<fold_end> ends;
  for (size_t i = 0; i < folds.size(); ++i) {
    ends.push_back({folds[i].first, i, false});
    ends.push_back({folds[i].last, i, true});
  }
  std::sort(ends.begin(), ends.end(),
            [](fold_end const& a, fold_end const& b) { return a.line < b.line; });
  std::vector<bool> is_lost(folds.size());
  uint32_t moved = 0;  // by the edits so far; `moved_ends` lack it
  std::vector<fold_end> moved_ends;
  // The last ones of those stand on the line where the last edit begins, which the next may end on.
  size_t meeting = 0;
  uint32_t meeting_line = 0;
  auto const edits = ends.empty() ? std::vector<replacement::edit>() : what.edits();
  for (auto edit = edits.rbegin(); edit != edits.rend(); ++edit) {
    uint32_t const first = edit->first.line, last = edit->last.line;
    uint32_t const erased = last - first, added = edit->new_last.line - first;
    if (erased == 0 && added == 0) continue;
    if (meeting_line != last) meeting = 0;
    for (; !ends.empty() && ends.back().line >= last; ends.pop_back()) {
      fold_end const& end = ends.back();
      meeting = end.line == last ? meeting + 1 : 0;
      moved_ends.push_back({end.line - moved, end.fold, end.is_last});
    }
    for (; !ends.empty() && ends.back().line >= first; ends.pop_back())
      is_lost[ends.back().fold] = true;
    if (added != 0 && edit->first.column != 0)
      for (size_t i = 1; i <= meeting; ++i) is_lost[moved_ends[moved_ends.size() - i].fold] = true;
    if (added != 0) meeting = 0;
    moved += added - erased;
    meeting_line = first;
  }
  for (fold_end const& end : moved_ends)
    (end.is_last ? folds[end.fold].last : folds[end.fold].first) = end.line + moved;
  kept_.clear();
  for (size_t i = 0; i < folds.size(); ++i)
    if (!is_lost[i] && folds[i].first < folds[i].last) kept_.insert(folds[i]);
  filter::will_replace(what);
}

void view::folding_filter::did_replace(text::replacement const& what) {
  filter::did_replace(what);
  if (foldings == kept_) return;
  foldings.swap(kept_);
  lay_out_again();
}

}  // namespace text
