#pragma once

#include "platform/html_window.h"

#include <memory>
#include <string>
#include <string_view>

class QWidget;

namespace widgets {

/// What shows the page in a window with output: the text alone, or a browser's page from a module
/// of its own.
class OutputPage {
 public:
  explicit OutputPage(platform::html_window_delegate& delegate) : delegate_(&delegate) {}
  virtual ~OutputPage() = default;

  /// From here on nothing of the logic is called. Each kind of page calls it in its destructor.
  void detach() {
    delegate_ = nullptr;
    stop_loading();
  }
  /// As in platform::html_window.
  bool perform(std::string_view selector) {
    if (selector == "copy:")
      copy();
    else if (selector == "selectAll:")
      select_all();
    else if (selector == "makeTextLarger:")
      set_text_size(text_size::larger);
    else if (selector == "makeTextSmaller:")
      set_text_size(text_size::smaller);
    else if (selector == "makeTextStandardSize:")
      set_text_size(text_size::standard);
    else
      return false;
    return true;
  }

  virtual QWidget* widget() = 0;  ///< lives as long as this
  virtual void load(std::string const& url, std::shared_ptr<platform::page_stream> content) = 0;
  virtual void stop_loading() = 0;
  virtual platform::page_frame frame() const = 0;
  virtual void scroll_to(platform::point upper_left) = 0;
  virtual bool can_print() const = 0;
  virtual void print() = 0;

 protected:
  enum class text_size { larger, smaller, standard };

  virtual void copy() = 0;
  virtual void select_all() = 0;
  virtual void set_text_size(text_size size) = 0;

  platform::html_window_delegate* delegate_;  // null once detached
};

/// What the module offers; it owns it. Null pages mean that there can be none.
class OutputPageModule {
 public:
  virtual ~OutputPageModule() = default;
  virtual std::unique_ptr<OutputPage> make_page(platform::html_window_delegate& delegate) = 0;
};

/// What the module exports under this name: a function without arguments that returns the one
/// OutputPageModule.
inline constexpr char const* output_page_symbol = "quirnote_output_pages";

}  // namespace widgets
