#pragma once

#include <cstdint>
#include <map>
#include <optional>

#include "snippets/snippet.h"
#include "text/views/view.h"

namespace snippet {

/// A snippet in the text of a view, from its insertion until its last field is reached or something
/// else is edited. Edits of the current field go to the mirrors, right after the user's and in the
/// same step of undo.
///
/// Which snippet runs is tied to the state of the text: undo and redo bring back the fields as they
/// were, before the insertion none runs, and an edit from there on, or outside the current field,
/// ends it for good. Where the view repeats edits in other lines, as in columns, the same snippet
/// stands there too: what is filled in here, and what that writes in mirrors, is repeated there by
/// the view. The view owns it as its snippet_observer. Main thread only.
class session : public text::snippet_observer_t {
 public:
  /// `first` is where the snippet's text stands, as it was inserted.
  session(text::view& view, text::iterator const& first, snippet_t inserted);

  bool is_running() const override { return state() != nullptr; }
  text::iterator_observer::subset active_tab_stop() const override;
  /// Null while none is running. Good until the text changes.
  snippet_t const* state() const;

  /// Go to another field; is_running() must hold. The selection stays.
  void next();
  void previous();

  void will_change_memento(unsigned long from, unsigned long to) override;
  void did_change_memento(unsigned long from, unsigned long to) override;
  void will_insert(text::iterator const& pos, int length) override;
  void will_erase(text::iterator const& first, text::iterator const& last) override;
  void will_replace(text::replacement const& what) override;
  void repeat_edits() override;

 private:
  class view_storage;
  struct edit {
    std::uint32_t memento;  // of the text before it
    std::size_t offset, erased, inserted;
  };
  /// So many stops are kept in all states together; the oldest states go first.
  static constexpr std::size_t max_kept_stops = 1'000'000;

  snippet_t* state();
  bool is_users_edit() const;
  void look_where_repeating_begins();
  void will_change(text::pos from);
  void note(text::iterator const& from, std::size_t erased, std::size_t inserted);
  void keep(snippet_t changed);
  void end();

  text::view& view_;
  text::pos anchor_;
  std::map<std::uint32_t, snippet_t> states_;  // by the memento of the text
  std::size_t kept_stops_ = 0;
  std::uint32_t max_memento_ = 0;
  std::optional<edit> edit_;
  std::size_t length_ = 0;  ///< up to the end of the last stop, while an edit is carried to mirrors
  text::pos end_;           ///< of that, while edits are repeated
  std::optional<std::uint32_t> repeated_;  ///< the state before that, if it wants no more of us
  bool is_undoing_ = false, is_writing_ = false;
};

}  // namespace snippet
