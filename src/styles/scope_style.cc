#include "styles/scope_style.h"

#include <algorithm>
#include <set>
#include <utility>

#include "bundles/BundleManager.h"
#include "grammar/scope_selector.h"
#include "styles/WynThemeManager.h"
#include "styles/color_strings.h"

namespace styles {
namespace {

// The lists of variables that were noted, in ascending order of score.
plist::array joined_variables(std::vector<plist::value> const& lists) {
  plist::array result;
  std::set<std::string> seen;
  for (auto list = lists.rbegin(); list != lists.rend(); ++list) {
    std::set<std::string> names;
    bool is_new = true;
    for (plist::value const& variable : list->elements()) {
      std::string name = variable["name"].string_or("");
      is_new = is_new && !seen.contains(name);
      names.insert(std::move(name));
    }
    if (!is_new) continue;
    seen.merge(names);
    result.insert(result.end(), list->elements().begin(), list->elements().end());
  }
  return result;
}

// Lays the colours under `key` over one another, from the lowest score up.
void blend(style_candidates const& candidates, std::string const& key, plist::dictionary& merged) {
  auto const top = merged.find(key);
  if (top == merged.end() || !NSColorForKey(merged, key)) return;
  std::string const topmost = top->second.string_or("");
  if (RGBAForString(topmost)[3] >= 1) return;
  auto const is_last = [&](style_candidates::const_iterator it) {
    while (++it != candidates.end())
      if (it->second.content["settings"][key]) return false;
    return true;
  };
  std::optional<std::array<float, 4>> base;
  bool has_blended = false;
  for (auto it = candidates.begin(); it != candidates.end(); ++it) {
    plist::value const& value = it->second.content["settings"][key];
    if (!value) continue;
    auto const over = RGBAForString(value.string_or(""));
    if (!base) {
      if (is_last(it)) return;
      base = over;
      continue;
    }
    for (std::size_t n = 0; n < 3; ++n) (*base)[n] = (*base)[n] * (1 - over[3]) + over[3] * over[n];
    if (over[3] == 1) (*base)[3] = 1;
    has_blended = true;
  }
  if (has_blended) top->second = stringForRGBA(*base);
}

}  // namespace

std::vector<std::shared_ptr<BundleItem>> preferences_by_layer() {
  BundleManager& manager = BundleManager::sharedInstance();
  std::vector<std::string> const folders = manager.folders().bundlePaths();
  // What isn't on disk yet is the user's.
  auto const height = [&](BundleItem const& item) {
    std::string const path = item.sourcePath();
    auto const holds_it = [&](std::string const& folder) {
      return bundles::is_below(path, folder);
    };
    auto const folder = std::find_if(folders.begin(), folders.end(), holds_it);
    return path.empty() ? folders.size() : static_cast<std::size_t>(folders.end() - folder);
  };
  std::vector<std::pair<std::size_t, std::shared_ptr<BundleItem>>> sorted;
  for (auto const& item : manager.bundleItemsOfKind(bundles::item_kind::preference))
    sorted.emplace_back(height(*item), item);
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](auto const& a, auto const& b) { return a.first < b.first; });
  std::vector<std::shared_ptr<BundleItem>> result;
  for (auto& [layer, item] : sorted) result.push_back(std::move(item));
  return result;
}

std::string place_of_selector(BundleItem const& preference) {
  return preference.sourcePath() + ": scope";
}

std::string place_of_selector(plist::value const& theme_rules, plist::value const& rule) {
  auto const* const theme = WynThemeManager::sharedInstance().selectedTheme();
  auto const n = &rule - theme_rules.elements().data();
  return (theme == nullptr ? "theme" : theme->filepath) + ": settings." + std::to_string(n) +
         ".scope";
}

void GetDefaultSettings(std::vector<std::string> const& scopes, style_candidates& result) {
  for (auto const& item : preferences_by_layer()) {
    double const score = scope::new_score_for_selector(item->scopeSelector(), scopes,
                                                       [&] { return place_of_selector(*item); });
    if (score >= 0) result.emplace(score, style_rule{item->content(), item});
  }
}

void add_theme_rules(plist::value const& rules, std::vector<std::string> const& scopes,
                     style_candidates& result) {
  for (plist::value const& rule : rules.elements()) {
    double const score = scope::new_score_for_selector(
        rule["scope"].string_or(""), scopes, [&] { return place_of_selector(rules, rule); });
    if (score >= 0) result.emplace(score, style_rule{rule, nullptr});
  }
}

plist::value merged_style(style_candidates const& candidates) {
  plist::dictionary merged;
  std::vector<plist::value> variables;
  for (auto const& [score, rule] : candidates) {
    plist::value const& settings = rule.content["settings"];
    if (settings["shellVariables"]) variables.push_back(settings["shellVariables"]);
    for (auto const& [key, value] : settings.entries()) merged.insert_or_assign(key, value);
  }
  if (!variables.empty()) merged.insert_or_assign("shellVariables", joined_variables(variables));
  for (char const* key : {"background", "foreground"}) blend(candidates, key, merged);
  return merged;
}

std::string origin_of_setting(std::string const& key, plist::value const& value) {
  for (auto const& item :
       BundleManager::sharedInstance().bundleItemsOfKind(bundles::item_kind::preference))
    if (item->content()["settings"][key] == value) return item->sourcePath() + ": settings." + key;
  auto const* const theme = WynThemeManager::sharedInstance().selectedTheme();
  return (theme == nullptr ? "" : theme->filepath + ": ") + "settings." + key;
}

platform::text_style style_from_dictionary(plist::value const& style, platform::color foreground) {
  auto const* const words = style["fontStyle"].as_string();
  auto const is_set = [&](char const* word) {
    if (words != nullptr) return words->find(word) != std::string::npos;
    return style[word].integer_or(0) != 0;
  };
  return {NSColorForKey(style, "foreground").value_or(foreground), is_set("bold"), is_set("italic"),
          is_set("underline")};
}

}  // namespace styles
