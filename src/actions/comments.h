#pragma once

#include <string>
#include <vector>

#include "text/views/view.h"

namespace actions {

/// What a comment begins and ends with; one without an end goes to the end of its line.
struct comment_marker {
  std::u16string start, end;
};

/// Makes the lines that the selection touches comments, or text again if all of them are comments.
/// Markers that go to the line's end come first, and stand in one column on each line with text:
/// where some lines are comments all get another marker, so that doing it twice changes nothing.
/// Other markers enclose the selected part of a line, or all the lines; what would end the comment
/// inside of it gets a blank, which goes with the markers. The selection stays on its text. False,
/// without a change, if there is no marker.
bool toggle_comments(text::view& view, std::vector<comment_marker> const& markers);

}  // namespace actions
