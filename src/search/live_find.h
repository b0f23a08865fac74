#pragma once

#include "search/match_survey.h"
#include "search/searched_view.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace search {

/// What is seen of a search in one view while it is typed: how many matches there are and which one
/// is selected, where they are along the scroll bar, and the next one selected. Main thread only.
class live_find {
 public:
  /// `changed` is called when the count may be another one.
  explicit live_find(std::function<void()> changed);

  /// Looks for the query in the view, unless that is what it does. With `select` the next match
  /// gets selected when it has been found: from where the selection began when one started to type,
  /// so that a longer text doesn't go on to the match after.
  void seek(searched_view& view, std::shared_ptr<text_query const> query, bool select);
  /// An action has ended in the view, or others have changed its text.
  void follow(searched_view& view);
  /// The view closes.
  void forget(searched_view const& view);
  void stop();

  /// Whether a match is still to be selected. It won't be then; the caret stands where it would
  /// have been looked for.
  bool takeOver(searched_view& view);

  /// What the user had selected, if what is selected now is only what was sought while typing.
  std::optional<text_range> selectionBefore(searched_view& view) const;

  /// In words; as it was before while matches are counted.
  std::string const& count() const { return count_; }
  /// Why counting ended before its time; empty if it has not.
  std::string note() const;
  std::vector<std::size_t> ticks(searched_view const& view, std::size_t rows,
                                 std::size_t height) const;

 private:
  void start();
  void surveyDone();
  void selectNext(all_places const& places);
  void updateCount();

  std::function<void()> changed_;
  match_survey survey_;
  searched_view* view_ = nullptr;
  std::shared_ptr<text_query const> query_;
  bool hasScope_ = false;
  std::unique_ptr<platform::timer> rest_;  // after a change of the text
  std::string count_;
  bool selects_ = false;
  text_range
      before_;  // what was selected when one began to type; matches are sought from its start
  std::uint32_t beforeMemento_ = 0;
  std::optional<text_range> selected_;  // by this
};

}  // namespace search
