#pragma once

#include "grammar/scope_path.h"
#include "platform/graphics.h"
#include "plist/value.h"
#include "styles/scope_style.h"
#include "styles/style_rules.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace styles {
class typing_settings;

/// What the theme and the bundles' preferences give to the scopes of one view, looked up once for
/// each. The owner says by drop() when theme, preferences or language have changed. References are
/// good until the next call. Main thread only.
class view_styles {
 public:
  /// The rules of the theme: those that were set, or else of the one that is selected.
  plist::value const& theme_rules();
  /// Drops all styles.
  void set_theme_rules(plist::value rules);

  /// What applies to these scopes, before it is merged.
  style_candidates candidates(std::vector<std::string> const& scopes);
  /// The merged settings for a path; null when they haven't been added.
  plist::value const* find(bit_stack::storage const& path) const;
  plist::value const& add(bit_stack::storage const& path, std::vector<std::string> const& scopes);

  /// The merged settings for a path of the tokenizer, whose tree it is, or null for none. Costs
  /// what the path has beside its parent, if that was asked for.
  plist::value const& merged(grammar::path_tree const* tree, grammar::path_tree::id path);
  /// Whether text there is in the list of symbols.
  bool is_symbol(grammar::path_tree const& tree, grammar::path_tree::id path);
  bool knows_symbol(grammar::path_tree::id path) const {
    return path < symbols_.size() && symbols_[path] != symbol::unknown;
  }

  /// How text with a path of the tokenizer is drawn; null when it hasn't been added.
  drawn_style const* find_drawn(grammar::path_tree::id path) const;
  drawn_style const& add_drawn(grammar::path_tree::id path, drawn_style style);
  /// Other colours stand in for those that a style hasn't.
  void drop_drawn() { drawn_.clear(); }

  /// What all scopes say of typing.
  typing_settings& typing();

  void drop();

 private:
  style_rules& rules();
  style_rules::state const& state_at(grammar::path_tree const& tree, grammar::path_tree::id path);

  std::optional<plist::value> theme_rules_;
  std::shared_ptr<style_rules> rules_;
  std::map<bit_stack::storage, plist::value> merged_;
  std::unordered_map<grammar::path_tree::id, style_rules::state> states_;
  std::unordered_map<grammar::path_tree::id, plist::value> merged_by_id_;
  enum class symbol : std::uint8_t { unknown, no, yes };
  std::vector<symbol> symbols_;                    ///< by the tokenizer's paths
  std::vector<std::optional<drawn_style>> drawn_;  ///< by the tokenizer's paths
  std::shared_ptr<typing_settings> typing_;
};

}  // namespace styles
