#pragma once

namespace platform {

/// The tree at the side of a window's text. Main thread only.
class side_bar {
 public:
  virtual ~side_bar() = default;

  virtual bool is_visible() const = 0;
  /// Without it the keyboard is at the text.
  virtual void set_visible(bool visible) = 0;
  virtual bool is_on_right() const = 0;
  virtual void set_on_right(bool right) = 0;
  /// In pixels, also while it isn't visible; the user can change it. Kept within the window.
  virtual int width() const = 0;
  virtual void set_width(int width) = 0;
  /// In points.
  virtual void set_font_size(double size) = 0;
  virtual bool has_focus() const = 0;
  /// The keyboard goes to the tree, or to the text.
  virtual void set_focus(bool to_tree) = 0;
};

}  // namespace platform
