#pragma once

#include "text/iterator.h"

namespace text {

struct replacement;

/// A listener to the changes of a storage, known as `storage::observer`. On each change the calls
/// come in the order of `will_change_memento`, `will_insert` or `will_erase`, `did_insert` or
/// `did_erase`, `did_change_memento`; each group goes to all observers, in the order in which they
/// were added, before the next begins; a change of many places has several of the middle ones. No
/// observer changes the text in these calls. The calls for insertion and erasure run under the
/// storage's lock, those for mementos outside it. All come on the main thread.
class storage_observer {
 public:
  virtual ~storage_observer() = default;

  virtual void will_change_memento(unsigned long /*from*/, unsigned long /*to*/) {}
  /// The storage's numbers have changed already.
  virtual void did_change_memento(unsigned long /*from*/, unsigned long /*to*/) {}
  virtual void will_insert(text::iterator const& /*pos*/, int /*length*/) {}
  virtual void did_insert(text::iterator const& /*first*/, text::iterator const& /*last*/) {}
  virtual void will_erase(text::iterator const& /*first*/, text::iterator const& /*last*/) {}
  virtual void did_erase(text::iterator const& /*pos*/, int /*length*/) {}

  /// Many ranges of a stretch are about to be replaced. To spare a million calls the whole stretch
  /// is then erased and inserted in its new form, with the calls for that, and `did_replace` comes
  /// last. Observers that keep positions take them from the ranges and ignore the calls in between.
  virtual void will_replace(text::replacement const& /*what*/) {}
  virtual void did_replace(text::replacement const& /*what*/) {}

  /// All observers have been notified of a change that is neither undo nor redo nor a repetition.
  /// Edits are repeated elsewhere here, by `storage::repeat`.
  virtual void repeat_edits() {}
};

}  // namespace text
