#pragma once

#include "text/storage_observer.h"

namespace text {

/// One layer between the lines of a storage and the rows of the screen. Filters form a chain from
/// the storage upward. Each has coordinates of its own (a line and a unit column), which it maps
/// from those of the filter below, and passes each event on to the filter above in its own
/// coordinates.
///
/// The base is the layer that changes nothing; a filter overrides what it does otherwise. Main
/// thread, under the storage's lock for insertions and erasures.
class filter : public storage_observer {
 public:
  void will_change_memento(unsigned long from, unsigned long to) override;
  void did_change_memento(unsigned long from, unsigned long to) override;
  void will_insert(text::iterator const& pos, int length) override;
  /// In storage coordinates; only the lowest filter is notified of these.
  void did_insert(text::iterator const& first, text::iterator const& last) override;
  void will_erase(text::iterator const& first, text::iterator const& last) override;
  void did_erase(text::iterator const& pos, int length) override;
  /// In storage coordinates.
  void will_replace(text::replacement const& what) override;
  void did_replace(text::replacement const& what) override;

  /// From this filter's coordinates to those of the filter below, and the other way.
  virtual text::pos in_storage(text::pos const& at) const;
  virtual text::pos in_view(text::pos const& at) const;

  /// Where a line of this filter begins and ends in the storage.
  virtual text::iterator begin(unsigned long line) const;
  virtual text::iterator end(unsigned long line) const;
  virtual size_t size(unsigned long line) const;
  virtual size_t lines() const;

  /// In the coordinates of the filter below.
  virtual void did_insert(text::pos const& first, text::pos const& last);
  virtual void will_erase(text::pos const& first, text::pos const& last);

  filter* toward_storage = nullptr;
  filter* toward_view = nullptr;
};

/// A filter that the user turns on and off while the view lives.
class switchable_filter : public filter {
 public:
  /// Computes its state again for the whole text; called after it has entered the chain.
  virtual void reset() = 0;
  /// Drops its state; called after it has left the chain.
  virtual void disable() = 0;
};

}  // namespace text
