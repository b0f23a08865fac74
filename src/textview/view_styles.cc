#include "textview/view_styles.h"

#include "bundles/BundleManager.h"
#include "textview/WynThemeManager.h"
#include "textview/typing_settings.h"

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

// Kept for views to come, too: batch mode may open a thousand files of one language.
plist::value view_styles::shared_style(std::vector<std::string> const& scopes) {
  static std::map<std::vector<std::string>, plist::value> known;
  static unsigned long revision = 0;  // of the bundles
  static plist::value theme;
  constexpr std::size_t most_known = 1000;
  unsigned long const now = BundleManager::sharedInstance().revision();
  if (revision != now || !(theme == theme_rules()) || known.size() >= most_known) {
    known.clear();
    revision = now;
    theme = theme_rules();
  }
  auto const [found, is_new] = known.try_emplace(scopes);
  if (is_new) found->second = merged_style(candidates(scopes));
  return found->second;
}

plist::value const& view_styles::add(bit_stack::storage const& path,
                                     std::vector<std::string> const& scopes) {
  return merged_.insert_or_assign(path, shared_style(scopes)).first->second;
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
  merged_.clear();
  drawn_.clear();
  typing_.reset();
}
