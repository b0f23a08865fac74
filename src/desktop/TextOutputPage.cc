#include "desktop/TextOutputPage.h"

#include "desktop/QtText.h"

#include <QFontDatabase>
#include <QLabel>
#include <QMouseEvent>
#include <QScrollBar>
#include <QVBoxLayout>

namespace widgets {
namespace {

constexpr int read_period = 30;                // milliseconds
constexpr std::size_t read_at_once = 1 << 16;  // bytes: keys and clicks come in between
constexpr int most_lines = 200'000;            // older ones are dropped
constexpr int longest_line = 4096;             // units: what is added lays its line out again

/// The text with ends in lines that are too long; `length` is that of the last line so far.
QString with_short_lines(QString const& text, int& length) {
  QString result;
  result.reserve(text.size());
  for (QChar const unit : text) {
    if (unit == QLatin1Char('\n')) {
      length = 0;
    } else if (++length > longest_line && !unit.isLowSurrogate()) {
      result += QLatin1Char('\n');
      length = 1;
    }
    result += unit;
  }
  return result;
}

}  // namespace

TextOutputPage::Text::Text(TextOutputPage& owner) : owner_(owner) {
  setReadOnly(true);
  setUndoRedoEnabled(false);
  setMaximumBlockCount(most_lines);
  setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  setLineWrapMode(QPlainTextEdit::WidgetWidth);
  setFrameShape(QFrame::NoFrame);
  setMouseTracking(true);
  viewport()->setMouseTracking(true);
  // The caret moves with the arrow keys.
  setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
}

void TextOutputPage::Text::mouseMoveEvent(QMouseEvent* event) {
  QPlainTextEdit::mouseMoveEvent(event);
  bool const is_link = !anchorAt(event->pos()).isEmpty();
  viewport()->setCursor(is_link ? Qt::PointingHandCursor : Qt::IBeamCursor);
}

void TextOutputPage::Text::mouseReleaseEvent(QMouseEvent* event) {
  QPlainTextEdit::mouseReleaseEvent(event);
  QString const link = anchorAt(event->pos());
  if (event->button() == Qt::LeftButton && !link.isEmpty() && !textCursor().hasSelection())
    owner_.follow(utf8(link));
}

// Menus have the other keys.
void TextOutputPage::Text::keyPressEvent(QKeyEvent* event) {
  if (event->modifiers() & (Qt::ControlModifier | Qt::MetaModifier)) return event->ignore();
  QPlainTextEdit::keyPressEvent(event);
}

TextOutputPage::TextOutputPage(platform::html_window_delegate& delegate, std::string const& reason)
    : OutputPage(delegate), text_(new Text(*this)) {
  auto* const note = new QLabel(qstring("This output is shown as plain text: " + reason + "."));
  note->setWordWrap(true);
  note->setMargin(4);
  auto* const layout = new QVBoxLayout(&column_);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(note);
  layout->addWidget(text_, 1);
  column_.setFocusProxy(text_);
  timer_.setInterval(read_period);
  QObject::connect(&timer_, &QTimer::timeout, &column_, [this] { read(); });
  QObject::connect(text_->verticalScrollBar(), &QScrollBar::rangeChanged, &column_, [this] {
    if (delegate_ != nullptr) delegate_->pageDidChangeFrame();
  });
  QObject::connect(text_->verticalScrollBar(), &QScrollBar::valueChanged, &column_, [this] {
    if (delegate_ != nullptr) delegate_->pageDidScroll();
  });
}

TextOutputPage::~TextOutputPage() {
  detach();
}

void TextOutputPage::load(std::string const&, std::shared_ptr<platform::page_stream> content) {
  stop_loading();
  text_->clear();
  line_length_ = 0;
  stream_ = std::move(content);
  reader_ = std::make_unique<platform::html_text>();
  timer_.start();
}

void TextOutputPage::stop_loading() {
  timer_.stop();
  if (stream_ != nullptr) stream_->abandon();
  stream_ = nullptr;
}

void TextOutputPage::read() {
  std::string bytes(read_at_once, '\0');
  auto const stream = stream_;
  bytes.resize(stream->read(bytes.data(), bytes.size()));
  show(reader_->put(bytes));
  if (!stream->at_end()) return;
  timer_.stop();
  show(reader_->finish());
  if (delegate_ != nullptr) delegate_->pageDidFinishLoading();
}

void TextOutputPage::show(std::vector<platform::html_text::span> const& spans) {
  if (spans.empty()) return;
  QTextCursor end(text_->document());
  end.movePosition(QTextCursor::End);
  end.beginEditBlock();
  for (auto const& [text, link] : spans) {
    QTextCharFormat format;
    if (!link.empty()) {
      format.setAnchor(true);
      format.setAnchorHref(qstring(link));
      format.setForeground(text_->palette().link());
      format.setFontUnderline(true);
    }
    end.insertText(with_short_lines(qstring(text), line_length_), format);
  }
  end.endEditBlock();
}

void TextOutputPage::follow(std::string const& link) {
  if (delegate_ != nullptr) delegate_->linkForURL(link, "");
}

// In lines, which is what such a text scrolls by.
platform::page_frame TextOutputPage::frame() const {
  QScrollBar const& bar = *text_->verticalScrollBar();
  auto const height = static_cast<double>(bar.maximum() + bar.pageStep());
  return {{0, double(bar.value()), 1, double(bar.pageStep())}, {1, height}};
}

void TextOutputPage::scroll_to(platform::point upper_left) {
  text_->verticalScrollBar()->setValue(static_cast<int>(upper_left.y));
}

void TextOutputPage::set_text_size(text_size size) {
  if (size == text_size::standard)
    text_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  else
    text_->zoomIn(size == text_size::larger ? 1 : -1);
}

}  // namespace widgets
