#pragma once

#include "text/view.h"
#include "textview/view_find.h"

#include <cstddef>
#include <string>

/// What is to be replaced by what, and where. Strings are UTF-8.
struct replace_request {
  std::string find, replace;
  bool regular_expression = false, ignore_case = false;
  bool in_selection = false;
};

struct replace_answer : find_answer {
  std::size_t count = 0;
};

/// Replaces all matches as one change of text, and sets the selection to the changed range or the
/// caret behind the first replacement. When anything is wrong, or the search was given up or
/// cancelled, nothing is changed. Waits as the functions of view_find.h do.
replace_answer replace_all(text::view& view, replace_request const& request);

/// Counts the matches that replace_all would replace.
replace_answer count_all(text::view& view, replace_request const& request);
