#pragma once

#include "platform/html_window.h"

#include <QPointer>
#include <QWebEngineUrlRequestInterceptor>
#include <QWebEngineUrlSchemeHandler>

#include <memory>

namespace widgets {

/// Serves a page's own schemes: the streams of output, files, and what its scripts ask of the
/// program, under paths that begin with request_path.
class PageScheme final : public QWebEngineUrlSchemeHandler {
 public:
  static constexpr char const* request_path = "/.quirnote/";

  /// What is asked for by this page.
  explicit PageScheme(platform::html_window_delegate*& delegate) : delegate_(delegate) {}

  /// The stream is served once, to the next who asks for that URL.
  void set_stream(QUrl const& url, std::shared_ptr<platform::page_stream> stream);
  void set_page(QUrl const& url) { page_ = url; }
  void requestStarted(QWebEngineUrlRequestJob* job) override;

 private:
  void answer_script(QWebEngineUrlRequestJob& job, QString const& operation);
  void send_file(QWebEngineUrlRequestJob& job);

  platform::html_window_delegate*& delegate_;
  QUrl url_, page_;
  std::shared_ptr<platform::page_stream> stream_;
};

/// Lets through what a page may ask for: its own schemes; and of files pictures, styles, scripts
/// and such, and pages that a link leads to, but none that its scripts could read.
class RequestFilter final : public QWebEngineUrlRequestInterceptor {
 public:
  explicit RequestFilter(platform::html_window_delegate*& delegate) : delegate_(delegate) {}
  void interceptRequest(QWebEngineUrlRequestInfo& info) override;

 private:
  platform::html_window_delegate*& delegate_;
};

}  // namespace widgets
