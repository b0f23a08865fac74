#include "screen_image.h"

#include <X11/Xutil.h>
#include <sys/ipc.h>
#include <sys/shm.h>

#include <algorithm>
#include <cstdlib>

bool screen_image::make(XWindowAttributes const& window) {
  forget();
  image_ = XShmCreateImage(display_, window.visual, static_cast<unsigned>(window.depth), ZPixmap,
                           nullptr, &segment_, static_cast<unsigned>(window.width),
                           static_cast<unsigned>(window.height - 2 * margin_));
  if (image_ == nullptr || image_->bits_per_pixel != 32) return false;
  auto const bytes = static_cast<std::size_t>(image_->bytes_per_line * image_->height);
  segment_.shmid = shmget(IPC_PRIVATE, bytes, IPC_CREAT | 0600);
  void* const memory = shmat(segment_.shmid, nullptr, 0);
  if (memory == reinterpret_cast<void*>(-1)) return false;
  segment_.shmaddr = image_->data = static_cast<char*>(memory);
  XShmAttach(display_, &segment_);
  XSync(display_, False);
  shmctl(segment_.shmid, IPC_RMID, nullptr);
  pixels_ = static_cast<std::uint32_t const*>(memory);
  width_ = static_cast<std::size_t>(image_->bytes_per_line) / sizeof(std::uint32_t);
  height_ = static_cast<std::size_t>(image_->height);
  window_width_ = window.width;
  window_height_ = window.height;
  return true;
}

void screen_image::forget() {
  if (pixels_ != nullptr) {
    XShmDetach(display_, &segment_);
    XSync(display_, False);
    shmdt(segment_.shmaddr);
  }
  pixels_ = nullptr;
  window_width_ = 0;
  if (image_ == nullptr) return;
  image_->data = nullptr;
  XDestroyImage(image_);
  image_ = nullptr;
}

bool screen_image::grab() {
  XWindowAttributes a;
  if (!XGetWindowAttributes(display_, window_, &a) || a.height <= 2 * margin_) return false;
  bool const same = a.width == window_width_ && a.height == window_height_;
  if (!same && !make(a)) return false;
  return XShmGetImage(display_, window_, image_, 0, margin_, AllPlanes);
}

std::size_t screen_image::edges() const {
  auto const level = [](std::uint32_t pixel) { return static_cast<int>(pixel & 0xFF); };
  std::size_t count = 0;
  for (std::size_t y = 0; y < height_; y += 2)
    for (std::size_t x = 1; x < width_; ++x)
      count += std::abs(level(row(y)[x]) - level(row(y)[x - 1])) > 60;
  return count;
}

std::size_t screen_image::coloured() const {
  constexpr std::uint32_t far_from_grey = 60;
  std::size_t count = 0;
  for (std::size_t y = 0; y < height_; ++y) {
    for (std::size_t x = 0; x < width_; ++x) {
      std::uint32_t const p = row(y)[x];
      auto const [least, most] = std::minmax({p >> 16 & 0xFF, p >> 8 & 0xFF, p & 0xFF});
      count += most - least > far_from_grey;
    }
  }
  return count;
}

std::size_t screen_image::count(std::uint32_t color) const {
  std::size_t count = 0;
  for (std::size_t y = 0; y < height_; ++y)
    count += static_cast<std::size_t>(std::count_if(
        row(y), row(y) + width_, [&](std::uint32_t p) { return (p & 0xFFFFFF) == color; }));
  return count;
}

std::size_t screen_image::differences(std::vector<std::uint32_t> const& before,
                                      std::size_t from_row) const {
  std::size_t count = 0;
  for (std::size_t i = from_row * width_; i < std::min(before.size(), width_ * height_); ++i)
    count += before[i] != pixels_[i];
  return count;
}

std::vector<std::uint32_t> screen_image::pixels() const {
  return {pixels_, pixels_ + width_ * height_};
}
