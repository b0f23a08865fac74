#pragma once

#include <X11/Xlib.h>
#include <X11/extensions/XShm.h>

#include <cstddef>
#include <cstdint>
#include <vector>

/// Pictures of a part of a window, got through memory shared with the display, so that looking
/// takes little of the time that is measured. For displays of 32 bits a pixel.
class screen_image {
 public:
  /// All of the window but `margin` pixels above and below, where menus and bars may be.
  screen_image(Display* display, Window window, int margin)
      : display_(display), window_(window), margin_(margin) {}
  ~screen_image() { forget(); }
  screen_image(screen_image const&) = delete;
  screen_image& operator=(screen_image const&) = delete;

  /// Of the window's size now. False when it can't be read.
  bool grab();
  /// Changes of brightness along every other row: text makes many, an empty window few.
  std::size_t edges() const;
  /// Pixels that are far from grey.
  std::size_t coloured() const;
  /// Pixels of that colour, RRGGBB.
  std::size_t count(std::uint32_t color) const;
  /// Pixels that are others than in `before`, which has the same size, in rows from `from_row` on.
  std::size_t differences(std::vector<std::uint32_t> const& before, std::size_t from_row = 0) const;
  std::vector<std::uint32_t> pixels() const;

 private:
  bool make(XWindowAttributes const& window);
  void forget();
  std::uint32_t const* row(std::size_t y) const { return pixels_ + y * width_; }

  Display* display_;
  Window window_;
  int margin_;
  std::size_t width_ = 0, height_ = 0;
  int window_width_ = 0, window_height_ = 0;
  XShmSegmentInfo segment_{};
  XImage* image_ = nullptr;
  std::uint32_t const* pixels_ = nullptr;
};
