#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "grammar/selector_set.h"
#include "plist/value.h"
#include "styles/scope_style.h"

namespace styles {

/// All that says how text looks and behaves: the preferences of all bundles and the rules of a
/// theme, prepared for many scope paths. A path is a state, which follows from that of its parent.
///
///     style_rules::state at;
///     for (std::string const& name : scopes) rules->enter(name, at);
///     plist::value const style = rules->merged(at);
///
/// Main thread only.
class style_rules {
 public:
  using state = scope::selector_set::state;

  /// The same object as long as theme and bundles are the same.
  static std::shared_ptr<style_rules> of(plist::value const& theme_rules);

  /// Goes into a scope.
  void enter(std::string_view scope, state& at) { selectors_->enter(scope, at); }
  /// What merged_style() makes of all that apply. Paths at which the same rules apply in the same
  /// order share it.
  plist::value merged(state const& at);
  /// Whether text there is in the list of symbols. What says nothing of that isn't scored.
  bool is_symbol(state const& at);

 private:
  struct rule {
    std::shared_ptr<scope::selector_node const> selector;
    plist::value content;
    std::shared_ptr<BundleItem> item;  ///< its content is read when it first applies
    plist::value const& contents();
  };

  explicit style_rules(plist::value const& theme_rules);

  std::vector<rule> rules_;  ///< of those that score the same a later one wins
  std::optional<scope::selector_set> selectors_;
  std::vector<std::size_t> symbol_rules_;  ///< those that may have a word on symbols
  std::map<std::vector<std::size_t>, plist::value> merged_;
};

}  // namespace styles
