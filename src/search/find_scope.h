#pragma once

#include "search/match_survey.h"
#include "text/iterator_observer.h"
#include "text/moved_positions.h"
#include "text/storage.h"

namespace search {

/// A stretch of text that is all that is searched, while the text changes in it and around it, by
/// undo too. It must go before the storage does.
class find_scope final : private text::storage_observer {
 public:
  find_scope(text::storage& storage, text_range range)
      : storage_(storage), range_(range.first, range.second) {
    storage_.add_observer(this);
  }
  ~find_scope() override { storage_.remove_observer(this); }
  find_scope(find_scope const&) = delete;
  find_scope& operator=(find_scope const&) = delete;

  text_range range() const { return {range_.first(), range_.last()}; }

 private:
  void did_insert(text::iterator const& first, text::iterator const& last) override {
    if (!replacing_) text::adjust_for_insert(first.pos(), last.pos(), range_);
  }
  void will_erase(text::iterator const& first, text::iterator const& last) override {
    if (!replacing_) text::adjust_for_erase(first.pos(), last.pos(), range_);
  }
  void will_replace(text::replacement const& what) override {
    replacing_ = true;
    text::moved_positions const moved(what.edits());
    range_ = {moved.staying(range_.first()), moved.pushed(range_.last())};
  }
  void did_replace(text::replacement const&) override { replacing_ = false; }

  text::storage& storage_;
  text::iterator_observer::subset range_;
  bool replacing_ = false;
};

}  // namespace search
