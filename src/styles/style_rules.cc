#include "styles/style_rules.h"

#include <algorithm>
#include <utility>

#include "bundles/BundleManager.h"

namespace styles {
namespace {

constexpr std::size_t most_merged = 5000;

}  // namespace

plist::value const& style_rules::rule::contents() {
  if (item != nullptr && !content) content = item->content();
  return content;
}

std::shared_ptr<style_rules> style_rules::of(plist::value const& theme_rules) {
  static std::shared_ptr<style_rules> made;
  static std::pair<unsigned long, plist::value> made_of;
  std::pair now(BundleManager::sharedInstance().revision(), theme_rules);
  if (made == nullptr || !(now == made_of)) made.reset(new style_rules(theme_rules));
  made_of = std::move(now);
  return made;
}

style_rules::style_rules(plist::value const& theme_rules) {
  for (auto const& item : preferences_by_layer())
    rules_.push_back(
        {scope::known_selector(item->scopeSelector(), [&] { return place_of_selector(*item); }),
         {},
         item});
  for (plist::value const& each : theme_rules.elements())
    rules_.push_back({scope::known_selector(each["scope"].string_or(""),
                                            [&] { return place_of_selector(theme_rules, each); }),
                      each, nullptr});
  std::vector<std::shared_ptr<scope::selector_node const>> selectors;
  for (rule const& each : rules_) {
    symbol_rules_.push_back(selectors.size());
    selectors.push_back(each.selector);
  }
  selectors_.emplace(selectors);
}

plist::value style_rules::merged(state const& at) {
  scope::selector_set::scores const scores(*selectors_, at);
  std::vector<std::pair<double, std::size_t>> applying;
  for (std::size_t i = 0; i < rules_.size(); ++i)
    if (double const score = scores.of(i); score >= 0) applying.emplace_back(score, i);
  std::sort(applying.begin(), applying.end());
  std::vector<std::size_t> order;
  for (auto const& [score, i] : applying) order.push_back(i);
  if (merged_.size() >= most_merged) merged_.clear();
  auto const [found, is_new] = merged_.try_emplace(std::move(order));
  if (!is_new) return found->second;
  style_candidates candidates;
  for (auto const& [score, i] : applying)
    candidates.emplace_hint(candidates.end(), score,
                            style_rule{rules_[i].contents(), rules_[i].item});
  return found->second = merged_style(candidates);
}

bool style_rules::is_symbol(state const& at) {
  scope::selector_set::scores const scores(*selectors_, at);
  double best = -1;
  bool result = false;
  std::erase_if(symbol_rules_, [&](std::size_t i) {
    double const score = scores.of(i);
    if (score < 0 || score < best) return false;
    plist::value const& says = rules_[i].contents()["settings"]["showInSymbolList"];
    if (!says) return true;
    best = score;
    result = says.integer_or(0) != 0;
    return false;
  });
  return result;
}

}  // namespace styles
