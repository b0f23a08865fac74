#include "styles/view_colors.h"

#include <cmath>

#include "settings/store.h"
#include "styles/color_strings.h"

namespace styles {
namespace {

double share_of(platform::color c) {
  return c.alpha / 255.0;
}

// Those of the desktop, but for what the user has set in their place.
platform::palette with_own_colors(platform::palette palette) {
  auto& defaults = settings::store();
  auto const own = [&](char const* key) { return NSColorFromString(defaults.string(key)); };
  if (auto const background = own("WynTextViewBackgroundColor")) {
    palette.background = *background;
    palette.background.alpha = 255;
  }
  if (auto const foreground = own("WynTextViewForegroundColor"))
    palette.foreground = palette.caret = *foreground;
  palette.selection = own("WynTextViewSelectionColor").value_or(palette.selection);
  return palette;
}

}  // namespace

platform::color mixed(platform::color over, platform::color under, double share) {
  auto const mix = [share](std::uint8_t a, std::uint8_t b) {
    return static_cast<std::uint8_t>(std::lround(a * share + b * (1 - share)));
  };
  return {mix(over.red, under.red), mix(over.green, under.green), mix(over.blue, under.blue), 255};
}

platform::color readable_mix(platform::color over, platform::color under, double least_share) {
  constexpr double least_contrast = 4.5, step = 0.05;
  for (double share = least_share; share < 1; share += step)
    if (auto const c = mixed(over, under, share); contrast(c, under) >= least_contrast) return c;
  over.alpha = 255;
  platform::color const black{0, 0, 0}, white{255, 255, 255};
  if (contrast(over, under) >= least_contrast) return over;
  return contrast(black, under) > contrast(white, under) ? black : white;
}

platform::palette styled_palette(platform::palette desktop, plist::value const& style) {
  platform::palette palette = with_own_colors(desktop);
  if (auto const background = NSColorForKey(style, "background"))
    palette.background = mixed(*background, palette.background, share_of(*background));
  if (auto const foreground = NSColorForKey(style, "foreground"))
    palette.foreground = palette.caret = *foreground;
  if (palette.background != desktop.background) palette.dark = is_dark(palette.background);
  return palette;
}

view_colors::view_colors(platform::palette const& desktop, plist::value const& style, bool active) {
  platform::palette const p = styled_palette(desktop, style);
  background = p.background;
  foreground = p.foreground;
  caret = NSColorForKey(style, "caret").value_or(p.caret);
  line_highlight = p.foreground;
  line_highlight.alpha = 18;
  if (auto const own = NSColorForKey(style, "lineHighlight")) line_highlight = *own;
  invisibles = NSColorForKey(style, "invisibles").value_or(mixed(p.foreground, p.background, 0.35));
  // The desktop means its colour to go with text in another one. Text keeps its colours here, so
  // the selection is a tint that leaves them readable. Themes have colours that go with theirs, and
  // the user knows what he wants.
  selection = p.selection;
  if (selection == desktop.selection) selection.alpha = 90;
  if (auto const own = NSColorForKey(style, "selection")) selection = *own;
  flash = selection;
  if (!active)
    for (auto* const dimmed : {&selection, &line_highlight}) dimmed->alpha /= 2;
  guide = mixed(p.foreground, p.background, 0.14);
  bracket = mixed(p.foreground, p.background, 0.16);
  bracket_edge = mixed(p.foreground, p.background, 0.5);
  same_word = mixed(p.foreground, p.background, 0.14);
  risk = p.dark ? platform::color{0xFF, 0x6B, 0x6B} : platform::color{0xD0, 0x20, 0x20};
  wrap_margin = mixed(p.foreground, p.background, 0.2);
  beyond_margin = mixed(p.foreground, p.background, 0.04);
  // Tints that leave each colour of the text readable; what is the current one, its edge says.
  match = mixed({0xE8, 0xB0, 0x20, 255}, p.background, p.dark ? 0.22 : 0.35);
  current_match = mixed({0xF0, 0x80, 0x10, 255}, p.background, p.dark ? 0.30 : 0.35);
  current_match_edge =
      p.dark ? platform::color{0xF0, 0x9A, 0x30} : platform::color{0xC8, 0x60, 0x00};
  field = mixed({0x40, 0x90, 0xE0, 255}, p.background, p.dark ? 0.30 : 0.22);
  gutter = mixed(p.foreground, p.background, 0.05);
  platform::color const current_gutter = mixed(line_highlight, gutter, share_of(line_highlight));
  gutter_number = readable_mix(p.foreground, gutter, 0.4);
  gutter_current_number = readable_mix(p.foreground, current_gutter, 0.9);
}

}  // namespace styles
