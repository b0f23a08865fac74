#include "desktop/KeyTranslation.h"

#include "desktop/QtText.h"
#include "keys/displayed_keys.h"

#include <algorithm>
#include <iterator>

namespace widgets {
namespace {

namespace key = platform::function_key;
namespace mod = platform::modifier;

struct named_key {
  int qt;
  char16_t character;
};

constexpr named_key named_keys[] = {
    {Qt::Key_Up, key::up},
    {Qt::Key_Down, key::down},
    {Qt::Key_Left, key::left},
    {Qt::Key_Right, key::right},
    {Qt::Key_Insert, key::insert},
    {Qt::Key_Delete, key::forward_delete},
    {Qt::Key_Home, key::home},
    {Qt::Key_End, key::end},
    {Qt::Key_PageUp, key::page_up},
    {Qt::Key_PageDown, key::page_down},
    {Qt::Key_NumLock, key::num_lock},
    {Qt::Key_Menu, key::menu},
    {Qt::Key_Help, key::help},
    {Qt::Key_Enter, key::enter},
    {Qt::Key_Tab, key::tab},
    {Qt::Key_Return, key::return_key},
    {Qt::Key_Backtab, key::back_tab},
    {Qt::Key_Escape, key::escape},
    {Qt::Key_Backspace, key::backspace},
};
constexpr int function_keys = 35;

char16_t named_character(QKeyEvent const& event) {
  int const code = event.key();
  if (Qt::Key_F1 <= code && code < Qt::Key_F1 + function_keys)
    return static_cast<char16_t>(key::f1 + (code - Qt::Key_F1));
  // Some layouts give plain Tab together with Shift.
  if (code == Qt::Key_Tab && (event.modifiers() & Qt::ShiftModifier)) return key::back_tab;
  auto const it = std::find_if(std::begin(named_keys), std::end(named_keys),
                               [&](named_key const& k) { return k.qt == code; });
  if (it != std::end(named_keys)) return it->character;
  // Programs that type for the user send the line feed of a text as a key that no keyboard has.
  bool const has_character = 0x20 <= code && code < Qt::Key_Escape;
  return event.text() == QLatin1String("\n") && !has_character ? key::return_key : 0;
}

bool is_function_character(char16_t c) {
  return 0xF700 <= c && c <= 0xF8FF;
}

bool is_printable(QString const& text) {
  return !text.isEmpty() && text[0].unicode() >= 0x20 && text[0].unicode() != 0x7F;
}

bool is_shortcut(std::uint32_t modifiers) {
  return modifiers & (mod::control | mod::option | mod::command);
}

bool is_of_another_script(QString const& text) {
  if (text.isEmpty()) return false;
  QChar::Script const script = QChar::script(text.toUcs4().front());
  return script != QChar::Script_Latin && script > QChar::Script_Common;
}

// What the key gives without Ctrl and Alt, as far as Qt's key codes tell: letters come as capitals.
QString text_of_code(QKeyEvent const& event) {
  int const code = event.key();
  if (code < 0x20 || code >= Qt::Key_Escape) return {};
  QString const text = QString::fromUcs4(reinterpret_cast<char32_t const*>(&code), 1);
  return event.modifiers() & Qt::ShiftModifier ? text : text.toLower();
}

// Without a keyboard layout to ask, as on Wayland.
void set_characters_from_event(platform::key_event& out, QKeyEvent const& event) {
  QString const plain = text_of_code(event);
  out.characters = utf16(is_printable(event.text()) ? event.text() : plain);
  out.characters_ignoring_modifiers = plain.isEmpty() ? out.characters : utf16(plain);
}

}  // namespace

std::uint32_t translate_modifiers(Qt::KeyboardModifiers modifiers) {
  std::uint32_t bits = 0;
  if (modifiers & Qt::ShiftModifier) bits |= mod::shift;
  if (modifiers & Qt::MetaModifier) bits |= mod::control;
  if (modifiers & Qt::AltModifier) bits |= mod::option;
  if (modifiers & Qt::ControlModifier) bits |= mod::command;
  return bits;
}

KeyboardLayout* KeyTranslation::layout() {
  if (!tried_layout_) layout_ = KeyboardLayout::make();
  tried_layout_ = true;
  return layout_.get();
}

std::function<std::u16string(std::uint32_t)> KeyTranslation::latin_text(QKeyEvent const& event) {
  std::uint32_t const code = event.nativeScanCode(), state = event.nativeModifiers();
  if (layout() != nullptr)
    return [layout = layout_, code, state](std::uint32_t modifiers) {
      return layout->latin_text(code, state, modifiers);
    };
  if (!is_of_another_script(text_of_code(event))) return [](std::uint32_t) { return u""; };
  if (latin_keys_ == nullptr) latin_keys_ = std::make_shared<LatinKeys>();
  return [keys = latin_keys_, code](std::uint32_t modifiers) {
    return keys->text(code, modifiers & mod::shift);
  };
}

platform::key_event KeyTranslation::translate(QKeyEvent const& event) {
  platform::key_event out;
  out.modifiers = translate_modifiers(event.modifiers());
  if (event.modifiers() & Qt::KeypadModifier) out.modifiers |= mod::keypad;

  if (char16_t const named = named_character(event)) {
    out.characters = out.characters_ignoring_modifiers = {named};
    if (is_function_character(named)) out.modifiers |= mod::function;
    return out;
  }

  std::uint32_t const code = event.nativeScanCode(), state = event.nativeModifiers();
  if (is_shortcut(out.modifiers) && code != 0)
    if (auto const latin = latin_text(event); !latin(0).empty()) {
      out.characters = out.characters_ignoring_modifiers = latin(out.modifiers);
      out.string_for = latin;
      return out;
    }
  // Synthesized events (tests, input methods, remote desktops) come without a hardware key.
  if (code == 0 || layout() == nullptr || layout()->text(code, state, 0).empty()) {
    set_characters_from_event(out, event);
    return out;
  }
  constexpr std::uint32_t text_modifiers = mod::shift | mod::option;
  out.characters = is_printable(event.text())
                       ? utf16(event.text())
                       : layout_->text(code, state, out.modifiers & text_modifiers);
  out.characters_ignoring_modifiers = layout_->text(code, state, out.modifiers & mod::shift);
  out.string_for = [layout = layout_, code, state](std::uint32_t modifiers) {
    return layout->text(code, state, modifiers);
  };
  return out;
}

QString key_string_for_display(std::string_view key_string) {
  return qstring(keys::displayed_key(key_string));
}

}  // namespace widgets
