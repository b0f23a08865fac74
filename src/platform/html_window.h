#pragma once

#include "platform/geometry.h"
#include "platform/html/page_stream.h"
#include "platform/window.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace platform {

/// What a page's script asks of the program. The script may wait for the answer, and nothing else
/// waits with it.
struct page_request {
  std::string origin;     ///< of the page that asks, as "qn-internal://local"; "null" without one
  std::string page;       ///< its window's URL
  std::string operation;  ///< such as "system"
  std::string arguments;  ///< NAME=VALUE joined by "&", percent-encoded
  /// Gives the answer, as JSON, once; nothing is a refusal. May be called later, also when the page
  /// has gone.
  std::function<void(std::optional<std::string> json)> answer;
};

/// Where a page's part of the window is.
struct page_frame {
  rect visible;  ///< what is seen of the page, in its coordinates
  size content;  ///< how large the page is
  bool is_at_bottom() const { return visible.bottom() >= content.height - 2; }
};

/// What following a link, or loading a part of a page, comes to.
struct page_link {
  enum class kind {
    load,     ///< as it stands
    instead,  ///< `url` is loaded in its place
    refuse
  };
  kind what = kind::refuse;
  std::string url = {};
};

/// Controls a window with a page.
class html_window_delegate : public window_delegate {
 public:
  virtual void pageDidRequest(page_request request) = 0;
  /// Its content has another size.
  virtual void pageDidChangeFrame() = 0;
  /// By the user, by a script or by the program.
  virtual void pageDidScroll() = 0;
  /// The last load has ended, by its end or by stop_loading().
  virtual void pageDidFinishLoading() = 0;
  /// A message for the script console.
  virtual void pageDidLog(std::string const& message) = 0;
  /// A link is followed, or a script goes elsewhere, in the page of the URL `from`. Called for
  /// every page but those of load().
  virtual page_link linkForURL(std::string const& url, std::string const& from) = 0;
  /// The file that such a URL is served from, an absolute path; empty if there is none.
  virtual std::string fileForURL(std::string const& url) = 0;
  /// The process that shows the page has ended. The window remains, empty.
  virtual void pageProcessDidEnd() = 0;
};

/// A window with a page, and nothing else. Owned by its delegate; main thread only.
class html_window : public window {
 public:
  /// Shows what comes by `content`, from the first bytes on, as the page of that URL. UTF-8.
  virtual void load(std::string const& url, std::shared_ptr<page_stream> content) = 0;
  virtual void stop_loading() = 0;
  virtual page_frame frame() const = 0;
  virtual void scroll_to(point upper_left) = 0;
  virtual void set_busy(bool busy) = 0;
  /// A line above the page; empty for none.
  virtual void set_message(std::string const& message) = 0;
  /// "copy:", "selectAll:" and those of the text's size; false if it can't.
  virtual bool perform(std::string_view selector) = 0;
  /// False if there is nothing to print with.
  virtual bool can_print() const = 0;
  /// Asks how, and prints.
  virtual void print() = 0;
};

}  // namespace platform
