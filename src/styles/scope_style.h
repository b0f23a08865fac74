#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/graphics.h"
#include "plist/value.h"

class BundleItem;

namespace styles {

/// How a place in the text looks and behaves: all rules of the theme and all preferences of bundles
/// whose selectors apply to the place's scopes, merged into one dictionary of settings. Scopes are
/// lists of names, outermost first. Main thread only.
///
///     style_candidates candidates;
///     GetDefaultSettings(scopes, candidates);
///     add_theme_rules(theme_rules, scopes, candidates);
///     plist::value const style = merged_style(candidates);

/// A rule or preference that applies.
struct style_rule {
  plist::value content;              ///< with `settings`
  std::shared_ptr<BundleItem> item;  ///< the preference; null for a rule of the theme
};

/// By score; of equal scores the later one wins.
using style_candidates = std::multimap<double, style_rule>;

/// The preferences of all bundles, those of a lower layer first: of equal scores the user's own win
/// over installed ones and these over shipped ones.
std::vector<std::shared_ptr<BundleItem>> preferences_by_layer();
/// Where a selector stands, for messages.
std::string place_of_selector(BundleItem const& preference);
std::string place_of_selector(plist::value const& theme_rules, plist::value const& rule);

/// Adds the preferences that apply.
void GetDefaultSettings(std::vector<std::string> const& scopes, style_candidates& result);
/// Adds the rules of a theme, an array, that apply.
void add_theme_rules(plist::value const& rules, std::vector<std::string> const& scopes,
                     style_candidates& result);

/// The settings of all of them, each key as the highest score has it. `shellVariables` are those
/// of all lists, the highest score first, less the lists that name a variable which is there
/// already. A translucent foreground or background is blended with those below it.
plist::value merged_style(style_candidates const& candidates);

/// Where settings have this value under the key, for messages: "FILE: settings.KEY" of the first
/// preference, or else of the theme in use.
std::string origin_of_setting(std::string const& key, plist::value const& value);

/// What drawing looks up for each run of text.
struct drawn_style {
  platform::text_style text;
  std::optional<platform::color> background;
  friend bool operator==(drawn_style const&, drawn_style const&) = default;
};

/// How text of that style is drawn; in `foreground` where the style has no colour.
platform::text_style style_from_dictionary(plist::value const& style, platform::color foreground);

}  // namespace styles
