#include "desktop/QtPasteboard.h"

#include "desktop/QtText.h"
#include "headless/headless_desktop.h"
#include "plist/xml_reader.h"
#include "plist/xml_writer.h"

#include <QColor>
#include <QGuiApplication>
#include <QUrl>

#include <algorithm>
#include <iterator>

namespace widgets {
namespace {

namespace types = platform::pasteboard_type;

char const text_format[] = "text/plain";
// Under X11 Qt adds such names by itself, but on Wayland programs see just those that are offered,
// and many look for one with a charset.
char const* const utf8_formats[] = {"text/plain;charset=utf-8", "UTF8_STRING"};
char const file_format[] = "text/uri-list";
char const private_format[] = "application/x-quirnote-pboard";

bool is_utf8_text(QString const& format) {
  return std::any_of(std::begin(utf8_formats), std::end(utf8_formats),
                     [&](char const* known) { return format == QLatin1String(known); });
}

bool is_private(std::string_view type) {
  return type != types::text && type != types::file_list && type != types::color &&
         type != types::secret;
}

// A path's bytes need not be UTF-8.
QUrl url_of_file(std::string const& path) {
  return QUrl::fromEncoded("file://" + QByteArray::fromStdString(path).toPercentEncoding("/"));
}

// Converts only what another program asks for: a primary selection changes often, and may be large.
class PasteboardContent final : public QMimeData {
 public:
  explicit PasteboardContent(plist::dictionary content) : content(std::move(content)) {}

  QStringList formats() const override {
    QStringList list;
    if (content.contains(types::text)) {
      for (char const* format : utf8_formats) list << QLatin1String(format);
      list << QLatin1String(text_format);
    }
    if (content.contains(types::file_list)) list << QLatin1String(file_format);
    if (!private_types().empty()) list << QLatin1String(private_format);
    return list;
  }

  bool hasFormat(QString const& format) const override { return formats().contains(format); }

  plist::dictionary const content;

 protected:
  QVariant retrieveData(QString const& format, QMetaType) const override {
    if (format == QLatin1String(text_format)) return text();
    if (is_utf8_text(format)) return text().toUtf8();
    if (format == QLatin1String(file_format)) return urls();
    if (format == QLatin1String(private_format))
      return QByteArray::fromStdString(plist::write_xml(private_types()).text);
    return {};
  }

 private:
  QString text() const { return qstring(content.find(types::text)->second.string_or("")); }

  QVariantList urls() const {
    QVariantList list;
    for (plist::value const& path : content.find(types::file_list)->second.elements())
      list << url_of_file(path.string_or(""));
    return list;
  }

  plist::dictionary private_types() const {
    plist::dictionary result;
    for (auto const& [type, value] : content)
      if (is_private(type)) result.emplace(type, value);
    return result;
  }
};

// A path's bytes need not be UTF-8.
plist::value local_files(QMimeData const& data) {
  plist::array paths;
  for (QUrl const& url : data.urls()) {
    if (!url.isLocalFile()) continue;
    QByteArray const path = url.path(QUrl::FullyEncoded).toLatin1();
    paths.emplace_back(QByteArray::fromPercentEncoding(path).toStdString());
  }
  return paths.empty() ? plist::value() : plist::value(std::move(paths));
}

plist::value color_of(QMimeData const& data) {
  auto const color = data.colorData().value<QColor>();
  if (!color.isValid()) return {};
  return plist::array{color.redF(), color.greenF(), color.blueF()};
}

// How password managers ask that a clip isn't kept, here and on other systems, whose names come
// along from what runs in their emulators.
bool is_secret(QMimeData const& data) {
  QString const hint = QStringLiteral("x-kde-passwordManagerHint");
  if (data.hasFormat(hint) && data.data(hint).trimmed() == "secret") return true;
  char const* const marks[] = {
      "application/x-nspasteboard-concealed-type", "org.nspasteboard.ConcealedType",
      "ExcludeClipboardContentFromMonitorProcessing", "Clipboard Viewer Ignore"};
  return std::any_of(std::begin(marks), std::end(marks),
                     [&](char const* mark) { return data.hasFormat(QLatin1String(mark)); });
}

plist::value read_foreign(QMimeData const& data, std::string_view type) {
  if (type == types::text) return data.hasText() ? plist::value(utf8(data.text())) : plist::value();
  if (type == types::file_list) return local_files(data);
  if (type == types::color) return color_of(data);
  if (type == types::secret) return is_secret(data);
  QByteArray const xml = data.data(QLatin1String(private_format));
  if (xml.isEmpty()) return {};
  return plist::read_xml({xml.constData(), static_cast<std::size_t>(xml.size())}).value[type];
}

}  // namespace

std::unique_ptr<QMimeData> mime_data_of(plist::dictionary content) {
  return std::make_unique<PasteboardContent>(std::move(content));
}

plist::value value_of(QMimeData const& data, std::string_view type) {
  auto const* const own = dynamic_cast<PasteboardContent const*>(&data);
  if (own == nullptr) return read_foreign(data, type);
  auto const it = own->content.find(type);
  return it == own->content.end() ? plist::value() : it->second;
}

bool has_known_format(QMimeData const& data) {
  return data.hasText() || data.hasUrls() || data.hasColor() ||
         data.hasFormat(QLatin1String(private_format));
}

QtPasteboard::QtPasteboard(QClipboard::Mode mode) : mode_(mode) {
  QObject::connect(QGuiApplication::clipboard(), &QClipboard::changed, &connection_,
                   [this](QClipboard::Mode changed) {
                     if (changed != mode_) return;
                     ++change_count_;
                     silence_.invalidate();
                   });
}

void QtPasteboard::set(plist::dictionary content) {
  QGuiApplication::clipboard()->setMimeData(mime_data_of(std::move(content)).release(), mode_);
}

plist::value QtPasteboard::get(std::string_view type) const {
  QMimeData const* const data = QGuiApplication::clipboard()->mimeData(mode_);
  return data == nullptr || !is_answered(*data) ? plist::value() : value_of(*data, type);
}

void QtPasteboard::when_answered(std::function<void()> then) {
  if (owner_ == nullptr) owner_ = ClipboardOwner::make(mode_ == QClipboard::Selection);
  if (owner_ == nullptr) return then();
  owner_->when_answered(std::move(then));
}

// A program that hangs is waited for for seconds, each time that anything is asked. So that a
// paste, which asks for more than one type, waits once, a silence goes for what is asked next too.
bool QtPasteboard::is_answered(QMimeData const& data) const {
  constexpr int patience = 1000;  // in milliseconds
  if (silence_.isValid() && silence_.elapsed() < patience) return false;
  QElapsedTimer asked;
  asked.start();
  bool const has_formats = !data.formats().isEmpty();
  silence_.invalidate();
  if (!has_formats && asked.elapsed() >= patience) silence_.start();
  return has_formats;
}

std::unique_ptr<platform::pasteboard> make_primary_selection() {
  if (QGuiApplication::clipboard()->supportsSelection())
    return std::make_unique<QtPasteboard>(QClipboard::Selection);
  return std::make_unique<headless::memory_pasteboard>();
}

}  // namespace widgets
