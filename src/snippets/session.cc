#include "snippets/session.h"

#include "platform/scoped_value.h"
#include "text/convert_tabs.h"
#include "text/tab_width.h"

namespace snippet {

/// The document's text from the snippet's start on.
class session::view_storage : public storage_t {
 public:
  /// `live` for one that is written to.
  view_storage(text::view& view, text::pos anchor, session* live = nullptr)
      : view_(view), anchor_(anchor), live_(live) {}

  text::iterator at(std::size_t offset) const {
    return text::iterator(anchor_, view_.storage) + static_cast<std::ptrdiff_t>(offset);
  }

  std::u16string data(std::size_t from, std::size_t to) const override {
    if (has_ended()) return {};
    std::vector<text::char_t> units;
    text::append_units(at(from), at(to), units);
    return {units.begin(), units.end()};
  }

  std::size_t replace(std::size_t from, std::size_t to, std::u16string_view text) override {
    if (has_ended()) return text.size();
    text::iterator const first = at(from);
    live_->length_ -= to - from;
    view_.storage->erase(first, at(to));
    if (has_ended()) return text.size();
    std::u16string expanded;
    if (view_.treats_spaces_as_tabs && text.find(u'\t') != text.npos) {
      expanded = expanded_tabs(first, text);
      text = expanded;
    }
    live_->length_ += text.size();
    view_.storage->insert(first, text.begin(), text.end());
    return text.size();
  }

 private:
  /// An edit that was repeated in the snippet itself ends it at once.
  bool has_ended() const { return live_ != nullptr && live_->states_.empty(); }

  /// As wide as they are where they will stand.
  std::u16string expanded_tabs(text::iterator const& first, std::u16string_view text) const {
    std::u16string result;
    std::size_t column =
        text::expanded_width(view_.storage->line_units(first.line).substr(0, first.column), 0,
                             text::tab_stops(view_.tab_size));
    while (!text.empty()) {
      std::size_t const length = std::min(text.find(u'\n'), text.size() - 1) + 1;
      auto const line = text.substr(0, length);
      auto const expanded =
          text::convert_tabs_to_spaces(line, column, text::tab_stops(view_.tab_size));
      result.append(expanded.data(), expanded.size());
      text.remove_prefix(length);
      column = 0;
    }
    return result;
  }

  text::view& view_;
  text::pos anchor_;
  session* live_;
};

session::session(text::view& view, text::iterator const& first, snippet_t inserted)
    : view_(view), anchor_(first.pos()), max_memento_(view.storage->current_memento) {
  keep(std::move(inserted));
}

snippet_t const* session::state() const {
  auto const found = states_.find(view_.storage->current_memento);
  return found == states_.end() ? nullptr : &found->second;
}

snippet_t* session::state() {
  return const_cast<snippet_t*>(std::as_const(*this).state());
}

text::iterator_observer::subset session::active_tab_stop() const {
  view_storage const text(view_, anchor_);
  tab_stop_t const& stop = state()->current();
  return {text.at(stop.first.offset), text.at(stop.last.offset)};
}

void session::next() {
  state()->next();
}

void session::previous() {
  state()->previous();
}

void session::end() {
  states_.clear();
  kept_stops_ = 0;
}

void session::keep(snippet_t changed) {
  kept_stops_ += changed.stops().size();
  states_.insert_or_assign(view_.storage->current_memento, std::move(changed));
  while (kept_stops_ > max_kept_stops && states_.size() > 1) {
    kept_stops_ -= states_.begin()->second.stops().size();
    states_.erase(states_.begin());
  }
}

bool session::is_users_edit() const {
  return !is_undoing_ && !is_writing_ && !view_.storage->is_repeating();
}

void session::will_change_memento(unsigned long /*from*/, unsigned long to) {
  // New numbers exceed all old ones, so one that was seen before is undo or redo.
  is_undoing_ = max_memento_ >= to;
  max_memento_ = std::max(max_memento_, static_cast<std::uint32_t>(to));
  repeated_.reset();
  if (view_.storage->is_repeating()) return look_where_repeating_begins();
  // What begins where none runs leads to states that no undo of the snippet's comes to.
  if (is_users_edit() && !is_running()) end();
}

void session::look_where_repeating_begins() {
  snippet_t const* const running = state();
  if (running != nullptr && !is_writing_) {
    length_ = running->length();
    repeated_ = view_.storage->current_memento;
  }
  if (!states_.empty()) end_ = view_storage(view_, anchor_).at(length_).pos();
}

/// What is repeated in lines after the snippet moves none of its places.
void session::will_change(text::pos from) {
  if (view_.storage->is_repeating() && from <= end_) end();
}

void session::note(text::iterator const& from, std::size_t erased, std::size_t inserted) {
  will_change(from.pos());
  snippet_t const* const running = state();
  if (!is_users_edit() || running == nullptr) return;
  edit_.reset();
  if (from.pos() < anchor_) return end();
  text::iterator const start(anchor_, view_.storage);
  auto const offset = static_cast<std::size_t>(from - start);
  if (!running->holds(offset, offset + erased)) return end();
  edit_ = edit{view_.storage->current_memento, offset, erased, inserted};
  length_ = running->length() + inserted - erased;
}

void session::will_insert(text::iterator const& pos, int length) {
  note(pos, 0, static_cast<std::size_t>(length));
}

void session::will_erase(text::iterator const& first, text::iterator const& last) {
  note(first, static_cast<std::size_t>(last - first), 0);
}

void session::will_replace(text::replacement const& what) {
  will_change(what.first);
  if (is_users_edit()) end();
}

void session::did_change_memento(unsigned long /*from*/, unsigned long /*to*/) {
  is_undoing_ = false;
  auto const from = repeated_ ? states_.find(*repeated_) : states_.end();
  if (from != states_.end()) keep(snippet_t(from->second));
}

void session::repeat_edits() {
  if (is_writing_ || !edit_) return;
  edit const done = *std::exchange(edit_, std::nullopt);
  auto const before = states_.find(done.memento);
  if (before == states_.end()) return;
  snippet_t changed = before->second;
  view_storage text(view_, anchor_, this);
  {
    platform::scoped_value const writing(is_writing_, true);
    changed.did_replace(text, done.offset, done.erased, done.inserted);
  }
  if (!states_.empty()) keep(std::move(changed));
}

}  // namespace snippet
