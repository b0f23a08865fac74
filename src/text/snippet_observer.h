#pragma once

#include "text/iterator_observer.h"

namespace text {

/// What the view needs to know of a running snippet. The floor of the snippets implements it and
/// hands it to the view, which registers it with the storage after its own observers.
class snippet_observer_t : public storage_observer {
 public:
  virtual bool is_running() const = 0;
  /// The present range of the active tab stop in the storage. Asked only while a snippet is
  /// running.
  virtual iterator_observer::subset active_tab_stop() const = 0;
};

}  // namespace text
