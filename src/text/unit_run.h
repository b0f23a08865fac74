#pragma once

#include <concepts>
#include <iterator>
#include <memory>
#include <type_traits>
#include <vector>

#include "text/char_types.h"
#include "text/iterator.h"

namespace text {

/// A sequence of units given by two iterators, as one contiguous run: the thin layer between the
/// templates that take any sequence and the code that does the work. Contiguous units are used
/// where they stand, so they have to outlive the run; everything else is copied, wider elements
/// narrowed to a unit each.
class unit_run {
 public:
  template <typename First, typename Last>
  unit_run(First first, Last last) {
    if constexpr (is_contiguous<First>) {
      auto const length = static_cast<size_t>(last - first);
      if (length != 0) view_ = {std::to_address(first), length};
    } else {
      if constexpr (std::is_same_v<First, text::iterator>)
        append_units(first, last, copy_);
      else
        for (; first != last; ++first) copy_.push_back(static_cast<char_t>(*first));
      view_ = {copy_.data(), copy_.size()};
    }
  }
  unit_run(unit_run const&) = delete;
  unit_run& operator=(unit_run const&) = delete;

  unit_view view() const { return view_; }
  operator unit_view() const { return view_; }

 private:
  template <typename It>
  static constexpr bool is_contiguous =
      std::contiguous_iterator<It>&& std::same_as<std::iter_value_t<It>, char_t>;

  std::vector<char_t> copy_;
  unit_view view_;
};

}  // namespace text
