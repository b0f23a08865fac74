#include "text/views/mark_history.h"

#include <algorithm>
#include <utility>

#include "text/replacement.h"
#include "text/unit_search.h"
#include "text/views/bookmark_filter.h"

namespace text {

view::mark_history::mark_history(text::view& view) : view_(view) {
  view.storage->add_observer(this);
}

view::mark_history::~mark_history() {
  view_.storage->remove_observer(this);
}

view::mark_history::step view::mark_history::step_between(unsigned long from, unsigned long to) {
  return {static_cast<uint32_t>(std::max(from, to)), from < to};
}

view::mark_history::bookmarks view::mark_history::bookmarks_of(uint32_t first,
                                                               uint32_t last) const {
  bookmarks found;
  line_marks const& marks = view_.bookmark_filter->marks;
  for (auto at = marks.contains(first) ? marks.find(first) : marks.next(first);
       at && at->line <= last; at = marks.next(at->line))
    found.push_back(*at);
  return found;
}

void view::mark_history::set_bookmarks(uint32_t first, uint32_t last, bookmarks const& marks) {
  for (text::pos const at : bookmarks_of(first, last)) view_.set_bookmark({at.line, 0}, false);
  for (text::pos const at : marks) view_.set_bookmark(at, true);
}

bool view::mark_history::losses::empty() const {
  return lines.empty() && touched.empty() && all_before.empty() && opened.empty() &&
         opened_after.empty() && closed.empty() && closed_after.empty();
}

void view::mark_history::will_begin_action() {
  walked_to_.reset();
  made_.reset();
  acts_ = true;
}

void view::mark_history::did_end_action() {
  if (made_ && !opened_.empty()) {
    opened_folds& after = steps_[*made_].opened_after;
    after.insert(after.end(), opened_.begin(), opened_.end());
  }
  opened_.clear();
  acts_ = false;
}

void view::mark_history::continue_action() {
  made_ = step_between(view_.storage->previous_memento, view_.storage->current_memento);
}

void view::mark_history::will_open(folding_filter::folding_t const& fold) {
  if (walked_to_ == view_.storage->current_memento)
    shown_.push_back({fold, {}});
  else if (acts_)
    opened_.push_back(fold);
}

void view::mark_history::close(folds const& opened) {
  opened_folds lines;
  for (auto const& fold : opened) lines.push_back(fold.was);
  view_.folding_filter->fold_again(lines);
}

void view::mark_history::close(opened_folds const& opened) {
  view_.folding_filter->fold_again(opened);
}

void view::mark_history::open_again(opened_folds const& closed) {
  view_.folding_filter->open_again(closed);
}

void view::mark_history::will_change_memento(unsigned long from, unsigned long to) {
  walks_ = to < view_.storage->next_memento;
  if (walks_) close(shown_);
  shown_.clear();
  if (!lost_.empty()) lost_ = {};
  auto opened = std::exchange(opened_, {});
  if (walks_)
    made_.reset();
  else
    lost_.opened = std::move(opened);
  if (!returned_.empty()) returned_ = {};
  view_.folding_filter->touched.clear();
  if (!walks_)
    steps_.erase(steps_.lower_bound({static_cast<uint32_t>(from) + 1, false}),
                 steps_.lower_bound({static_cast<uint32_t>(to), false}));
  if (auto const back = steps_.find(step_between(to, from)); back != steps_.end()) {
    returned_ = std::move(back->second);
    steps_.erase(back);
    std::erase_if(returned_.lines, [&](exchanged_lines const& lines) {
      return bookmarks_of(lines.first, lines.new_last) != lines.after;
    });
    std::erase_if(returned_.touched, [&](folding_filter::touched_fold const& fold) {
      return fold.now && !view_.folding_filter->foldings.contains(*fold.now);
    });
    close(returned_.opened_after);
    open_again(returned_.closed);
    if (returned_.all_after != view_.folding_filter->foldings) returned_.all_before.clear();
    lost_.closed = returned_.opened;
    lost_.closed_after = returned_.opened_after;
    lost_.opened = returned_.closed;
    lost_.opened_after = returned_.closed_after;
  }
}

void view::mark_history::note_lines(uint32_t first, uint32_t last, uint32_t new_last) {
  bool const known = !lost_.lines.empty() && lost_.lines.back().first == first;
  if (!known) lost_.lines.push_back({first, last, new_last, bookmarks_of(first, last), {}});
}

void view::mark_history::will_erase(text::iterator const& first, text::iterator const& last) {
  if (replacing_) return;
  auto const marks = bookmarks_of(first.line, last.line);
  // Lines that join keep one of their bookmarks, wherever these stand.
  bool const loses = marks.size() > 1 || std::any_of(marks.begin(), marks.end(), [&](text::pos at) {
                       return first.pos() < at && at <= last.pos();
                     });
  if (loses) note_lines(first.line, last.line, first.line);
}

void view::mark_history::will_replace(text::replacement const& what) {
  replacing_ = true;
  uint32_t const first = what.first.line;
  auto const lines = [](unit_view units) {
    return static_cast<uint32_t>(count_unit(units, u'\n'));
  };
  uint32_t const last = first + lines(what.old_text.units);
  if (!bookmarks_of(first, last).empty())
    note_lines(first, last, first + lines(what.new_text.units));
  lost_.all_before = view_.folding_filter->foldings;
}

void view::mark_history::did_replace(text::replacement const&) {
  replacing_ = false;
}

void view::mark_history::did_change_memento(unsigned long from, unsigned long to) {
  for (exchanged_lines const& lines : returned_.lines)
    set_bookmarks(lines.first, lines.last, lines.before);
  auto& filter = *view_.folding_filter;
  auto touched = std::exchange(filter.touched, {});
  if (lost_.all_before.empty())
    lost_.touched = std::move(touched);
  else
    lost_.all_after = filter.foldings;
  close(returned_.touched);
  if (!returned_.all_before.empty()) filter.restore_all(returned_.all_before);
  close(returned_.opened);
  open_again(returned_.closed_after);
  for (exchanged_lines& lines : lost_.lines)
    lines.after = bookmarks_of(lines.first, lines.new_last);
  if (!lost_.empty()) steps_[step_between(from, to)] = std::move(lost_);
  if (walks_)
    walked_to_ = static_cast<uint32_t>(to);
  else
    made_ = step_between(from, to);
}

}  // namespace text
