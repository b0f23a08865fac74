#include "desktop/web/WebOutputPage.h"

#include "desktop/QtText.h"
#include "platform/desktop.h"
#include "platform/log.h"
#include "platform/system/library_folders.h"

#include <QFile>
#include <QPrintDialog>
#include <QPrinter>
#include <QWebEngineDownloadRequest>
#include <QWebEngineScript>
#include <QWebEngineScriptCollection>
#include <QWebEngineSettings>

namespace widgets {
namespace {

constexpr int most_questions = 10;  // of the scripts of a page, between two loads
constexpr double zoom_step = 1.1;

QString script_of_bridge() {
  QFile file(qstring(platform::shared_support_folder() + "/html/bridge.js"));
  if (!file.open(QIODevice::ReadOnly))
    platform::log(utf8(file.fileName()) + ": " + utf8(file.errorString()));
  return QString::fromUtf8(file.readAll());
}

std::string encoded(QUrl const& url) {
  return url.toString(QUrl::FullyEncoded).toStdString();
}

void restrict(QWebEngineSettings& settings) {
  using attribute = QWebEngineSettings::WebAttribute;
  for (attribute const forbidden :
       {attribute::JavascriptCanOpenWindows, attribute::JavascriptCanAccessClipboard,
        attribute::LocalContentCanAccessRemoteUrls, attribute::LocalContentCanAccessFileUrls,
        attribute::PluginsEnabled, attribute::PdfViewerEnabled, attribute::FullScreenSupportEnabled,
        attribute::ScreenCaptureEnabled, attribute::WebGLEnabled, attribute::DnsPrefetchEnabled,
        attribute::LocalStorageEnabled, attribute::HyperlinkAuditingEnabled,
        attribute::AllowGeolocationOnInsecureOrigins, attribute::AllowRunningInsecureContent,
        attribute::NavigateOnDropEnabled, attribute::ErrorPageEnabled})
    settings.setAttribute(forbidden, false);
}

}  // namespace

BrowserPage::BrowserPage(QWebEngineProfile* profile, platform::html_window_delegate*& delegate)
    : QWebEnginePage(profile), delegate_(delegate) {
  restrict(*settings());
  QObject::connect(this, &QWebEnginePage::featurePermissionRequested, this,
                   [this](QUrl const& origin, Feature feature) {
                     setFeaturePermission(origin, feature, PermissionDeniedByUser);
                   });
}

bool BrowserPage::acceptNavigationRequest(QUrl const& url, NavigationType, bool is_main) {
  if (delegate_ == nullptr) return false;
  bool const is_own = url == expected_;
  if (is_own) {
    expected_ = QUrl();
    questions_ = 0;
    return true;
  }
  bool const is_embedded =
      url.scheme() == QLatin1String("about") || url.scheme() == QLatin1String("data");
  if (!is_main) return is_embedded;
  auto const link = delegate_->linkForURL(encoded(url), encoded(this->url()));
  if (link.what == platform::page_link::kind::instead) {
    QUrl const other(qstring(link.url));
    expect(other);
    QMetaObject::invokeMethod(
        this, [this, other] { load(other); }, Qt::QueuedConnection);
  }
  return link.what == platform::page_link::kind::load;
}

QWebEnginePage* BrowserPage::createWindow(WebWindowType) {
  if (delegate_ != nullptr) delegate_->pageDidLog("a page may not open windows");
  return nullptr;
}

QStringList BrowserPage::chooseFiles(FileSelectionMode, QStringList const&, QStringList const&) {
  return {};
}

void BrowserPage::javaScriptAlert(QUrl const&, QString const& message) {
  ask(message, {"Continue"});
}

bool BrowserPage::javaScriptConfirm(QUrl const&, QString const& message) {
  return ask(message, {"OK", "Cancel"}) == 0;
}

bool BrowserPage::javaScriptPrompt(QUrl const&, QString const& message, QString const& initial,
                                   QString* result) {
  if (!may_ask()) return false;
  auto const answer = platform::desktop::current().prompts().run(
      utf8(view_title()), utf8(message.left(longest_question)), utf8(initial));
  if (answer) *result = qstring(*answer);
  return answer.has_value();
}

bool BrowserPage::may_ask() {
  auto& waits = platform::desktop::current().waits();
  return delegate_ != nullptr && !waits.is_waiting() && ++questions_ <= most_questions;
}

std::size_t BrowserPage::ask(QString const& message, std::vector<std::string> buttons) {
  std::size_t const safe = buttons.size() - 1;
  if (!may_ask()) return safe;
  platform::alert question{utf8(view_title()), utf8(message.left(longest_question)),
                           std::move(buttons), safe};
  question.icon = safe == 0 ? platform::alert_icon::information : platform::alert_icon::question;
  return platform::desktop::current().alerts().run(question);
}

QString BrowserPage::view_title() const {
  QWidget const* const view = QWebEngineView::forPage(this);
  return view == nullptr ? QString() : view->window()->windowTitle();
}

void BrowserPage::javaScriptConsoleMessage(JavaScriptConsoleMessageLevel, QString const& message,
                                           int, QString const&) {
  if (delegate_ != nullptr) delegate_->pageDidLog(utf8(message));
}

WebOutputPage::WebOutputPage(platform::html_window_delegate& delegate)
    : OutputPage(delegate), scheme_(delegate_), filter_(delegate_), page_(&profile_, delegate_) {
  for (char const* const scheme : {"qn-internal", "qn-shown", "qn-file"})
    profile_.installUrlSchemeHandler(scheme, &scheme_);
  profile_.setUrlRequestInterceptor(&filter_);
  profile_.setHttpCacheType(QWebEngineProfile::NoCache);
  QObject::connect(&profile_, &QWebEngineProfile::downloadRequested, &page_,
                   [this](QWebEngineDownloadRequest* download) {
                     download->cancel();
                     if (delegate_ != nullptr) delegate_->pageDidLog("a page may not download");
                   });
  QWebEngineScript bridge;
  bridge.setName(QStringLiteral("Quirnote"));
  bridge.setSourceCode(script_of_bridge());
  bridge.setInjectionPoint(QWebEngineScript::DocumentCreation);
  bridge.setWorldId(QWebEngineScript::MainWorld);
  bridge.setRunsOnSubFrames(true);
  page_.scripts().insert(bridge);

  view_.setPage(&page_);
  view_.setContextMenuPolicy(Qt::NoContextMenu);
  view_.setAcceptDrops(false);
  auto const tell = [this](auto member) {
    return [this, member] {
      if (delegate_ != nullptr) (delegate_->*member)();
    };
  };
  using logic = platform::html_window_delegate;
  QObject::connect(&page_, &QWebEnginePage::contentsSizeChanged, &view_,
                   tell(&logic::pageDidChangeFrame));
  QObject::connect(&page_, &QWebEnginePage::scrollPositionChanged, &view_,
                   tell(&logic::pageDidScroll));
  QObject::connect(&page_, &QWebEnginePage::loadFinished, &view_,
                   tell(&logic::pageDidFinishLoading));
  QObject::connect(&page_, &QWebEnginePage::urlChanged, &view_,
                   [this](QUrl const& url) { scheme_.set_page(url); });
  QObject::connect(&page_, &QWebEnginePage::renderProcessTerminated, &view_,
                   [this](QWebEnginePage::RenderProcessTerminationStatus, int) {
                     stop_loading();
                     if (delegate_ != nullptr) delegate_->pageProcessDidEnd();
                   });
}

WebOutputPage::~WebOutputPage() {
  detach();
}

void WebOutputPage::load(std::string const& url, std::shared_ptr<platform::page_stream> content) {
  stop_loading();
  stream_ = std::move(content);
  QUrl const place(qstring(url));
  scheme_.set_stream(place, stream_);
  page_.expect(place);
  page_.load(place);
}

void WebOutputPage::stop_loading() {
  scheme_.set_stream(QUrl(), nullptr);
  if (stream_ == nullptr) return;
  auto const stream = std::exchange(stream_, nullptr);
  if (!stream->at_end()) page_.triggerAction(QWebEnginePage::Stop);
  stream->abandon();
}

platform::page_frame WebOutputPage::frame() const {
  double const zoom = page_.zoomFactor();
  QPointF const at = page_.scrollPosition() / zoom;
  QSizeF const content = page_.contentsSize() / zoom;
  return {{at.x(), at.y(), view_.width() / zoom, view_.height() / zoom},
          {content.width(), content.height()}};
}

void WebOutputPage::scroll_to(platform::point upper_left) {
  page_.runJavaScript(QStringLiteral("window.scrollTo(%1, %2)").arg(upper_left.x).arg(upper_left.y),
                      QWebEngineScript::ApplicationWorld);
}

void WebOutputPage::set_text_size(text_size size) {
  double const zoom = page_.zoomFactor();
  page_.setZoomFactor(size == text_size::larger    ? zoom * zoom_step
                      : size == text_size::smaller ? zoom / zoom_step
                                                   : 1);
}

void WebOutputPage::print() {
  auto* const printer = new QPrinter(QPrinter::HighResolution);
  QPrintDialog dialog(printer, &view_);
  platform::waiting::scope const scope(platform::desktop::current().waits(),
                                       [&dialog] { dialog.reject(); });
  if (dialog.exec() != QDialog::Accepted) {
    delete printer;
    return;
  }
  QObject::connect(
      &view_, &QWebEngineView::printFinished, &view_, [printer] { delete printer; },
      Qt::SingleShotConnection);
  view_.print(printer);
}

}  // namespace widgets
