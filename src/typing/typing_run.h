#pragma once

#include "text/char_types.h"
#include "text/views/selection.h"

#include <cstdint>
#include <optional>

namespace text {
class view;
}

namespace typing {

enum class key_kind { insertion, deletion_backward, deletion_forward };

/// The keys that undo takes back at once: those typed one after the other at one place, up to the
/// start of a word, to a key of another kind or to a pause. Each key is a step of its own in the
/// undo manager, which is told where a step continues the run of the one before it.
class typing_run {
 public:
  static constexpr double longest_pause = 1;  // seconds

  /// The next key begins a run: something else was done that may leave no trace in the text.
  void end() { last_.reset(); }

 private:
  friend class typed_key;
  struct left_state {
    key_kind kind;
    std::uint32_t memento;
    text::selection selection;
    double time;  // platform::run_loop::now
  };
  std::optional<left_state> last_;
};

/// A key's step, from before its group of undo is opened to after that is closed.
class typed_key {
 public:
  /// `typed` is what an insertion inserts; only borrowed for the call.
  typed_key(typing_run& run, text::view& view, key_kind kind, text::unit_view typed = {});
  ~typed_key();
  typed_key(typed_key const&) = delete;
  typed_key& operator=(typed_key const&) = delete;

 private:
  bool continues(text::unit_view typed) const;

  typing_run& run_;
  text::view& view_;
  key_kind const kind_;
  std::uint32_t const memento_;
  bool const continues_;
};

}  // namespace typing
