#include "app/batch_scopes.h"

#include "bundles/shipped_grammars.h"
#include "grammar/tokenize_filter.h"
#include "path/file_system.h"
#include "path/path.h"
#include "platform/library_folders.h"
#include "platform/user_defaults.h"
#include "platform/utf.h"
#include "text/storage.h"

namespace {

void print_line(std::string& out, text::unit_view units, grammar::line_tokens const& tokens,
                grammar::path_tree const& paths) {
  out += unicode::to_utf8(units) + "\n";
  grammar::path_tree::id last = ~0u;
  for (auto const& token : tokens) {
    if (token.column != 0 && (token.column >= units.size() || token.path == last)) continue;
    last = token.path;
    out += std::to_string(token.column) + "\t";
    std::string separator;
    for (std::string const& scope : paths.scopes(token.path)) {
      out += separator + scope;
      separator = " ";
    }
    out += "\n";
  }
}

}  // namespace

std::string batch_scopes(text::storage& storage, std::string const& path) {
  std::string const file = platform::user_defaults::standard().string("WynGrammarFile");
  shipped_grammars const grammars =
      read_shipped_grammars(path::join(platform::shared_support_folder(), "Bundles"), file);
  unsigned start = file.empty() ? grammars.index_for(path) : 0;
  auto all_rules = grammars.all_rules;
  if (start >= all_rules->size()) {
    all_rules = std::make_shared<grammar::catalogue const>(
        std::vector<grammar::catalogue::entry>{{"", "", "", [] { return plist::dictionary(); }}});
    start = 0;
  }
  grammar::tokenize_filter tokenizer(storage);
  tokenizer.set_rules(all_rules, start);
  while (!tokenizer.wait_for(storage.lines(), std::chrono::hours(1))) continue;
  std::string out;
  std::lock_guard lock(storage.mutex);
  for (std::size_t line = 0; line < storage.lines(); ++line)
    print_line(out, storage.line_units(line), tokenizer.tokens(line), *tokenizer.paths());
  return out;
}
