#include "styles/view_styles.h"

#include "bundles/BundleManager.h"
#include "styles/WynThemeManager.h"
#include "styles/typing_settings.h"

namespace styles {
namespace {

// Of the paths on the way to one asked for there may be some thousands more.
constexpr std::size_t most_states = 20000;

}  // namespace

plist::value const& view_styles::theme_rules() {
  // Asking for the theme may select one, and that sets the rules meanwhile.
  if (!theme_rules_) theme_rules_ = WynThemeManager::sharedInstance().currentTheme();
  return *theme_rules_;
}

void view_styles::set_theme_rules(plist::value rules) {
  theme_rules_ = std::move(rules);
  drop();
}

style_candidates view_styles::candidates(std::vector<std::string> const& scopes) {
  style_candidates result;
  GetDefaultSettings(scopes, result);
  add_theme_rules(theme_rules(), scopes, result);
  return result;
}

plist::value const* view_styles::find(bit_stack::storage const& path) const {
  auto const found = merged_.find(path);
  return found == merged_.end() ? nullptr : &found->second;
}

style_rules& view_styles::rules() {
  if (rules_ == nullptr) rules_ = style_rules::of(theme_rules());
  return *rules_;
}

plist::value const& view_styles::add(bit_stack::storage const& path,
                                     std::vector<std::string> const& scopes) {
  style_rules::state at;
  for (std::string const& scope : scopes) rules().enter(scope, at);
  return merged_.insert_or_assign(path, rules().merged(at)).first->second;
}

style_rules::state const& view_styles::state_at(grammar::path_tree const& tree,
                                                grammar::path_tree::id path) {
  if (states_.size() >= most_states && !states_.contains(path)) states_.clear();
  std::vector<grammar::path_tree::id> unknown;
  for (auto id = path; !states_.contains(id); id = tree.at(id).parent) {
    unknown.push_back(id);
    if (id == 0) break;
  }
  for (auto id = unknown.rbegin(); id != unknown.rend(); ++id) {
    style_rules::state at = *id == 0 ? style_rules::state() : states_.at(tree.at(*id).parent);
    if (std::string const& scope = tree.last_scope(*id); !scope.empty()) rules().enter(scope, at);
    states_.emplace(*id, std::move(at));
  }
  return states_.at(path);
}

plist::value const& view_styles::merged(grammar::path_tree const* tree,
                                        grammar::path_tree::id path) {
  auto const known = merged_by_id_.find(path);
  if (known != merged_by_id_.end()) return known->second;
  plist::value style =
      rules().merged(tree == nullptr ? style_rules::state() : state_at(*tree, path));
  return merged_by_id_.emplace(path, std::move(style)).first->second;
}

bool view_styles::is_symbol(grammar::path_tree const& tree, grammar::path_tree::id path) {
  if (path >= symbols_.size()) symbols_.resize(path + std::size_t{1});
  if (symbols_[path] == symbol::unknown)
    symbols_[path] = rules().is_symbol(state_at(tree, path)) ? symbol::yes : symbol::no;
  return symbols_[path] == symbol::yes;
}

drawn_style const* view_styles::find_drawn(grammar::path_tree::id path) const {
  return path < drawn_.size() && drawn_[path] ? &*drawn_[path] : nullptr;
}

drawn_style const& view_styles::add_drawn(grammar::path_tree::id path, drawn_style style) {
  if (path >= drawn_.size()) drawn_.resize(path + std::size_t{1});
  return drawn_[path].emplace(std::move(style));
}

typing_settings& view_styles::typing() {
  if (typing_ == nullptr) typing_ = typing_settings::of(theme_rules());
  return *typing_;
}

void view_styles::drop() {
  rules_.reset();
  merged_.clear();
  states_.clear();
  merged_by_id_.clear();
  symbols_.clear();
  drawn_.clear();
  typing_.reset();
}

}  // namespace styles
