#pragma once

#include "grammar/scope_path.h"
#include "styles/symbol.h"
#include "text/pos.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace grammar {
class tokenize_filter;
}
namespace regex {
class transformation_program;
}
namespace text {
struct storage;
}

namespace styles {
class styled_view;

/// Which paths of a tokenizer are symbols, and how these get their names: all that a walk needs of
/// styles. Made on the main thread; then any thread.
class symbol_paths {
 public:
  /// The view must show a document that has a language.
  explicit symbol_paths(styled_view const& text_view);

  bool knows(grammar::path_tree::id path) const { return path < kinds_.size(); }
  bool is_symbol(grammar::path_tree::id path) const { return kinds_[path] != 0; }
  std::string name(std::string text, grammar::path_tree::id path) const;

 private:
  std::vector<std::uint8_t> kinds_;  ///< 0 for no symbol, or the number of its program
  std::vector<regex::transformation_program const*> programs_;  ///< kept for good; null for none
};

/// A walk over the tokens of a text, from its start, that collects the symbols: the runs of text
/// whose style has `showInSymbolList`. It goes some steps at a time, so that nobody waits for a
/// long text; when text or tokens have changed meanwhile a new one has to begin. Any thread.
class symbol_walk {
 public:
  enum class state { under_way, done, unknown_path };

  /// Takes some `steps`, one for each token and line, under the storage's mutex, which the caller
  /// has; the names come from `give_names`, without it. At a path that isn't among `paths` it ends.
  state go_on(text::storage& storage, grammar::tokenize_filter& tokenizer,
              symbol_paths const& paths, std::size_t steps);
  /// Of the runs that the steps so far have found. A hundred of them take about a tenth of a
  /// millisecond.
  void give_names(symbol_paths const& paths);

  /// Those that have got names; to be moved out at the end.
  std::vector<symbol> symbols;

 private:
  struct run {
    std::string text;
    std::size_t line;
    grammar::path_tree::id path;
  };
  std::size_t end_run(text::storage& storage, text::pos end);

  std::size_t line_ = 0, token_ = 0;  ///< what is to be looked at next
  bool inside_ = false;               ///< of a symbol that began at
  text::pos begin_;
  grammar::path_tree::id path_ = 0;  ///< and has this path
  std::vector<run> runs_;
};

}  // namespace styles
