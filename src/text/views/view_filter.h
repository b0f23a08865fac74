#pragma once

#include "text/views/selection_history.h"
#include "text/views/view.h"

namespace text {

class view::storage_filter : public filter {
 public:
  using filter::did_insert;
  using filter::will_erase;

  explicit storage_filter(text::view& view);
  ~storage_filter() override;

  void did_insert(text::iterator const& first, text::iterator const& last) override;
  void will_erase(text::iterator const& first, text::iterator const& last) override;
  void did_erase(text::iterator const& pos, int length) override;
  text::iterator begin(unsigned long line) const override;
  text::iterator end(unsigned long line) const override;
  size_t lines() const override;

 private:
  text::view& view_;
  text::storage& storage_;
  storage_detail::observer_id observer_id;
};

class view::view_filter : public filter {
 public:
  using filter::did_insert;
  using filter::will_erase;

  explicit view_filter(text::view& view) : view_(view) {}

  void will_change_memento(unsigned long from, unsigned long to) override;
  void did_change_memento(unsigned long from, unsigned long to) override;
  void will_insert(text::iterator const& pos, int length) override;
  void did_insert(text::pos const& first, text::pos const& last) override;
  void will_replace(text::replacement const& what) override;
  void will_erase(text::pos const& first, text::pos const& last) override;
  void did_erase(text::iterator const& pos, int length) override;

  selection_history selections;

 private:
  void refresh(text::pos const& first, text::pos const& last);
  void park_caret();

  text::view& view_;
  /// The width that was forgotten because the widest line is about to grow, or `unknown_columns`.
  unsigned least_columns_ = unknown_columns;
};

}  // namespace text
