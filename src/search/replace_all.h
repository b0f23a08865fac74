#pragma once

#include "search/view_find.h"
#include "text/views/view.h"

#include <cstddef>
#include <memory>
#include <string>

namespace search {

/// What is to be replaced by what, and where. Strings are UTF-8.
struct replace_request {
  std::string find, replace;
  query_options options = {};
  bool in_selection = false;
  /// All that is searched then; it is what is selected afterwards.
  std::optional<text_range> within = {};
};

struct replace_answer : find_answer {
  std::size_t count = 0;
};

struct replace_task;

/// All matches of a request. Looks for them as it is made, waiting as the functions of view_find.h
/// do; only replace() changes the text.
class all_matches {
 public:
  /// If they are `only_count`ed they can't be replaced.
  all_matches(text::view& view, replace_request const& request, bool only_count = false);
  replace_answer const& answer() const { return answer_; }

  /// Replaces them as one change of text, and sets the selection to the changed range or the caret
  /// after the first replacement. Does nothing unless they were found, as when anything is wrong,
  /// or the search was given up or cancelled. Once, and before the text changes.
  void replace();

 private:
  void search(bool only_count);

  text::view& view_;
  replace_request const request_;
  std::shared_ptr<replace_task> task_;
  text::iterator first_;  // where the text that was searched begins
  replace_answer answer_;
};

}  // namespace search
