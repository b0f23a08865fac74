#pragma once

#include "platform/region.h"
#include "text/views/view_iterator.h"

#include <vector>

namespace layout {
class laid_out_view;

/// Where things of the text stand in a view, in its coordinates. The view must show a document.

/// What shows of the view, its gutter included; empty without a host.
platform::rect visible_rect_of(laid_out_view const& text_view);

/// Where an input method's text is shown: at the caret, or after what is selected, which stays
/// until the text takes its place.
text::view_iterator marked_text_place(text::view const& view);

/// A line of one pixel before the caret, or under it in overwrite mode.
platform::rect caret_rectangle(laid_out_view const& text_view);

/// Those of all places at which typing inserts: beside that of caret_rectangle() the ones in the
/// other lines of a rectangle, or of columns that are typed in. Without those above or below
/// `limits` by more than a row.
std::vector<platform::rect> other_caret_rectangles(laid_out_view const& text_view,
                                                   platform::rect const& limits);

/// The rectangles of the selection, without those above or below `limits` by more than a row, so
/// that a selection of a million lines costs no more than what can be seen of it.
wyn::region selection_region(laid_out_view const& text_view, platform::rect const& limits);

/// The top left corner of the cell of a position.
platform::point position_of(laid_out_view const& text_view, text::view_iterator const& it);

/// The cells of the character at a position, which is no tab.
platform::rect character_rectangle(laid_out_view const& text_view, text::view_iterator const& it);

/// The position nearest to a point.
text::view_iterator position_at(laid_out_view const& text_view, platform::point p,
                                text::freehanded_t::type type);

/// Whether the point is on the selection, in the part that shows. There must be a host.
bool is_in_selection(laid_out_view const& text_view, platform::point p);

/// How far a point lies outside of a rectangle, to the right and down; 0 where it doesn't.
platform::point distance_beyond(platform::rect const& r, platform::point p);

}  // namespace layout
