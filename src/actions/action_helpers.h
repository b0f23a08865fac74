#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "text/views/view.h"

namespace actions {

/// Function objects from which actions are built. All are called with a `text::view*`.

/// `F` and then `G`, whose result counts.
template <typename F, typename G>
class sequence_helper {
 public:
  sequence_helper(F first, G second) : first_(std::move(first)), second_(std::move(second)) {}
  decltype(auto) operator()(text::view* view) const {
    std::invoke(first_, view);
    return std::invoke(second_, view);
  }

 private:
  F first_;
  G second_;
};

/// When nothing is selected, has `F` work on what `select` selects and leaves only a caret, also
/// when `F` throws. Gives the result of `F`.
template <typename F>
class cond_select_line_helper {
 public:
  cond_select_line_helper(F function, void (*select)(text::view*))
      : function_(std::move(function)), select_(select) {}
  decltype(auto) operator()(text::view* view) const {
    deselect_at_end const scope(*view);
    if (scope.active) select_(view);
    return std::invoke(function_, view);
  }

 private:
  struct deselect_at_end {
    explicit deselect_at_end(text::view& v) : view(v), active(v.selection.empty()) {}
    ~deselect_at_end() {
      if (active) view.selection.set_caret(text::view_iterator(view.selection.current_mark));
    }
    deselect_at_end(deselect_at_end const&) = delete;
    deselect_at_end& operator=(deselect_at_end const&) = delete;
    text::view& view;
    bool active;
  };

  F function_;
  void (*select_)(text::view*);
};

/// With nothing selected `F` works on what `select` selects, and the caret stays in its line, in
/// the column where it shows.
template <typename F>
class in_place_helper {
 public:
  in_place_helper(F function, void (*select)(text::view*))
      : function_(std::move(function)), select_(select) {}
  void operator()(text::view* view) const {
    bool const has_caret = view->selection.empty();
    size_t const line = line_before_filters(view->selection.current_mark);
    size_t const column = column_before_wrap(view->selection.current_mark);
    cond_select_line_helper(function_, select_)(view);
    if (has_caret)
      view->selection.set_caret(
          iter_from_hybrid_pos(view, {line, column}, text::freehanded_t::automatic));
  }

 private:
  F function_;
  void (*select_)(text::view*);
};

/// Replaces each selected unit by what `F` makes of it.
template <typename F>
class bind_view_transform_helper {
 public:
  explicit bind_view_transform_helper(F function) : function_(std::move(function)) {}
  void operator()(text::view* view) const {
    std::vector<text::char_t> units(view->selection.begin(), view->selection.end());
    for (auto& unit : units) unit = std::invoke(function_, unit);
    view->replace_selection(units.begin(), units.end());
  }

 private:
  F function_;
};

/// Calls the setter with the opposite of what the getter gives.
template <typename G, typename S>
class toogle_option_helper {
 public:
  toogle_option_helper(G getter, S setter) : getter_(getter), setter_(setter) {}
  void operator()(text::view* view) const {
    std::invoke(setter_, view, !std::invoke(getter_, view));
  }

 private:
  G getter_;
  S setter_;
};

/// The first text where the getter is true, else the second.
template <typename G>
class option_title_helper {
 public:
  option_title_helper(G getter, std::string when_true, std::string when_false)
      : getter_(getter), when_true_(std::move(when_true)), when_false_(std::move(when_false)) {}
  std::string operator()(text::view* view) const {
    return std::invoke(getter_, view) ? when_true_ : when_false_;
  }

 private:
  G getter_;
  std::string when_true_;
  std::string when_false_;
};

}  // namespace actions
