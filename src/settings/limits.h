#pragma once

/// Bounds of numbers that settings, menus and panels share.
namespace settings {

inline constexpr int max_tab_size = 64;   // columns
inline constexpr int max_margin = 10000;  // columns
inline constexpr int min_font_size = 4;   // points
inline constexpr int max_font_size = 200;

}  // namespace settings
