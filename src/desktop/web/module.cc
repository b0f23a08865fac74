#include "desktop/web/WebOutputPage.h"
#include "platform/log.h"

#include <QOpenGLContext>
#include <QQuickWindow>
#include <QWebEngineUrlScheme>

#include <unistd.h>

// Qt WebEngine wants a context for drawing that is shared by all of the program, even if it draws
// without one; Qt makes it before the application's start or not at all. The function is Qt's own.
void qt_gl_set_global_share_context(QOpenGLContext* context);
QOpenGLContext* qt_gl_global_share_context();

namespace widgets {
namespace {

using scheme = QWebEngineUrlScheme;

void register_scheme(char const* name, scheme::Syntax syntax) {
  scheme own(name);
  own.setSyntax(syntax);
  // Not a local scheme: such pages have no origin of their own unless they may read all files.
  own.setFlags(scheme::SecureScheme | scheme::LocalAccessAllowed | scheme::CorsEnabled);
  scheme::registerScheme(own);
}

/// Options that Qt WebEngine reads when it starts. They are not for the commands that are run.
class StartOptions {
 public:
  StartOptions() : former_(qgetenv(variable)), was_set_(qEnvironmentVariableIsSet(variable)) {
    QByteArray options = former_;
    // Output is drawn by the processor: that needs no driver, and no process that could fail.
    options += " --disable-gpu";
    // Nothing is looked up, fetched or reached, whatever a page tries.
    options += " --host-resolver-rules=\"MAP * ~NOTFOUND\" --dns-prefetch-disable";
    options += " --force-webrtc-ip-handling-policy=disable_non_proxied_udp";
    options += " --disable-background-networking --disable-component-update";
    if (geteuid() == 0) {
      options += " --no-sandbox";
      platform::log("pages are shown without a sandbox, since the program runs as root");
    }
    qputenv(variable, options);
  }
  ~StartOptions() {
    if (was_set_)
      qputenv(variable, former_);
    else
      qunsetenv(variable);
  }
  StartOptions(StartOptions const&) = delete;
  StartOptions& operator=(StartOptions const&) = delete;

 private:
  static constexpr char const* variable = "QTWEBENGINE_CHROMIUM_FLAGS";
  QByteArray const former_;
  bool const was_set_;
};

class WebModule final : public OutputPageModule {
 public:
  std::unique_ptr<OutputPage> make_page(platform::html_window_delegate& delegate) override {
    if (has_started_) return std::make_unique<WebOutputPage>(delegate);
    StartOptions const options;
    if (qt_gl_global_share_context() == nullptr) qt_gl_set_global_share_context(new QOpenGLContext);
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    register_scheme("qn-internal", scheme::Syntax::Host);
    register_scheme("qn-shown", scheme::Syntax::Host);
    register_scheme("qn-file", scheme::Syntax::Path);
    has_started_ = true;
    return std::make_unique<WebOutputPage>(delegate);
  }

 private:
  bool has_started_ = false;
};

}  // namespace
}  // namespace widgets

extern "C" __attribute__((visibility("default"))) widgets::OutputPageModule*
quirnote_output_pages() {
  static widgets::WebModule module;
  return &module;
}
