#pragma once

#include <memory>
#include <string>
#include <vector>

#include "snippets/storage.h"
#include "snippets/tab_stop.h"

namespace snippet {

/// A snippet that is being filled in: which field is the current one, and where all fields and
/// mirrors stand. A value: a copy is the state at a moment, and taking it back is undoing. The text
/// is elsewhere (see storage_t) and passed to what writes mirrors.
///
/// An edit in the current field moves what follows it, takes out the fields nested in it, and is
/// then carried to the mirrors of the field and of the fields round it, and on from a mirror to the
/// mirrors of the field that it stands in. No field stands in a mirror of itself, so this ends.
/// Takes time in proportion to the number of stops for each field whose text changes.
///
/// Tests compare it with a model that expands everything again after each edit.
class snippet_t {
 public:
  /// `stops` in the order in which they begin, outer ones first, each index with one field at most;
  /// `text` is what stands in them before mirrors are written. Goes to the first field.
  snippet_t(std::vector<tab_stop_t> stops, std::u16string text, std::string indent);

  /// The text to insert, with all mirrors written.
  std::u16string const& text() const { return *text_; }
  std::vector<tab_stop_t> const& stops() const { return stops_; }

  tab_stop_t const& current() const { return stops_[current_]; }
  /// Whether the current field is the last one, with which a snippet ends.
  bool is_at_end() const;
  void begin();
  /// Stay where they are at the last and the first field.
  void next();
  void previous();
  /// Which field is the current one, from 1, and how many there are, the end not counted.
  std::pair<std::size_t, std::size_t> progress() const;

  /// What is wrong with a transformation of the present texts, which therefore stay as they are;
  /// empty if nothing is.
  std::string const& fault() const { return fault_; }

  /// After an edit of the current field: at `offset`, `erased` units gave way to `inserted` ones.
  void did_replace(storage_t& storage, std::size_t offset, std::size_t erased,
                   std::size_t inserted);
  /// Up to the end of the last stop.
  std::size_t length() const;
  bool holds(std::size_t from, std::size_t to) const {
    return current().first.offset <= from && to <= current().last.offset;
  }

 private:
  struct edit {
    std::size_t stop;  // whose whole text is replaced
    std::size_t length;
  };

  std::vector<std::size_t> fields() const;
  bool is_inside(std::size_t stop, std::size_t outer) const;
  std::vector<bool> remove_children(std::size_t stop);
  void mark_with_outer(std::size_t stop, std::vector<bool>& changed) const;
  void shift(std::vector<edit> const& edits);
  void update_mirrors(storage_t& storage, std::vector<bool> changed);
  std::u16string text_for_mirror(tab_stop_t const& mirror, std::u16string const& source);

  std::vector<tab_stop_t> stops_;
  std::size_t current_ = 0;
  std::string fault_;
  /// What never changes: shared by all copies.
  std::shared_ptr<std::u16string const> text_;
  std::shared_ptr<std::string const> indent_;
  /// The places in the order of their ranks: twice a stop's number, plus 1 for its end.
  std::shared_ptr<std::vector<std::size_t> const> places_;
  /// The stops of each index, and the indices so that one comes after those that stand in it.
  std::shared_ptr<std::vector<std::vector<std::size_t>> const> groups_;
};

}  // namespace snippet
