#pragma once

#include "platform/html_window.h"

#include <memory>
#include <string>
#include <string_view>

class QWidget;

namespace widgets {

/// What shows the page in a window with output: the text alone, or a browser's page from a module
/// of its own. Once it is told to be detached it calls nothing of the logic any more.
class OutputPage {
 public:
  virtual ~OutputPage() = default;

  virtual QWidget* widget() = 0;  ///< lives as long as this
  virtual void detach() = 0;
  virtual void load(std::string const& url, std::shared_ptr<platform::page_stream> content) = 0;
  virtual void stop_loading() = 0;
  virtual platform::page_frame frame() const = 0;
  virtual void scroll_to(platform::point upper_left) = 0;
  virtual bool perform(std::string_view selector) = 0;
  virtual bool can_print() const = 0;
  virtual void print() = 0;
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
