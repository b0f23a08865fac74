#include "desktop/QtText.h"
#include "desktop/TextViewWidget.h"
#include "platform/desktop.h"

#include <QGuiApplication>
#include <QInputMethod>
#include <QInputMethodEvent>

namespace widgets {
namespace {

namespace mod = platform::modifier;

bool is_modifier_key(int key) {
  switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Meta:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
      return true;
    default:
      return false;
  }
}

bool is_text(std::u16string const& characters) {
  if (characters.empty()) return false;
  char16_t const c = characters.front();
  return c >= 0x20 && c != 0x7F && !(0xF700 <= c && c <= 0xF8FF);
}

// Alt with a key whose text it doesn't change is a shortcut that is unknown, and no text.
bool is_shortcut(platform::key_event const& event) {
  if (event.modifiers & (mod::command | mod::control)) return true;
  return (event.modifiers & mod::option) && event.characters == event.characters_ignoring_modifiers;
}

struct preedit_selection {
  std::size_t offset, length;
};

preedit_selection selection_in_preedit(QInputMethodEvent const& event) {
  for (QInputMethodEvent::Attribute const& attribute : event.attributes())
    if (attribute.type == QInputMethodEvent::Cursor)
      return {static_cast<std::size_t>(std::max(0, attribute.start)), 0};
  return {static_cast<std::size_t>(event.preeditString().size()), 0};
}

}  // namespace

void TextViewWidget::keyPressEvent(QKeyEvent* event) {
  if (is_modifier_key(event->key())) return tell_modifiers(event->modifiers());
  platform::key_event const key = keys_.translate(*event);
  if (key.characters.empty()) return event->ignore();
  deliver([this, key](platform::view_client& client) {
    if (!owner_->should_swallow(key)) client.key_down(key);
  });
}

void TextViewWidget::keyReleaseEvent(QKeyEvent* event) {
  if (is_modifier_key(event->key())) tell_modifiers(event->modifiers());
}

void TextViewWidget::tell_modifiers(Qt::KeyboardModifiers modifiers) {
  deliver([modifiers = translate_modifiers(modifiers)](platform::view_client& client) {
    client.modifiers_changed(modifiers);
  });
}

void TextViewWidget::interpret_key_event(platform::key_event const& event) {
  if (client_ == nullptr || owner_->perform_key_equivalent(event)) return;
  if (!is_text(event.characters)) return;
  if (!is_shortcut(event)) {
    client_->insert_text(event.characters);
  } else if (event.modifiers & mod::option) {
    owner_->open_menu_with_letter(qstring(event.characters));
  }
}

void TextViewWidget::inputMethodEvent(QInputMethodEvent* event) {
  event->accept();
  auto& waits = platform::desktop::current().waits();
  if (!waits.is_waiting()) waits.did_type();
  std::u16string const committed = utf16(event->commitString());
  if (event->replacementLength() > 0)
    deliver([offset = event->replacementStart(),
             length = static_cast<std::size_t>(event->replacementLength()),
             committed](platform::view_client& client) {
      client.replace_surrounding_text(offset, length, committed);
    });
  else if (!committed.empty())
    deliver([committed](platform::view_client& client) { client.insert_text(committed); });
  if (!event->commitString().isEmpty() && event->preeditString().isEmpty()) return;
  deliver([text = utf16(event->preeditString()),
           at = selection_in_preedit(*event)](platform::view_client& client) {
    client.set_marked_text(text, at.offset, at.length);
  });
}

QVariant TextViewWidget::inputMethodQuery(Qt::InputMethodQuery query) const {
  if (client_ == nullptr) return query == Qt::ImEnabled ? QVariant(false) : QVariant();
  switch (query) {
    case Qt::ImEnabled:
      return true;
    case Qt::ImCursorRectangle: {
      platform::rect const caret = client_->caret_rect();
      QPoint const at = to_viewport({caret.x, caret.y}) + viewport()->pos();
      return QRectF(at, QSizeF(caret.width, caret.height));
    }
    case Qt::ImFont:
      return font();
    case Qt::ImSurroundingText:
      return qstring(client_->text_around_caret().text);
    case Qt::ImCursorPosition:
      return static_cast<int>(client_->text_around_caret().caret);
    case Qt::ImAnchorPosition:
      return static_cast<int>(client_->text_around_caret().anchor);
    case Qt::ImCurrentSelection:
      return qstring(client_->selected_text());
    default:
      return QAbstractScrollArea::inputMethodQuery(query);
  }
}

void TextViewWidget::input_method_changed(bool abandon) {
  if (!hasFocus()) return;
  if (abandon) QGuiApplication::inputMethod()->reset();
  // An input method asks for the text around the caret only when it hears that it is another one.
  QGuiApplication::inputMethod()->update(Qt::ImCursorRectangle | Qt::ImSurroundingText |
                                         Qt::ImCursorPosition | Qt::ImAnchorPosition);
}

}  // namespace widgets
