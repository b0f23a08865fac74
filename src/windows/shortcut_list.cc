#include "windows/shortcut_list.h"

#include "keys/displayed_keys.h"
#include "platform/unicode.h"
#include "platform/utf.h"

#include <algorithm>
#include <numeric>

namespace windows {
namespace {

std::string without_blanks(std::string text) {
  std::erase(text, ' ');
  return unicode::lowercase(text);
}

}  // namespace

shortcut_list::shortcut_list(BundleManager& manager, std::vector<platform::menu_item> menus,
                             plist::dictionary const& bindings, platform::responder& first)
    : manager_(manager), first_(first) {
  for (program_action const& action : program_actions(std::move(menus), bindings, &first))
    for (auto const& keys : action.keys)
      add({action.title, action.place, keys, {}, action, nullptr, {}});
  add_items(manager);
  set_filter("");
}

void shortcut_list::add_items(BundleManager& manager) {
  auto items = manager.bundleItemsOfKinds(
      {bundles::item_kind::command, bundles::item_kind::macro, bundles::item_kind::snippet});
  std::erase_if(items, [](auto const& item) {
    return item->keyEquivalent().empty() || item->bundle() == nullptr;
  });
  std::ranges::stable_sort(items, [](auto const& a, auto const& b) {
    return a->bundle()->name() < b->bundle()->name();
  });
  for (auto const& item : items)
    add({item->titleWithSelection(false, false),
         item->bundle()->name(),
         {item->keyEquivalent()},
         {},
         {},
         item,
         {}});
}

void shortcut_list::add(shortcut made) {
  made.name_of_keys = without_blanks(keys::displayed_keys(made.keys));
  made.ranker.emplace(unicode::to_utf16(made.title));
  all_.push_back(std::move(made));
}

void shortcut_list::set_filter(std::string const& text) {
  prepared_ = BriskStringRanker::prepareFilterString(unicode::to_utf16(text));
  std::string const key = without_blanks(text);
  std::vector<double> scores(all_.size(), 1);
  for (std::size_t i = 0; i < all_.size() && !key.empty(); ++i) {
    scores[i] = prepared_.empty() ? -1 : all_[i].ranker->scoreForAbbreviation(prepared_);
    // A key is meant as a whole before it is meant as the beginning of one.
    bool const is_key = all_[i].name_of_keys == key;
    if (is_key || all_[i].name_of_keys.find(key) != std::string::npos)
      scores[i] = std::max(scores[i], is_key ? 2 : 0.5);
  }
  shown_.resize(all_.size());
  std::iota(shown_.begin(), shown_.end(), std::size_t{0});
  std::erase_if(shown_, [&](std::size_t i) { return scores[i] < -0.5; });
  std::ranges::stable_sort(shown_,
                           [&](std::size_t a, std::size_t b) { return scores[a] > scores[b]; });
}

platform::picker_row shortcut_list::row(std::size_t index) const {
  shortcut const& each = all_[shown_[index]];
  platform::picker_row result;
  result.title = unicode::to_utf16(each.title);
  result.detail = each.detail;
  result.keys = each.keys;
  if (!prepared_.empty() && each.ranker->scoreForAbbreviation(prepared_) > -0.5)
    result.matched = each.ranker->maskForAbbreviation(prepared_);
  result.enabled = each.item != nullptr ? BundleManager::canExecuteItem(*each.item, &first_)
                                        : each.action.enabled;
  return result;
}

std::string shortcut_list::note() const {
  if (shown_.empty()) return "No key and no action like this.";
  return "Return performs it. Keys of your own: KeyBindings.dict in your Quirnote folder.";
}

bool shortcut_list::accept(std::size_t row) {
  shortcut const chosen = all_[shown_[row]];  // lives on while it runs
  return chosen.item != nullptr ? manager_.executeItem(chosen.item, first_)
                                : chosen.action.perform(first_);
}

}  // namespace windows
