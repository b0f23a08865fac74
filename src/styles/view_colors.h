#pragma once

#include "platform/view.h"
#include "plist/value.h"

namespace styles {

/// The colours in which a view is drawn: those of the style of the empty scope path, and where it
/// has none what goes with the desktop's palette.
struct view_colors {
  platform::color background, foreground, caret, selection, line_highlight, invisibles;
  platform::color wrap_margin, beyond_margin;
  platform::color guide;               ///< of indentation
  platform::color bracket;             ///< behind a bracket at the caret and its partner
  platform::color bracket_edge;        ///< around them
  platform::color same_word;           ///< behind the other places of a selected word
  platform::color risk;                ///< of characters that hide, or change the order of others
  platform::color flash;               ///< behind the partner of a bracket just typed
  platform::color field;               ///< behind the field of a snippet that is being filled in
  platform::color match;               ///< behind what the find bar has found
  platform::color current_match;       ///< behind the one of those that is selected
  platform::color current_match_edge;  ///< around that one
  platform::color gutter, gutter_number, gutter_current_number;

  /// With `active` false, selection and line highlight are dimmed: the keys go elsewhere.
  view_colors(platform::palette const& palette, plist::value const& style, bool active);
};

/// The palette with background and foreground of a style.
platform::palette styled_palette(platform::palette desktop, plist::value const& style);

/// `over` mixed into `under`, no more than it takes to be read on that, and with at least this
/// share of it; black or white where `over` itself can't be read.
platform::color readable_mix(platform::color over, platform::color under, double least_share);

/// `share` of `over` and the rest of `under`, alpha left at full.
platform::color mixed(platform::color over, platform::color under, double share);

}  // namespace styles
