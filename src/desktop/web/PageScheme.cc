#include "desktop/web/PageScheme.h"

#include "desktop/QtText.h"
#include "desktop/web/StreamDevice.h"

#include <QBuffer>
#include <QFile>
#include <QMimeDatabase>
#include <QWebEngineUrlRequestJob>

namespace widgets {
namespace {

constexpr QLatin1String html("text/html;charset=utf-8");

/// The device ends with the request.
void reply(QWebEngineUrlRequestJob& job, QByteArray const& type, QIODevice* device) {
  QObject::connect(&job, &QObject::destroyed, device, &QObject::deleteLater);
  job.reply(type, device);
}

std::string origin_of(QWebEngineUrlRequestJob const& job) {
  QUrl const origin = job.initiator();
  return origin.scheme().isEmpty() ? "null" : utf8(origin.toString());
}

}  // namespace

void PageScheme::set_stream(QUrl const& url, std::shared_ptr<platform::page_stream> stream) {
  url_ = url;
  stream_ = std::move(stream);
}

void PageScheme::requestStarted(QWebEngineUrlRequestJob* job) {
  QUrl const url = job->requestUrl();
  QString const path = url.path();
  if (delegate_ == nullptr) return job->fail(QWebEngineUrlRequestJob::RequestAborted);
  QLatin1String const scripts(request_path);
  if (path.startsWith(scripts)) return answer_script(*job, path.mid(scripts.size()));
  if (url.scheme() == QLatin1String("qn-file")) return send_file(*job);
  if (stream_ == nullptr || url != url_) return job->fail(QWebEngineUrlRequestJob::UrlNotFound);
  reply(*job, QByteArray(html.data(), html.size()), new StreamDevice(std::exchange(stream_, {})));
}

void PageScheme::answer_script(QWebEngineUrlRequestJob& job, QString const& operation) {
  delegate_->pageDidRequest({origin_of(job), utf8(page_.toString()), utf8(operation),
                             job.requestUrl().query(QUrl::FullyEncoded).toStdString(),
                             [weak = QPointer(&job)](std::optional<std::string> const& json) {
                               if (weak == nullptr) return;
                               if (!json) return weak->fail(QWebEngineUrlRequestJob::RequestDenied);
                               auto* const buffer = new QBuffer;
                               buffer->setData(QByteArray::fromStdString(*json));
                               buffer->open(QIODevice::ReadOnly);
                               reply(*weak, "application/json;charset=utf-8", buffer);
                             }});
}

// For pages of the program's own alone: who could name a file here could read it.
void PageScheme::send_file(QWebEngineUrlRequestJob& job) {
  std::string const origin = origin_of(job);
  bool const is_ours = origin == "null" || origin.starts_with("qn-") || origin.starts_with("file:");
  QUrl const url = job.requestUrl();
  std::string const path = delegate_->fileForURL(url.toString(QUrl::FullyEncoded).toStdString());
  auto* const file = new QFile(QFile::decodeName(path.c_str()));
  if (!is_ours || path.empty() || !file->open(QIODevice::ReadOnly)) {
    delete file;
    return job.fail(QWebEngineUrlRequestJob::UrlNotFound);
  }
  QString type = QMimeDatabase().mimeTypeForFile(file->fileName()).name();
  if (type.startsWith(QLatin1String("text/"))) type += QLatin1String(";charset=utf-8");
  reply(job, type.toLatin1(), file);
}

void RequestFilter::interceptRequest(QWebEngineUrlRequestInfo& info) {
  using kind = QWebEngineUrlRequestInfo::ResourceType;
  QString const scheme = info.requestUrl().scheme();
  bool is_allowed = scheme == QLatin1String("qn-internal") || scheme == QLatin1String("qn-shown") ||
                    scheme == QLatin1String("data") || scheme == QLatin1String("blob") ||
                    scheme == QLatin1String("about");
  bool const is_file = scheme == QLatin1String("file") || scheme == QLatin1String("qn-file");
  bool const is_request =
      info.requestUrl().path().startsWith(QLatin1String(PageScheme::request_path));
  if (is_file) {
    switch (info.resourceType()) {
      case kind::ResourceTypeMainFrame:
      case kind::ResourceTypeStylesheet:
      case kind::ResourceTypeScript:
      case kind::ResourceTypeImage:
      case kind::ResourceTypeFontResource:
      case kind::ResourceTypeMedia:
      case kind::ResourceTypeFavicon:
        is_allowed = true;
        break;
      default:
        is_allowed = scheme == QLatin1String("qn-file") && is_request;
    }
  }
  if (is_allowed) return;
  info.block(true);
  if (delegate_ != nullptr)
    delegate_->pageDidLog("a page may not load " + utf8(info.requestUrl().toString().left(200)));
}

}  // namespace widgets
