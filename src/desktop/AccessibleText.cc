#include "desktop/AccessibleText.h"

#include "desktop/QtText.h"
#include "desktop/TextViewWidget.h"

#include <QTextBoundaryFinder>

#include <algorithm>
#include <limits>

namespace widgets {
namespace {

constexpr std::size_t word_context = 1000;  // units at each side in which words are looked for

// -1 stands for the end.
std::size_t unsigned_offset(int offset) {
  return offset < 0 ? std::numeric_limits<std::size_t>::max() : static_cast<std::size_t>(offset);
}

int signed_offset(std::size_t offset) {
  return static_cast<int>(offset);
}

// From the start of one word or sentence to the start of the next one, in one line.
platform::unit_range item_at(platform::accessible_text& text, std::size_t offset,
                             QTextBoundaryFinder::BoundaryType type) {
  platform::unit_range const line = text.line_at(offset);
  std::size_t const first = std::max(line.first, offset - std::min(offset, word_context));
  std::size_t const last = std::min(line.last, offset + word_context);
  QString const units = qstring(text.text({first, last}));
  QTextBoundaryFinder finder(type, units);
  auto const starts = [&] {
    return bool(finder.boundaryReasons() & QTextBoundaryFinder::StartOfItem);
  };
  auto const at = static_cast<qsizetype>(offset - first);
  finder.setPosition(std::min<qsizetype>(at + 1, units.size()));
  while (finder.position() > 0 && (finder.position() > at || !starts()))
    if (finder.toPreviousBoundary() < 0) break;
  auto const begin = std::max<qsizetype>(finder.position(), 0);
  finder.setPosition(at);
  auto end = units.size();
  while (finder.toNextBoundary() >= 0)
    if (finder.position() > at && starts()) {
      end = finder.position();
      break;
    }
  return {first + static_cast<std::size_t>(begin), first + static_cast<std::size_t>(end)};
}

QString color_name(platform::color c) {
  return QStringLiteral("rgb(%1,%2,%3)").arg(c.red).arg(c.green).arg(c.blue);
}

}  // namespace

AccessibleText::AccessibleText(TextViewWidget& widget)
    : QAccessibleWidget(&widget, QAccessible::EditableText) {
  shown();
}

TextViewWidget& AccessibleText::view() const {
  return static_cast<TextViewWidget&>(*widget());
}

platform::accessible_text* AccessibleText::shown() const {
  return view().accessible_text();
}

void* AccessibleText::interface_cast(QAccessible::InterfaceType type) {
  if (type == QAccessible::TextInterface) return static_cast<QAccessibleTextInterface*>(this);
  if (type == QAccessible::EditableTextInterface)
    return static_cast<QAccessibleEditableTextInterface*>(this);
  return QAccessibleWidget::interface_cast(type);
}

QAccessible::State AccessibleText::state() const {
  QAccessible::State state = QAccessibleWidget::state();
  state.editable = state.multiLine = state.selectableText = true;
  return state;
}

int AccessibleText::selectionCount() const {
  platform::accessible_text* const text = shown();
  return text == nullptr ? 0 : signed_offset(text->selection_count());
}

void AccessibleText::selection(int index, int* first, int* last) const {
  platform::accessible_text* const text = shown();
  text_range range;
  if (text != nullptr && index >= 0) range = text->selection(static_cast<std::size_t>(index));
  *first = signed_offset(range.first);
  *last = signed_offset(range.last);
}

void AccessibleText::removeSelection(int) {
  int const caret = cursorPosition();
  setSelection(0, caret, caret);
}

void AccessibleText::setSelection(int, int first, int last) {
  view().deliver([this, first, last](platform::view_client&) {
    if (platform::accessible_text* const text = shown())
      text->select(unsigned_offset(first), unsigned_offset(last));
  });
}

int AccessibleText::cursorPosition() const {
  platform::accessible_text* const text = shown();
  return text == nullptr ? 0 : signed_offset(text->caret());
}

QString AccessibleText::text(int first, int last) const {
  platform::accessible_text* const text = shown();
  if (text == nullptr) return {};
  return qstring(text->text({unsigned_offset(first), unsigned_offset(last)}));
}

AccessibleText::text_range AccessibleText::range_at(platform::accessible_text& text,
                                                    std::size_t offset,
                                                    QAccessible::TextBoundaryType type) const {
  switch (type) {
    case QAccessible::CharBoundary:
      return text.character_at(offset);
    case QAccessible::WordBoundary:
      return item_at(text, offset, QTextBoundaryFinder::Word);
    case QAccessible::SentenceBoundary:
      return item_at(text, offset, QTextBoundaryFinder::Sentence);
    case QAccessible::LineBoundary:
      return text.row_at(offset);
    case QAccessible::ParagraphBoundary:
      return text.line_at(offset);
    case QAccessible::NoBoundary:
      break;
  }
  return {0, text.length()};
}

QString AccessibleText::told(text_range range, int* first, int* last) const {
  *first = signed_offset(range.first);
  *last = signed_offset(range.last);
  return qstring(shown()->text(range));
}

QString AccessibleText::textAtOffset(int offset, QAccessible::TextBoundaryType type, int* first,
                                     int* last) const {
  *first = *last = 0;
  platform::accessible_text* const text = shown();
  if (text == nullptr) return {};
  return told(range_at(*text, std::min(unsigned_offset(offset), text->length()), type), first,
              last);
}

QString AccessibleText::textBeforeOffset(int offset, QAccessible::TextBoundaryType type, int* first,
                                         int* last) const {
  *first = *last = 0;
  platform::accessible_text* const text = shown();
  if (text == nullptr) return {};
  text_range const here = range_at(*text, std::min(unsigned_offset(offset), text->length()), type);
  if (here.first == 0) return {};
  return told(range_at(*text, here.first - 1, type), first, last);
}

QString AccessibleText::textAfterOffset(int offset, QAccessible::TextBoundaryType type, int* first,
                                        int* last) const {
  *first = *last = 0;
  platform::accessible_text* const text = shown();
  if (text == nullptr) return {};
  text_range const here = range_at(*text, std::min(unsigned_offset(offset), text->length()), type);
  if (here.last >= text->length()) return told({text->length(), text->length()}, first, last);
  return told(range_at(*text, here.last, type), first, last);
}

int AccessibleText::characterCount() const {
  platform::accessible_text* const text = shown();
  return text == nullptr ? 0 : signed_offset(text->length());
}

QRect AccessibleText::characterRect(int offset) const {
  platform::accessible_text* const text = shown();
  return text == nullptr ? QRect() : view().on_screen(text->rect_of(unsigned_offset(offset)));
}

int AccessibleText::offsetAtPoint(QPoint const& point) const {
  platform::accessible_text* const text = shown();
  if (text == nullptr ||
      !view().viewport()->rect().contains(view().viewport()->mapFromGlobal(point)))
    return -1;
  return signed_offset(text->offset_at(view().from_screen(point)));
}

void AccessibleText::scrollToSubstring(int first, int last) {
  if (platform::accessible_text* const text = shown())
    text->scroll_to({unsigned_offset(first), unsigned_offset(last)});
}

QString AccessibleText::attributes(int offset, int* first, int* last) const {
  *first = *last = 0;
  platform::accessible_text* const text = shown();
  if (text == nullptr) return {};
  platform::accessible_style const style = text->style_at(unsigned_offset(offset));
  *first = signed_offset(style.range.first);
  *last = signed_offset(style.range.last);
  QString result = QStringLiteral("font-family:\"%1\";font-size:%2pt;color:%3;background-color:%4;")
                       .arg(qstring(style.letters.family))
                       .arg(style.letters.point_size)
                       .arg(color_name(style.text.foreground), color_name(style.background));
  if (style.text.bold) result += QStringLiteral("font-weight:bold;");
  if (style.text.italic) result += QStringLiteral("font-style:italic;");
  if (style.text.underline) result += QStringLiteral("text-underline-style:solid;");
  return result;
}

void AccessibleText::replaceText(int first, int last, QString const& text) {
  view().deliver([this, first, last, units = utf16(text)](platform::view_client&) {
    if (platform::accessible_text* const shown_text = shown())
      shown_text->replace({unsigned_offset(first), unsigned_offset(last)}, units);
  });
}

}  // namespace widgets
