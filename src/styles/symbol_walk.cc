#include "styles/symbol_walk.h"

#include <algorithm>
#include <map>

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

constexpr std::size_t steps_for_symbol = 100;  // beside one for each line, token and byte

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

symbol_paths::symbol_paths(styled_view const& text_view) {
  constexpr std::size_t most_programs = 255;
  programs_.push_back(nullptr);
  std::map<std::string, std::uint8_t> numbers;
  std::size_t const count = text_view.tokenizer()->paths()->size();
  kinds_.resize(count);
  for (grammar::path_tree::id path = 0; path < count; ++path) {
    if (!text_view.isSymbol(path)) continue;
    kinds_[path] = 1;
    plist::value const source = text_view.stylesOfPath(path)["symbolTransformation"];
    if (source.as_string() == nullptr || programs_.size() == most_programs) continue;
    auto const [number, is_new] =
        numbers.try_emplace(*source.as_string(), static_cast<std::uint8_t>(programs_.size() + 1));
    if (is_new) programs_.push_back(&program_with(source));
    kinds_[path] = number->second;
  }
}

std::string symbol_paths::name(std::string text, grammar::path_tree::id path) const {
  replace_each(text, "\n", " ");
  regex::transformation_program const* const program = programs_[kinds_[path] - 1U];
  if (program == nullptr) return text;
  text = program->apply(std::move(text));
  replace_each(text, "\n", "\u21B5");
  return text;
}

// The steps that it was.
std::size_t symbol_walk::end_run(text::storage& storage, text::pos end) {
  runs_.push_back({text_between(storage, begin_, end), begin_.line + std::size_t{1}, path_});
  return steps_for_symbol + runs_.back().text.size();
}

symbol_walk::state symbol_walk::go_on(text::storage& storage, grammar::tokenize_filter& tokenizer,
                                      symbol_paths const& paths, std::size_t steps) {
  std::size_t taken = 0;
  for (; line_ < storage.lines(); ++line_, token_ = 0, ++taken) {
    grammar::line_tokens const& tokens = tokenizer.tokens(line_);
    for (; token_ < tokens.size(); ++token_, ++taken) {
      if (taken >= steps) return state::under_way;
      auto const token = tokens[token_];
      if (!paths.knows(token.path)) return state::unknown_path;
      if (paths.is_symbol(token.path) == inside_) continue;
      inside_ = !inside_;
      if (inside_) {
        begin_ = {line_, token.column};
        path_ = token.path;
      } else {
        taken += end_run(storage, {line_, token.column});
      }
    }
    if (taken >= steps) {
      ++line_;
      token_ = 0;
      return state::under_way;
    }
  }
  if (inside_) end_run(storage, storage.end(-1).pos());
  inside_ = false;
  return state::done;
}

void symbol_walk::give_names(symbol_paths const& paths) {
  for (run& each : runs_) {
    std::string name = paths.name(std::move(each.text), each.path);
    if (!is_blank(name)) symbols.push_back({std::move(name), each.line});
  }
  runs_.clear();
}

}  // namespace styles
