#include "textview/view_colors.h"

#include <cmath>

platform::color mixed(platform::color over, platform::color under, double share) {
  auto const mix = [share](std::uint8_t a, std::uint8_t b) {
    return static_cast<std::uint8_t>(std::lround(a * share + b * (1 - share)));
  };
  return {mix(over.red, under.red), mix(over.green, under.green), mix(over.blue, under.blue), 255};
}

view_colors::view_colors(platform::palette const& p, bool active)
    : background(p.background),
      foreground(p.foreground),
      caret(p.caret),
      selection(p.selection),
      line_highlight(mixed(p.foreground, p.background, active ? 0.07 : 0.035)),
      invisibles(mixed(p.foreground, p.background, 0.35)),
      wrap_margin(mixed(p.foreground, p.background, 0.2)),
      behind_margin(mixed(p.foreground, p.background, 0.04)),
      match(mixed({0xE8, 0xB0, 0x20, 255}, p.background, p.dark ? 0.40 : 0.45)),
      gutter(mixed(p.foreground, p.background, 0.05)),
      gutter_number{0x88, 0x88, 0x88},
      gutter_current_number(p.dark ? gutter_number : platform::color{0, 0, 0}) {
  // The desktop means its colour to go with text in another one. Text keeps its colours here, so
  // the selection is a tint that leaves them readable.
  selection.alpha = active ? 90 : 45;
}
