#include "styles/symbol_walk.h"

#include <algorithm>
#include <map>
#include <mutex>

#include "grammar/tokenize_filter.h"
#include "platform/log.h"
#include "platform/unicode.h"
#include "platform/utf.h"
#include "regex/transformation_program.h"
#include "styles/scope_style.h"
#include "styles/styled_view.h"
#include "text/views/view.h"

namespace styles {
namespace {

// Beside one for each line and each token.
constexpr std::size_t steps_for_symbol = 100;
constexpr std::size_t steps_for_path = 300;

void replace_each(std::string& text, std::string_view from, std::string_view to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
    text.replace(at, from.size(), to);
}

bool is_blank(std::string const& text) {
  std::u16string const units = unicode::to_utf16(text);
  return std::all_of(units.begin(), units.end(), unicode::is_space);
}

// Kept for good, as there are few, so that a fault in one is reported once.
regex::transformation_program const& program_with(plist::value const& source) {
  static std::map<std::string, regex::transformation_program> programs;
  std::string const& text = *source.as_string();
  auto const [place, is_new] = programs.try_emplace(text, text);
  if (std::string const& fault = place->second.fault(); is_new && !fault.empty())
    platform::log_once(origin_of_setting("symbolTransformation", source) + ": " + fault);
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

symbol_walk::symbol_walk(styled_view& text_view)
    : text_view_(text_view), memento_(text_view.view()->storage->current_memento) {}

// The steps that it was.
std::size_t symbol_walk::end_symbol(text::pos end) {
  std::string text = text_between(*text_view_.view()->storage, begin_, end);
  std::size_t const steps = steps_for_symbol + text.size();
  std::string name = symbol_name(std::move(text), program_);
  if (!is_blank(name)) symbols.push_back({std::move(name), begin_.line + std::size_t{1}});
  return steps;
}

bool symbol_walk::go_on(std::size_t steps) {
  grammar::tokenize_filter* const tokenizer = text_view_.tokenizer();
  if (tokenizer == nullptr || tokenizer->paths() == nullptr) return true;
  tokenizer->start();
  text::storage& storage = *text_view_.view()->storage;
  std::lock_guard const lock(storage.mutex);
  std::size_t taken = 0;
  for (; line_ < storage.lines(); ++line_, token_ = 0, ++taken) {
    grammar::line_tokens const& tokens = tokenizer->tokens(line_);
    for (; token_ < tokens.size(); ++token_, ++taken) {
      if (taken >= steps) return false;
      auto const token = tokens[token_];
      if (!text_view_.knowsSymbol(token.path)) taken += steps_for_path;
      if (text_view_.isSymbol(token.path) == inside_) continue;
      inside_ = !inside_;
      if (inside_) {
        begin_ = {line_, token.column};
        program_ = text_view_.stylesOfPath(token.path)["symbolTransformation"];
      } else {
        taken += end_symbol({line_, token.column});
      }
    }
  }
  if (inside_) end_symbol(storage.end(-1).pos());
  inside_ = false;
  return true;
}

}  // namespace styles
