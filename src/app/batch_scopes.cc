#include "app/batch_scopes.h"

#include <chrono>
#include <functional>
#include <mutex>
#include <new>

#include "grammar/tokenize_filter.h"
#include "platform/utf.h"
#include "textview/WynTextView.h"

namespace app {
namespace {

using path_id = grammar::path_tree::id;

std::string lines_with_runs(WynTextView const& text_view,
                            std::function<std::string(path_id)> const& description) {
  wait_for_scopes(text_view);
  text::storage& storage = *text_view.view()->storage;
  grammar::tokenize_filter const* const tokenizer = text_view.tokenizer();
  grammar::line_tokens const none;
  std::string out;
  std::lock_guard lock(storage.mutex);
  for (std::size_t line = 0; line < storage.lines(); ++line) {
    text::unit_view const units = storage.line_units(line);
    out += unicode::to_utf8(units) + "\n";
    path_id last = ~0u;
    for (auto const& token : tokenizer ? tokenizer->tokens(line) : none) {
      if (token.column != 0 && (token.column >= units.size() || token.path == last)) continue;
      last = token.path;
      out += std::to_string(token.column) + "\t" + description(token.path) + "\n";
    }
  }
  return out;
}

std::string hexadecimal(platform::color c) {
  char text[16];
  std::snprintf(text, sizeof text, "#%02X%02X%02X", c.red, c.green, c.blue);
  if (c.alpha != 255) std::snprintf(text + 7, sizeof text - 7, "%02X", c.alpha);
  return text;
}

}  // namespace

void wait_for_scopes(WynTextView const& text_view, std::size_t line) {
  grammar::tokenize_filter* const tokenizer = text_view.tokenizer();
  while (tokenizer && !tokenizer->wait_for(line, std::chrono::hours(1))) continue;
  if (tokenizer && tokenizer->lacks_memory()) throw std::bad_alloc();
}

std::string batch_scopes(WynTextView const& text_view) {
  return lines_with_runs(text_view, [&](path_id path) {
    auto const* const tokenizer = text_view.tokenizer();
    std::string names;
    if (tokenizer && tokenizer->paths())
      for (std::string const& scope : tokenizer->paths()->scopes(path))
        names += (names.empty() ? "" : " ") + scope;
    return names;
  });
}

std::string batch_styles(WynTextView const& text_view) {
  auto const background = text_view.styleOfPath(0).background;
  return lines_with_runs(text_view, [&](path_id path) {
    styles::drawn_style const& style = text_view.styleOfPath(path);
    std::string text = hexadecimal(style.text.foreground);
    if (style.background && style.background != background)
      text += " on " + hexadecimal(*style.background);
    if (style.text.bold) text += " bold";
    if (style.text.italic) text += " italic";
    if (style.text.underline) text += " underline";
    return text;
  });
}

std::string batch_symbols(WynTextView& text_view) {
  wait_for_scopes(text_view);
  text_view.buildFunctionPopUp();
  std::string out;
  for (styles::symbol const& each : text_view.functionPopUp())
    out += std::to_string(each.line - 1) + "\t" + each.name + "\n";
  return out;
}

}  // namespace app
