#include "app/batch_scopes.h"

#include "bundles/shipped_grammars.h"
#include "grammar/line_parser.h"
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

std::string batch_scopes(text::storage const& storage, std::string const& path) {
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
  auto const paths = std::make_shared<grammar::path_tree>(*all_rules, start);
  grammar::line_parser parser(all_rules, start, paths);
  grammar::reference_stack references;
  std::atomic<bool> const stop = false;
  std::string out;
  for (std::size_t line = 0; line < storage.lines(); ++line) {
    text::unit_view const units = storage.line_units(line);
    bool const is_last = line + 1 == storage.lines();
    grammar::line_tokens tokens;
    parser.parse_line(std::u16string(units) + (is_last ? u"" : u"\n"), is_last, tokens, references,
                      stop);
    print_line(out, units, tokens, *paths);
  }
  return out;
}
