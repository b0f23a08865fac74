#include "keys/key_glyphs.h"

#include "platform/event.h"
#include "platform/utf.h"

#include <algorithm>
#include <iterator>

namespace keys {
namespace {

namespace fk = platform::function_key;

struct glyph_row {
  std::string_view name;
  std::u16string_view glyph;
};

constexpr glyph_row glyphs[] = {
    {"pb_enter", u"\u2324"}, {"left", u"\u2190"},      {"up", u"\u2191"},
    {"right", u"\u2192"},    {"down", u"\u2193"},      {"ib_left", u"\u21E0"},
    {"ib_up", u"\u21E1"},    {"ib_right", u"\u21E2"},  {"ib_down", u"\u21E3"},
    {"home", u"\u2196"},     {"end", u"\u2198"},       {"return", u"\u21A9"},
    {"pageup", u"\u21DE"},   {"pagedown", u"\u21DF"},  {"tab", u"\u21E5"},
    {"backtab", u"\u21E4"},  {"shift", u"\u21E7"},     {"space", u"\u2423"},
    {"control", u"\u2303"},  {"enter", u"\u2305"},     {"command", u"\u2318"},
    {"modifier", u"\u2325"}, {"backspace", u"\u232B"}, {"delete", u"\u2326"},
    {"escape", u"\u238B"},   {"numlock", u"\u2327"},   {"help", u"?\u20DD"},
};

struct key_row {
  char32_t key;
  std::string_view name;
};

constexpr key_row named_keys[] = {
    {fk::up, "up"},
    {fk::down, "down"},
    {fk::left, "left"},
    {fk::right, "right"},
    {fk::forward_delete, "delete"},
    {fk::home, "home"},
    {fk::end, "end"},
    {fk::page_up, "pageup"},
    {fk::page_down, "pagedown"},
    {fk::num_lock, "numlock"},
    {fk::help, "help"},
    {fk::tab, "tab"},
    {fk::return_key, "return"},
    {fk::enter, "enter"},
    {fk::back_tab, "backtab"},
    {fk::escape, "escape"},
    {fk::backspace, "backspace"},
    {U' ', "space"},
};

}  // namespace

std::string glyph_named(std::string_view name) {
  auto row = std::ranges::find(glyphs, name, &glyph_row::name);
  return unicode::to_utf8(row == std::end(glyphs) ? u"\uFFFD" : row->glyph);
}

std::string_view name_of_key(char32_t key) {
  auto row = std::ranges::find(named_keys, key, &key_row::key);
  return row == std::end(named_keys) ? std::string_view() : row->name;
}

}  // namespace keys
