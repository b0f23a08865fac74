#pragma once

#include "platform/view.h"

/// The colours in which a view is drawn, made from the desktop's palette.
struct view_colors {
  platform::color background, foreground, caret, selection, line_highlight, invisibles;
  platform::color wrap_margin, behind_margin;
  platform::color match;  ///< behind what the find panel has found
  platform::color gutter, gutter_number, gutter_current_number;

  /// With `active` false, selection and line highlight are dimmed: the keys go elsewhere.
  view_colors(platform::palette const& palette, bool active);
};

/// `share` of `over` and the rest of `under`, alpha left at full.
platform::color mixed(platform::color over, platform::color under, double share);
