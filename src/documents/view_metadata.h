#pragma once

#include <string>

#include "path/file_version.h"
#include "plist/value.h"
#include "text/views/view.h"

/// Where the user was in a text, kept from one use of the file to the next.
namespace documents {

/// "line" and "column", in the storage and from 0.
plist::dictionary savable_iterator(text::view_iterator const& it);
/// The nearest place that the text has; what hides it is unfolded.
text::view_iterator load_iterator(text::view& view, plist::value const& place);

/// Caret, selection and what is visible, for a project's file.
plist::dictionary view_metadata(text::view const& view);
void set_view_metadata(text::view& view, plist::value const& metadata);

/// Bookmarks, folds and caret from the attributes of the file that the view's text was read from.
/// What doesn't fit the text is left out, or moved to where the text ends.
void load_view_attributes(std::string const& path, text::view& view);
/// Stores them, if the path leads to this file, whatever has been written to it.
void save_view_attributes(std::string const& path, path::file_version const& file,
                          text::view const& view);

/// Goes to what an external editor's client has asked for: a line or a range of units. `record` is
/// its block of bytes, in this machine's order: the number of a line, from 0, in 16 bits at byte 2;
/// if it is negative, the range's start and end in 32 bits each at bytes 4 and 8.
void go_to_position(text::view& view, plist::data const& record);
constexpr std::size_t position_size = 20;  ///< of such a record at least

/// Puts the caret at the beginning of a line, counted from 0, or of the last one.
void go_to_line(text::view& view, std::size_t line);

}  // namespace documents
