#pragma once

#include "platform/run_loop.h"
#include "search/patient_work.h"
#include "search/text_query.h"
#include "text/pos.h"
#include "text/text_block.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace text {
class view;
struct storage;
}  // namespace text

namespace search {

using text_range = std::pair<text::pos, text::pos>;

/// Where all matches of a text begin. Eight bytes a match, twelve of a pattern.
struct all_places {
  static constexpr std::size_t most = 5'000'000;
  static constexpr std::size_t none = ~std::size_t{0};

  std::vector<text::pos> starts;       ///< in order
  std::vector<std::uint32_t> lengths;  ///< in units; empty if all have `common_length`
  std::uint32_t common_length = 0;
  /// Why there may be more: too many of them, or a pattern that takes too long.
  enum class stop { none, many, slow } stopped = stop::none;

  std::size_t length(std::size_t index) const {
    return lengths.empty() ? common_length : lengths[index];
  }
  /// The first one from `at` on, or the first of all where none is; none if there is none at all.
  std::size_t next(text::pos at) const;
  /// The one that is selected; `none` if it isn't one.
  std::size_t selected(text::view const& view) const;
};

/// "3 of 69", "1,234 matches", "No matches"; a + where there may be more.
std::string count_text(all_places const& places, std::size_t current);

/// Of a scroll bar `height` pixels high, those pixels at which it has a mark, in order. What is
/// scrolled are `rows` rows, if that is more than the view has. Takes time in proportion to the
/// height, however many matches there are.
std::vector<std::size_t> scroll_ticks(text::view& view, all_places const& places, std::size_t rows,
                                      std::size_t height);

/// Finds all matches of a text on another thread, so that the main thread never waits: what it has
/// to copy for that, it copies in pieces. Main thread only.
class match_survey {
 public:
  /// `done` is called when there is a new result, perhaps within `start`.
  explicit match_survey(std::function<void()> done) : done_(std::move(done)) {}

  /// Ends the one before. The result is that of the former text until this one is done.
  void start(text::view& view, std::shared_ptr<text_query const> query,
             std::optional<text_range> within);
  /// Ends it; what the one before has found stays.
  void stop();
  /// Ends it, and there is no result any more.
  void clear();
  /// Whether this is the text, in the state that it had at the start.
  bool is_of(text::storage const& storage) const;
  bool is_under_way() const { return timer_ != nullptr; }
  std::shared_ptr<all_places const> result() const { return result_; }

 private:
  struct task;
  struct copied_text;

  void copy_piece();
  void search();
  void poll();
  void finish();

  std::function<void()> done_;
  text::storage* storage_ = nullptr;  // null unless a view has it for certain
  std::uint32_t memento_ = 0;
  std::optional<text_range> within_;
  std::shared_ptr<text_query const> query_;
  std::shared_ptr<copied_text> copy_;
  std::shared_ptr<task> task_;
  std::unique_ptr<work_aside> work_;
  std::unique_ptr<platform::timer> timer_;
  std::shared_ptr<all_places const> result_;
};

}  // namespace search
