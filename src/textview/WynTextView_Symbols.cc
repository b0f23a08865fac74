#include <algorithm>
#include <map>
#include <mutex>

#include "grammar/tokenize_filter.h"
#include "platform/desktop.h"
#include "platform/unicode.h"
#include "platform/utf.h"
#include "regex/transformation_program.h"
#include "textview/WynTextView.h"

// The functions, headings and so on of a document: the runs of text whose style has
// showInSymbolList.

namespace {

constexpr double rest = 0.5;  // seconds without a change before the list is made anew

void replace_all(std::string& text, std::string_view from, std::string_view to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
    text.replace(at, from.size(), to);
}

bool is_blank(std::string const& text) {
  return text.find_first_not_of(" \t\r\n\v\f") == std::string::npos;
}

// The names of symbols, from the text between two places and the program of the first one's style.
class symbol_names {
 public:
  std::string name_of(std::string text, plist::value const& program) {
    replace_all(text, "\n", " ");
    auto const* const source = program.as_string();
    if (source == nullptr) return text;
    text = programs_.try_emplace(*source, *source).first->second.apply(std::move(text));
    replace_all(text, "\n", "\u21B5");
    return text;
  }

 private:
  std::map<std::string, transformation_program> programs_;
};

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

void WynTextView::buildFunctionPopUp() {
  plist::array symbols;
  if (tokenizer_ != nullptr && tokenizer_->paths() != nullptr) {
    text::storage& storage = *view_->storage;
    tokenizer_->start();
    std::lock_guard const lock(storage.mutex);
    symbol_names names;
    bool inside = false;
    text::pos begin;
    plist::value program;
    auto const end_symbol = [&](text::pos end) {
      std::string name = names.name_of(text_between(storage, begin, end), program);
      if (!is_blank(name))
        symbols.push_back(
            plist::dictionary{{"name", std::move(name)}, {"line", begin.line + std::int64_t{1}}});
    };
    for (std::size_t line = 0; line < storage.lines(); ++line)
      for (auto const& token : tokenizer_->tokens(line)) {
        if (styleOfPath(token.path).is_symbol == inside) continue;
        inside = !inside;
        if (!inside) {
          end_symbol({line, token.column});
          continue;
        }
        begin = {line, token.column};
        program = stylesForContext(tokenizer_->paths()->path(token.path))["symbolTransformation"];
      }
    if (inside) end_symbol(storage.end(-1).pos());
  }
  symbolsMemento_ = view_->storage->current_memento;
  if (symbols == functionPopUp_) return;
  functionPopUp_ = std::move(symbols);
  platform::notification_center::standard().post(function_pop_up_did_change, this);
}

// Walks all tokens, so it waits until the user rests. Where only the caret has moved the list
// stands.
void WynTextView::updateFunctionPopUp(bool changed) {
  if (view_ == nullptr) return;
  if (!changed && symbolsMemento_ == view_->storage->current_memento)
    return setCurrentSymbol(symbolAtCaret());
  if (symbolTimer_ != nullptr && !changed) return;
  symbolTimer_ = platform::desktop::current().loop().schedule(
      rest, false, [this] { delayedUpdateFunctionPopUp(); });
}

void WynTextView::delayedUpdateFunctionPopUp() {
  symbolTimer_.reset();
  if (view_ == nullptr) return;
  buildFunctionPopUp();
  setCurrentSymbol(symbolAtCaret());
}

std::string WynTextView::symbolAtCaret() const {
  std::int64_t const line = view_->selection.current_mark.base.line + std::int64_t{1};
  auto const behind = std::partition_point(
      functionPopUp_.begin(), functionPopUp_.end(),
      [&](plist::value const& symbol) { return symbol["line"].integer_or(0) <= line; });
  if (behind == functionPopUp_.begin()) return functionPopUp_.empty() ? "" : "No Symbol";
  return (*std::prev(behind))["name"].string_or("");
}

void WynTextView::setCurrentSymbol(std::string const& name) {
  if (name == currentSymbol_) return;
  currentSymbol_ = name;
  updateValueForKey(name, "currentSymbol");
}
