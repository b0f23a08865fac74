#pragma once

#include "search/match_survey.h"
#include "search/text_query.h"
#include "text/views/view.h"

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace search {

/// The matches that stand in what can be seen, while the find panel is in use. Looks for them there
/// alone and for some milliseconds at most, so a slow pattern may leave some out; one that is stuck
/// in an attempt to match leaves out all.
class find_highlights {
 public:
  using match = std::pair<text::iterator, text::iterator>;
  /// Half open ranges of rows and visual columns of a view.
  struct window {
    std::size_t first_row, last_row, first_column, last_column;
    bool operator==(window const&) const = default;
  };

  /// The matches, in order, and only those `within` a stretch of the text, if there is one. Looked
  /// for again if the text, the query or what is seen has changed.
  std::vector<match> const& in_window(text::view& view, std::shared_ptr<text_query const> query,
                                      window const& seen,
                                      std::optional<text_range> within = std::nullopt);

 private:
  struct part;
  struct highlight_task;
  void search(text::view& view);
  void take(text::iterator at, part const& searched);

  std::shared_ptr<text_query const> query_;
  std::optional<text_range> within_;
  window window_{};
  std::uint32_t memento_ = 0;
  std::size_t rows_ = 0;
  std::vector<match> matches_;
};

}  // namespace search
