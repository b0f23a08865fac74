#include "styles/typing_settings.h"

#include "bundles/BundleManager.h"
#include "grammar/possible_scopes.h"
#include "settings/store.h"
#include "styles/indent_patterns.h"
#include "styles/typing_pairs.h"

#include <algorithm>
#include <set>
#include <utility>

namespace styles {
namespace {

struct sources {
  unsigned long revision = 0;  // of the bundles
  plist::value theme, pairs;
  friend bool operator==(sources const&, sources const&) = default;
};

}  // namespace

std::shared_ptr<typing_settings> typing_settings::of(plist::value const& theme_rules) {
  static std::shared_ptr<typing_settings> made;
  static sources made_of;
  sources now{BundleManager::sharedInstance().revision(), theme_rules,
              settings::store().get("WynTextViewDefaultSmartTypingPairs")};
  if (made == nullptr || !(now == made_of)) made.reset(new typing_settings(now.theme, now.pairs));
  made_of = std::move(now);
  return made;
}

typing_settings::typing_settings(plist::value const& theme_rules,
                                 plist::value const& default_pairs) {
  add_openers(default_pairs);
  for (auto const& item :
       BundleManager::sharedInstance().bundleItemsOfKind(bundles::item_kind::preference))
    add(item->scopeSelector(), item->content()["settings"]);
  for (plist::value const& rule : theme_rules.elements())
    add(rule["scope"].string_or(""), rule["settings"]);
}

void typing_settings::add_openers(plist::value const& pairs) {
  for (unit_pair const pair : pairs_of(pairs))
    if (!opens_pair(pair.open)) openers_ += pair.open;
}

void typing_settings::add(std::string const& selector, plist::value const& settings) {
  add_openers(settings["smartTypingPairs"]);
  auto const& keys = indent_patterns::keys;
  if (std::any_of(keys.begin(), keys.end(), [&](char const* key) { return bool(settings[key]); }))
    indenting_selectors_.push_back(selector);
}

// Of most languages their outermost scope tells, without their grammar being read.
bool typing_settings::indents(grammar::catalogue const& all_rules, unsigned start_rule,
                              std::string const& root_scope) {
  auto const [known, is_new] = indents_.try_emplace(root_scope);
  if (!is_new) return known->second;
  auto const may_apply_in = [this](std::set<std::string> const& scopes) {
    return std::any_of(
        indenting_selectors_.begin(), indenting_selectors_.end(),
        [&](std::string const& selector) { return scope::may_apply(selector, scopes); });
  };
  return known->second = may_apply_in({root_scope}) ||
                         may_apply_in(grammar::possible_scopes(all_rules, start_rule));
}

}  // namespace styles
