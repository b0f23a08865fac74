#include "app/batch_scopes.h"

#include <chrono>

#include "grammar/tokenize_filter.h"
#include "platform/utf.h"
#include "textview/WynTextView.h"

namespace {

void print_line(std::string& out, text::unit_view units, grammar::line_tokens const& tokens,
                grammar::path_tree const* paths) {
  out += unicode::to_utf8(units) + "\n";
  grammar::path_tree::id last = ~0u;
  for (auto const& token : tokens) {
    if (token.column != 0 && (token.column >= units.size() || token.path == last)) continue;
    last = token.path;
    out += std::to_string(token.column) + "\t";
    std::string separator;
    for (std::string const& scope :
         paths ? paths->scopes(token.path) : std::vector<std::string>()) {
      out += separator + scope;
      separator = " ";
    }
    out += "\n";
  }
}

}  // namespace

std::string batch_scopes(WynTextView const& text_view) {
  text::storage& storage = *text_view.view()->storage;
  grammar::tokenize_filter* const tokenizer = text_view.tokenizer();
  while (tokenizer && !tokenizer->wait_for(storage.lines(), std::chrono::hours(1))) continue;
  std::string out;
  std::lock_guard lock(storage.mutex);
  for (std::size_t line = 0; line < storage.lines(); ++line)
    print_line(out, storage.line_units(line),
               tokenizer ? tokenizer->tokens(line) : grammar::line_tokens(),
               tokenizer ? tokenizer->paths() : nullptr);
  return out;
}
