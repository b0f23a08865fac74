#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "grammar/rule.h"
#include "grammar/scope_selector.h"
#include "plist/value.h"
#include "text/char_types.h"
#include "text/pos.h"

namespace search {

/// Which places of texts count, by their scopes: as the grammars of their languages say, which are
/// told by the names and first lines of the files. Made on the main thread, of the languages and
/// settings at that time; used on any.
class scope_filter {
 public:
  /// Null, with the reason, if that is no selector.
  static std::shared_ptr<scope_filter const> make(std::string const& selector, std::string& fault);

  /// For each of the places, which come in order, whether it is in scope. Takes the time of parsing
  /// the text up to the last one; ends early, with none of the rest in scope, when `cancelled`.
  std::vector<bool> in_scope(text::unit_view text, std::string const& path,
                             std::vector<text::pos> const& places,
                             std::atomic<bool> const& cancelled) const;

 private:
  unsigned rule_for(std::string const& path, text::unit_view text) const;

  std::shared_ptr<scope::selector_node const> selector_;
  std::shared_ptr<grammar::catalogue const> rules_;
  plist::array languages_, bindings_;
  std::vector<std::string> uuids_;  // of the grammars, as `rules_` counts them
  std::string default_language_;
};

}  // namespace search
