#include "keys/displayed_keys.h"

#include "keys/WynKeyEvent.h"
#include "keys/key_strings.h"
#include "platform/unicode.h"
#include "platform/utf.h"

#include <algorithm>
#include <iterator>
#include <map>

namespace keys {
namespace {

namespace fk = platform::function_key;
namespace mod = platform::modifier;

constexpr char16_t function_keys = 35;
constexpr std::size_t most_strokes = 8;  // of one binding

struct key_name {
  char16_t key;
  std::string_view name;
};

// As the keyboard has them.
constexpr key_name key_names[] = {{fk::up, "Up"},
                                  {fk::down, "Down"},
                                  {fk::left, "Left"},
                                  {fk::right, "Right"},
                                  {fk::insert, "Ins"},
                                  {fk::forward_delete, "Del"},
                                  {fk::home, "Home"},
                                  {fk::end, "End"},
                                  {fk::page_up, "PgUp"},
                                  {fk::page_down, "PgDown"},
                                  {fk::num_lock, "NumLock"},
                                  {fk::menu, "Menu"},
                                  {fk::help, "Help"},
                                  {fk::enter, "Enter"},
                                  {fk::tab, "Tab"},
                                  {fk::return_key, "Return"},
                                  {fk::back_tab, "Shift+Tab"},
                                  {fk::escape, "Esc"},
                                  {fk::backspace, "Backspace"},
                                  {u' ', "Space"}};

std::string name_of(std::string const& key) {
  std::u16string const units = unicode::to_utf16(key);
  char16_t const unit = units.size() == 1 ? units[0] : 0;
  if (fk::f1 <= unit && unit < fk::f1 + function_keys)
    return "F" + std::to_string(unit - fk::f1 + 1);
  auto const* const named = std::ranges::find(key_names, unit, &key_name::key);
  return named != std::end(key_names) ? std::string(named->name) : unicode::uppercase(key);
}

using strokes = std::vector<std::string>;
using keys_by_action = std::map<std::string, std::vector<strokes>, std::less<>>;

// What a press of a key does like its twin on the main keyboard.
bool repeats_on_keypad(plist::dictionary const& bindings, std::string const& key) {
  return key.size() > 1 && key.front() == '#' && bindings.contains(key.substr(1));
}

void collect(plist::dictionary const& bindings, strokes& before, keys_by_action& found) {
  for (auto const& [key, binding] : bindings) {
    if (repeats_on_keypad(bindings, key)) continue;
    before.push_back(key);
    if (auto const* const selector = binding.as_string())
      found[*selector].push_back(before);
    else if (binding.as_dictionary() != nullptr && before.size() < most_strokes)
      collect(binding.entries(), before, found);
    before.pop_back();
  }
}

bool is_simpler(strokes const& a, strokes const& b) {
  if (a.size() != b.size()) return a.size() < b.size();
  std::size_t const long_a = displayed_keys(a).size(), long_b = displayed_keys(b).size();
  return long_a != long_b ? long_a < long_b : a < b;
}

void add_keys(std::vector<platform::menu_item>& items, plist::dictionary const& bindings,
              keys_by_action const& bound) {
  for (platform::menu_item& item : items) {
    add_keys(item.items, bindings, bound);
    item.keys.clear();
    if (item.selector.empty()) continue;
    std::string const own = with_capital_for_shift(item.key);
    auto const taken = bindings.find(own);
    bool const is_own =
        !own.empty() && (taken == bindings.end() || taken->second.string_or("") == item.selector);
    if (is_own)
      item.keys.push_back({item.key});
    else
      item.key.clear();
    auto const found = bound.find(item.selector);
    // What a menu hands to the action, keys don't.
    if (found == bound.end() || item.argument) continue;
    for (strokes const& each : found->second)
      if (!is_own || each != strokes{own}) item.keys.push_back(each);
  }
}

}  // namespace

std::string displayed_key(std::string_view key_string) {
  WynKeyEvent event;
  if (!event.initWithString(key_string)) return {};
  std::uint32_t const held = event.qualifiers();
  bool const is_capital = unicode::lowercase(event.key()) != event.key();
  std::string shown;
  if (held & mod::command) shown += "Ctrl+";
  if (held & mod::control) shown += "Meta+";
  if (held & mod::option) shown += "Alt+";
  if ((held & mod::shift) || is_capital) shown += "Shift+";
  if (held & mod::keypad) shown += "Num+";
  return shown + name_of(event.key());
}

std::string displayed_keys(std::vector<std::string> const& key_strings) {
  std::string shown;
  for (std::string const& key : key_strings)
    shown += (shown.empty() ? "" : " ") + displayed_key(key);
  return shown;
}

void add_bound_keys(std::vector<platform::menu_item>& items, plist::dictionary const& bindings) {
  keys_by_action bound;
  strokes none;
  collect(bindings, none, bound);
  for (auto& [action, all] : bound) std::ranges::sort(all, is_simpler);
  add_keys(items, bindings, bound);
}

}  // namespace keys
