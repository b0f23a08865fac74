#include "data_rows.h"
#include "keys/WynKeyEvent.h"
#include "keys/key_glyphs.h"
#include "platform/utf.h"

using namespace keys;

namespace {

namespace mod = platform::modifier;

/// One key of a keyboard layout: its text under each set of shift, option and command.
using layout_key = std::map<std::uint32_t, std::u16string>;

platform::key_event press(layout_key const& key, std::uint32_t modifiers) {
  auto const text = [key](std::uint32_t m) {
    for (auto masked : {m, m & ~mod::command, m & mod::shift, 0U})
      if (auto it = key.find(masked); it != key.end()) return it->second;
    return std::u16string();
  };
  platform::key_event event;
  event.characters = text(modifiers & (mod::shift | mod::option));
  event.characters_ignoring_modifiers = text(modifiers & mod::shift);
  event.modifiers = modifiers;
  event.string_for = text;
  return event;
}

platform::key_event without_layout(std::u16string characters, std::u16string ignoring,
                                   std::uint32_t modifiers) {
  return {std::move(characters), std::move(ignoring), modifiers, nullptr};
}

std::string key_string(platform::key_event const& event) {
  return WynKeyEvent::keyEventWithEvent(event).stringRepresentation();
}

layout_key letter(char16_t c) {
  return {{0, {c}}, {mod::shift, {static_cast<char16_t>(c - 32)}}};
}

}  // namespace

TEST(key_event, string_form) {
  for (auto const& row : data_rows("keys.txt", "strings")) {
    SCOPED_TRACE(row[0]);
    auto const* event = WynKeyEvent::keyEventWithString(row[0]);
    ASSERT_NE(event, nullptr);
    EXPECT_EQ(event->stringRepresentation(), row[1]);
    EXPECT_EQ(WynKeyEvent::keyEventWithString(row[0]), event);
  }
  EXPECT_EQ(WynKeyEvent::keyEventWithString(""), nullptr);
  EXPECT_EQ(WynKeyEvent().stringRepresentation(), "");
  EXPECT_EQ(WynKeyEvent("", mod::command).stringRepresentation(), "");
  EXPECT_EQ(WynKeyEvent("a", 0xFFFFFFFF).qualifiers(), WynKeyEvent::qualifier_mask);
}

TEST(key_event, events_of_a_keyboard_layout) {
  layout_key const six = {{0, u"6"}, {mod::shift, u"^"}};
  layout_key const german_seven = {{0, u"7"}, {mod::shift, u"/"}, {mod::option, u"|"}};
  layout_key const option_letter = {{0, u"p"}, {mod::shift, u"P"}, {mod::option, u"π"}};
  layout_key const cyrillic = {
      {0, u"с"}, {mod::shift, u"С"}, {mod::command, u"c"}, {mod::command | mod::shift, u"C"}};
  layout_key const symbol_under_command = {{0, u"ж"}, {mod::command, u";"}};
  layout_key const eight = {{0, u"8"}};
  layout_key const left = {{0, u"\uF702"}};
  struct {
    layout_key key;
    std::uint32_t modifiers;
    char const* expected;
  } const rows[] = {
      {letter(u'a'), 0, "a"},
      {letter(u'a'), mod::shift, "A"},
      {letter(u'z'), mod::command | mod::shift, "@Z"},
      {letter(u'x'), mod::option, "~x"},
      {letter(u'x'), mod::option | mod::shift, "~X"},
      {six, mod::shift, "^"},
      {six, mod::shift | mod::command, "@^"},
      {german_seven, mod::option, "|"},
      {option_letter, mod::option, "~p"},
      {cyrillic, 0, "с"},
      {cyrillic, mod::command, "@c"},
      {cyrillic, mod::command | mod::shift, "@C"},
      {cyrillic, mod::command | mod::option, "~@c"},
      {symbol_under_command, mod::command | mod::shift, "$@;"},
      {eight, mod::keypad, "#8"},
      {letter(u'a'), mod::keypad, "a"},
      {left, mod::keypad, "\uF702"},
      {left, mod::shift | mod::option, "~$\uF702"},
      {{{0, u" "}}, mod::shift, "$ "},
      {{{0, u"\r"}}, mod::command, "@\r"},
  };
  for (auto const& row : rows) EXPECT_EQ(key_string(press(row.key, row.modifiers)), row.expected);
}

TEST(key_event, text_made_by_a_modifier_without_a_bit) {
  layout_key const german_q = {{0, u"q"}, {mod::shift, u"Q"}};
  auto event = press(german_q, 0);
  event.characters = u"@";  // AltGr
  EXPECT_EQ(key_string(event), "@");
  event.modifiers = mod::command;
  EXPECT_EQ(key_string(event), "@@");

  auto locked = press(german_q, mod::command);
  locked.characters = u"Q";  // Caps Lock
  EXPECT_EQ(key_string(locked), "@q");
}

TEST(key_event, events_without_a_layout) {
  struct {
    platform::key_event event;
    char const* expected;
  } const rows[] = {
      {without_layout(u"a", u"a", mod::command), "@a"},
      {without_layout(u"A", u"A", mod::shift), "A"},
      {without_layout(u"\u0001", u"a", mod::control), "^a"},
      {without_layout(u"|", u"7", mod::option), "|"},
      {without_layout(u"π", u"p", mod::option), "~p"},
      {without_layout(u"z", u"Z", mod::shift | mod::command), "@Z"},
      {without_layout(u"\u0019", u"\u0019", mod::shift), "\x19"},
      {without_layout(u"\uF702", u"\uF702", mod::shift), "$\uF702"},
      {without_layout(u"\uF704", u"\uF704", mod::option | mod::function), "~\uF704"},
      {without_layout(u"1", u"1", mod::keypad | mod::command), "#@1"},
      {without_layout(u"\uF702", u"\uF702", mod::keypad | mod::function), "\uF702"},
      {without_layout(u"\u0003", u"\u0003", mod::keypad | mod::shift), "$\x03"},
      {without_layout(u"😀", u"😀", 0), "😀"},
      {without_layout(u"", u"", mod::shift), ""},
  };
  for (auto const& row : rows) EXPECT_EQ(key_string(row.event), row.expected);

  WynKeyEvent event("x", mod::command);
  EXPECT_FALSE(event.parseEvent(rows[0].event));
  EXPECT_FALSE(event.parseEvent(press({}, mod::shift)));
  EXPECT_EQ(event.stringRepresentation(), "@x");
}

TEST(key_event, keypad_equals_its_twin_one_way) {
  WynKeyEvent const keypad("5", mod::keypad | mod::command), main("5", mod::command);
  EXPECT_TRUE(keypad.isEqual(main));
  EXPECT_FALSE(main.isEqual(keypad));
  EXPECT_TRUE(keypad.isEqual(keypad));
  EXPECT_FALSE(main.isEqual(WynKeyEvent("5", 0)));
  EXPECT_FALSE(main.isEqual(WynKeyEvent("6", mod::command)));
}

TEST(key_event, glyphs) {
  for (auto const& row : data_rows("keys.txt", "glyphs"))
    EXPECT_EQ(WynKeyEvent::keyEventWithString(row[0])->glyphRepresentation(), row[1]);
  EXPECT_EQ(WynKeyEvent().glyphRepresentation(), "(none)");
  EXPECT_EQ(glyph_named("pb_enter"), "\u2324");
  EXPECT_EQ(glyph_named("no such name"), "\uFFFD");
}
