#include "textview/symbol_list.h"

#include <algorithm>
#include <map>
#include <mutex>

#include "bundles/item_file.h"
#include "grammar/tokenize_filter.h"
#include "platform/desktop.h"
#include "platform/unicode.h"
#include "platform/utf.h"
#include "regex/transformation_program.h"
#include "textview/WynTextView.h"
#include "textview/scope_style.h"

namespace {

constexpr double rest = 0.5;        // seconds without a change before the list is made anew
constexpr double first_wait = 0.1;  // seconds after a document is shown
// With more of them the walk would be felt at a key press.
constexpr std::size_t most_lines_at_once = 10000;

void replace_each(std::string& text, std::string_view from, std::string_view to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
    text.replace(at, from.size(), to);
}

bool is_blank(std::string const& text) {
  std::u16string const units = unicode::to_utf16(text);
  return std::all_of(units.begin(), units.end(), unicode::is_space);
}

// Kept for good, as there are few, so that a fault in one is told once.
transformation_program const& program_with(plist::value const& source) {
  static std::map<std::string, transformation_program> programs;
  std::string const& text = *source.as_string();
  auto const [place, is_new] = programs.try_emplace(text, text);
  if (std::string const& fault = place->second.fault(); is_new && !fault.empty())
    bundles::complain(origin_of_setting("symbolTransformation", source) + ": " + fault);
  return place->second;
}

// The name of a symbol, from the text between two places and the program of the first one's style.
std::string symbol_name(std::string text, plist::value const& program) {
  replace_each(text, "\n", " ");
  if (program.as_string() == nullptr) return text;
  text = program_with(program).apply(std::move(text));
  replace_each(text, "\n", "\u21B5");
  return text;
}

std::string text_between(text::storage& storage, text::pos first, text::pos last) {
  std::u16string units;
  for (std::size_t line = first.line; line <= last.line && line < storage.lines(); ++line) {
    text::unit_view const all = storage.line_units(line);
    std::size_t const begin = line == first.line ? first.column : 0;
    std::size_t const end =
        line == last.line ? std::min<std::size_t>(last.column, all.size()) : all.size();
    if (line != first.line) units += u'\n';
    if (begin < end) units += all.substr(begin, end - begin);
  }
  return unicode::to_utf8(units);
}

}  // namespace

symbol_list::symbol_list(WynTextView& text_view) : text_view_(text_view) {}

void symbol_list::build() {
  plist::array symbols;
  text::storage& storage = *text_view_.view()->storage;
  grammar::tokenize_filter* const tokenizer = text_view_.tokenizer();
  if (tokenizer != nullptr && tokenizer->paths() != nullptr) {
    tokenizer->start();
    std::lock_guard const lock(storage.mutex);
    bool inside = false;
    text::pos begin;
    plist::value program;
    auto const end_symbol = [&](text::pos end) {
      std::string name = symbol_name(text_between(storage, begin, end), program);
      if (!is_blank(name))
        symbols.push_back(
            plist::dictionary{{"name", std::move(name)}, {"line", begin.line + std::int64_t{1}}});
    };
    for (std::size_t line = 0; line < storage.lines(); ++line)
      for (auto const& token : tokenizer->tokens(line)) {
        if (text_view_.styleOfPath(token.path).is_symbol == inside) continue;
        inside = !inside;
        if (!inside) {
          end_symbol({line, token.column});
          continue;
        }
        begin = {line, token.column};
        program = text_view_.stylesForContext(
            tokenizer->paths()->path(token.path))["symbolTransformation"];
      }
    if (inside) end_symbol(storage.end(-1).pos());
  }
  memento_ = storage.current_memento;
  if (symbols == items_) return;
  items_ = std::move(symbols);
  platform::notification_center::standard().post(WynTextView::function_pop_up_did_change,
                                                 &text_view_);
}

void symbol_list::restart() {
  clear();
  platform::notification_center::standard().post(WynTextView::function_pop_up_did_change,
                                                 &text_view_);
  timer_ =
      platform::desktop::current().loop().schedule(first_wait, false, [this] { build_delayed(); });
}

// Walks all tokens, so while those change it waits until the user rests. Where only the caret has
// moved the list stands.
void symbol_list::update(bool changed) {
  if (text_view_.view() == nullptr) return;
  text::storage const& storage = *text_view_.view()->storage;
  bool const stands = memento_ == storage.current_memento;
  if (!changed && (stands || timer_ != nullptr)) return set_current(at_caret());
  if (!changed && storage.lines() <= most_lines_at_once) return build_delayed();
  timer_ = platform::desktop::current().loop().schedule(rest, false, [this] { build_delayed(); });
}

void symbol_list::build_delayed() {
  timer_.reset();
  if (text_view_.view() == nullptr) return;
  build();
  set_current(at_caret());
}

void symbol_list::clear() {
  timer_.reset();
  items_.clear();
  current_.clear();
}

std::string symbol_list::at_caret() const {
  std::int64_t const line = text_view_.view()->selection.current_mark.base.line + std::int64_t{1};
  auto const behind = std::partition_point(
      items_.begin(), items_.end(),
      [&](plist::value const& symbol) { return symbol["line"].integer_or(0) <= line; });
  if (behind == items_.begin()) return items_.empty() ? "" : "No Symbol";
  return (*std::prev(behind))["name"].string_or("");
}

void symbol_list::set_current(std::string const& name) {
  if (name == current_) return;
  current_ = name;
  text_view_.updateValueForKey(name, "currentSymbol");
}
