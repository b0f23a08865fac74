#pragma once

#include "grammar/scope_path.h"
#include "platform/graphics.h"
#include "plist/value.h"
#include "textview/scope_style.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

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

  /// How text with a path of the tokenizer is drawn; null when it hasn't been added.
  drawn_style const* find_drawn(grammar::path_tree::id path) const;
  drawn_style const& add_drawn(grammar::path_tree::id path, drawn_style style);
  /// Other colours stand in for those that a style hasn't.
  void drop_drawn() { drawn_.clear(); }

  /// What all scopes say of typing.
  typing_settings& typing();

  void drop();

 private:
  plist::value shared_style(std::vector<std::string> const& scopes);

  std::optional<plist::value> theme_rules_;
  std::map<bit_stack::storage, plist::value> merged_;
  std::vector<std::optional<drawn_style>> drawn_;  ///< by the tokenizer's paths
  std::shared_ptr<typing_settings> typing_;
};
