#pragma once

#include "grammar/rule.h"
#include "plist/value.h"
#include "text/char_types.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace styles {

/// What the settings of all the scopes that there are say of typing. Where a text is not visible,
/// that spares most of what is typed the question which scope it is in, for which the text would
/// have to be parsed. Main thread only.
class typing_settings {
 public:
  /// Of the preferences of all bundles, the rules of a theme, and the pairs of all texts in the
  /// user defaults: the same object as long as these are the same.
  static std::shared_ptr<typing_settings> of(plist::value const& theme_rules);

  /// Whether a unit begins a pair anywhere.
  bool opens_pair(text::char_t unit) const { return openers_.find(unit) != openers_.npos; }
  /// Whether any scope in texts of a grammar, of which `root_scope` is the outermost, says how
  /// lines are indented.
  bool indents(grammar::catalogue const& all_rules, unsigned start_rule,
               std::string const& root_scope);

 private:
  typing_settings(plist::value const& theme_rules, plist::value const& default_pairs);
  void add_openers(plist::value const& pairs);
  void add(std::string const& selector, plist::value const& settings);

  std::u16string openers_;
  std::vector<std::string> indenting_selectors_;
  std::map<std::string, bool> indents_;  // by root scope, as far as asked
};

}  // namespace styles
