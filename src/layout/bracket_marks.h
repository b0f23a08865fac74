#pragma once

#include "layout/bracket_search.h"
#include "platform/geometry.h"
#include "platform/run_loop.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace layout {
class laid_out_view;

/// The bracket that touches the caret of a view, and its partner. What is near is found at once;
/// for what is further away the text is searched in slices while nothing else happens, up to some
/// millions of units, beyond which there is no partner. Main thread only.
class bracket_marks {
 public:
  using pairs_function = std::function<std::vector<styles::unit_pair>()>;

  /// The pairs are asked for where a unit at the caret may belong to one. The view must outlive
  /// this.
  bracket_marks(laid_out_view const& view, pairs_function pairs);
  ~bracket_marks();

  /// Caret, text or scopes may be others now, or this is `wanted` or not any more: looks again, and
  /// has what changes drawn.
  void follow(bool wanted);
  /// Forgets the marks and has nothing drawn; to be called when the view shows another document, or
  /// none.
  void reset();

  using place_pair = std::pair<text::pos, text::pos>;
  /// The two places, in either order, of the text as it is now.
  std::optional<place_pair> places() const;
  /// Whether a search is under way.
  bool is_searching() const { return search_ != nullptr; }

 private:
  struct bracket {
    text::pos at;
    styles::unit_pair pair;
  };
  std::optional<bracket> bracket_at_caret() const;
  bool is_code(text::pos const& at);
  void begin(bracket const& at);
  void go_on(std::size_t units);
  void show(std::optional<place_pair> const& found);

  laid_out_view const& view_;
  pairs_function pairs_;
  text::pos searched_from_;
  std::unique_ptr<bracket_search> search_;
  std::unique_ptr<platform::timer> timer_;
  std::optional<place_pair> found_;
  std::vector<platform::rect> areas_;  // where they were when they were found
  std::uint32_t memento_ = 0;          // of the text searched
  std::vector<signed char> is_code_;   // by path, while one bracket is sought; -1 unknown
};

}  // namespace layout
