#include "windows/select_item.h"

#include "keys/WynKeyEvent.h"
#include "platform/unicode.h"
#include "platform/utf.h"
#include "windows/item_help.h"
#include "windows/key_meanings.h"

#include <algorithm>
#include <unordered_set>

namespace {

constexpr double other_name_weight = 0.8;

bool is_all_upper_case(std::u16string const& text) {
  bool has_capital = false;
  for (char16_t const unit : text) {
    if (unicode::to_upper(unit) != unit) return false;
    has_capital = has_capital || unicode::to_lower(unit) != unit;
  }
  return has_capital;
}

std::string detail_of(BundleItem const& item) {
  Bundle const* const bundle = item.bundle();
  return (bundle == nullptr ? "" : bundle->name() + ", ") +
         std::string(bundles::name_of(item.kind()));
}

std::string detail_of(windows::program_action const& action) {
  return (action.place.empty() ? "key binding" : action.place) + (action.checked ? ", on" : "");
}

/// What an entry does, in other words than its title: "Move Word Left" for "Word Left" in a menu.
/// Empty for an item, and where the selector says less than its argument.
std::string other_name(windows::program_action const& action) {
  bool const says_all = action.steps.size() == 1 && !action.steps.front().argument;
  return says_all ? windows::title_of_selector(action.steps.front().selector) : std::string();
}

}  // namespace

WynSelectBundleItem::WynSelectBundleItem(BundleManager& manager, bundles::item_view& view,
                                         std::vector<platform::menu_item> menus,
                                         plist::dictionary const& bindings,
                                         bool isSearchingKeyEquivalents)
    : manager_(manager),
      view_(view),
      menus_(std::move(menus)),
      bindings_(bindings),
      isSearchingKeyEquivalents_(isSearchingKeyEquivalents),
      scope_(view.scopeAtCaret()),
      hasSelection_(view.hasSelection()) {
  if (isSearchingKeyEquivalents_) {
    note_ = "Press a key to see what it does at the caret.";
    return;
  }
  addItems();
  addActions();
  showAll();
  updateNote();
  // Now, since there is more time before the first letter than after it.
  for (std::size_t const place : displayItems_) prepareRankers(choices_[place]);
}

platform::picker_request WynSelectBundleItem::request() const {
  return {.title = isSearchingKeyEquivalents_ ? "Select by Key" : "Select Bundle Item",
          .takes_keys = isSearchingKeyEquivalents_,
          .has_help = true};
}

void WynSelectBundleItem::add(std::shared_ptr<BundleItem> const& item, bool applies) {
  choice each;
  each.item = item;
  each.title = item->titleWithSelection(hasSelection_, false);
  each.applies = applies;
  choices_.push_back(std::move(each));
}

void WynSelectBundleItem::add(windows::program_action action) {
  choice each;
  each.title = action.title;
  each.detail = detail_of(action);
  each.action = std::move(action);
  choices_.push_back(std::move(each));
}

void WynSelectBundleItem::addItems() {
  auto const items = manager_.bundleItemsOfKinds(
      {bundles::item_kind::command, bundles::item_kind::macro, bundles::item_kind::snippet});
  auto const sorted = BundleManager::sortItemsAccordingToScope(items, scope_);
  choices_.reserve(items.size() + 500);
  std::unordered_set<BundleItem const*> added;
  for (auto const& item : sorted) {
    added.insert(item.get());
    add(item, true);
  }
  for (auto const& item : items)
    if (!added.contains(item.get())) add(item, false);
}

void WynSelectBundleItem::addActions() {
  for (windows::program_action& action :
       windows::program_actions(menus_, bindings_, &view_.itemResponder()))
    add(std::move(action));
}

void WynSelectBundleItem::showAll() {
  displayItems_.clear();
  for (std::size_t i = 0; i < choices_.size(); ++i)
    if (choices_[i].applies || isEverywhere_) displayItems_.push_back(i);
}

void WynSelectBundleItem::set_filter(std::string const& text) {
  if (isSearchingKeyEquivalents_) return;
  std::u16string const units = unicode::to_utf16(text);
  std::u16string const prepared = BriskStringRanker::prepareFilterString(units);
  bool const is_everywhere = is_all_upper_case(units);
  // What doesn't hold some letters doesn't hold more of them either.
  bool const narrows =
      !prepared_.empty() && prepared.starts_with(prepared_) && (isEverywhere_ || !is_everywhere);
  filterString_ = text;
  prepared_ = prepared;
  isEverywhere_ = is_everywhere;
  if (prepared.empty())
    showAll();
  else
    filterItemsUsingString(narrows);
  updateNote();
}

void WynSelectBundleItem::updateNote() {
  if (!displayItems_.empty())
    note_ = isEverywhere_ ? "In all scopes" : "Scopes: " + scope_;
  else if (isEverywhere_)
    note_ = "No matches.";
  else
    note_ = "No matches for these scopes; capitals search all scopes.";
}

void WynSelectBundleItem::prepareRankers(choice& each) {
  each.ranker.emplace(unicode::to_utf16(each.title));
  std::string const other = other_name(each.action);
  if (!other.empty() && other != each.title) each.otherRanker.emplace(unicode::to_utf16(other));
}

double WynSelectBundleItem::scoreOf(choice& each) const {
  if (!each.ranker) prepareRankers(each);
  double const score = each.ranker->scoreForAbbreviation(prepared_);
  if (!each.otherRanker) return score;
  return std::max(score, other_name_weight * each.otherRanker->scoreForAbbreviation(prepared_));
}

// The letters that have found it, in its title or, if that is why it is here, in its other name.
void WynSelectBundleItem::showMatch(choice const& each, platform::picker_row& row) const {
  row.matched = each.ranker->maskForAbbreviation(prepared_);
  double const score = each.ranker->scoreForAbbreviation(prepared_);
  if (!each.otherRanker ||
      other_name_weight * each.otherRanker->scoreForAbbreviation(prepared_) <= score)
    return;
  row.title += u" \u2014 ";
  row.matched = each.otherRanker->maskForAbbreviation(prepared_);
  for (std::size_t& unit : row.matched) unit += row.title.size();
  row.title += unicode::to_utf16(other_name(each.action));
}

void WynSelectBundleItem::filterItemsUsingString(bool narrows) {
  struct ranked {
    double score;
    std::size_t place;
  };
  if (!narrows) showAll();
  std::vector<ranked> found;
  found.reserve(displayItems_.size());
  for (std::size_t const place : displayItems_) {
    choice& each = choices_[place];
    if (!each.applies && !isEverywhere_) continue;
    double const score = scoreOf(each);
    if (score > -0.5) found.push_back({score, place});
  }
  std::sort(found.begin(), found.end(), [](ranked const& a, ranked const& b) {
    return a.score != b.score ? a.score > b.score : a.place < b.place;
  });
  displayItems_.clear();
  for (ranked const& each : found) displayItems_.push_back(each.place);
}

void WynSelectBundleItem::take_key(platform::key_event const& key) {
  if (isSearchingKeyEquivalents_)
    showKeyEquivalent(WynKeyEvent::keyEventWithEvent(key).stringRepresentation());
}

void WynSelectBundleItem::showKeyEquivalent(std::string const& key) {
  choices_.clear();
  bool const continues = bindingsOfNextKey_.as_dictionary() != nullptr;
  if (!continues) keys_.clear();
  keys_.push_back(key);
  auto const meanings =
      windows::meanings_of_key(manager_, key, scope_, &view_.itemResponder(),
                               continues ? bindingsOfNextKey_.entries() : bindings_, menus_);
  for (windows::key_meaning const& meaning : meanings) {
    if (meaning.item != nullptr) {
      add(meaning.item, meaning.score > -0.5);
      choices_.back().detail =
          windows::reason_of_item(meaning) + " \u00B7 " + detail_of(*meaning.item);
    } else if (meaning.binding) {
      windows::program_action action = windows::action_of_binding(meaning.binding);
      if (meaning.binding.as_dictionary()) action.title = "Waits for another key";
      if (action.title.empty()) action.title = "Does nothing";
      action.enabled = !action.steps.empty();
      add(std::move(action));
    } else {
      add(windows::action_of_entry(meaning.entry, meaning.place, &view_.itemResponder()));
    }
    if (meaning.binding) choices_.back().action.keys = {keys_};
    if (meaning.item == nullptr && !meaning.binding) choices_.back().action.keys = {{key}};
  }
  bindingsOfNextKey_ = windows::bindings_of_next_key(meanings);
  displayItems_.clear();
  for (std::size_t i = 0; i < choices_.size(); ++i) displayItems_.push_back(i);
  if (bindingsOfNextKey_)
    note_ = "Press the next key to see what it does after this one.";
  else
    note_ = choices_.empty() ? "The key has no binding and types its character, if it has one."
                             : "Scopes: " + scope_;
}

std::vector<std::string> WynSelectBundleItem::pending_keys() const {
  return bindingsOfNextKey_ ? keys_ : std::vector<std::string>();
}

platform::picker_row WynSelectBundleItem::row(std::size_t index) const {
  choice const& each = choices_[displayItems_[index]];
  platform::picker_row result;
  result.title = unicode::to_utf16(each.title);
  result.detail = each.detail;
  if (each.ranker && !prepared_.empty()) showMatch(each, result);
  if (each.item != nullptr) {
    if (result.detail.empty()) result.detail = detail_of(*each.item);
    if (!each.item->keyEquivalent().empty()) result.keys = {each.item->keyEquivalent()};
    result.trigger = each.item->tabTrigger();
    result.enabled = BundleManager::canExecuteItem(*each.item, &view_.itemResponder());
  } else {
    if (!each.action.keys.empty()) result.keys = each.action.keys.front();
    result.enabled = each.action.enabled;
  }
  return result;
}

std::string WynSelectBundleItem::help(std::size_t index) const {
  auto const& item = choices_[displayItems_[index]].item;
  return item == nullptr ? "" : windows::help_of(*item);
}

bool WynSelectBundleItem::accept(std::size_t row) {
  // Lives on while it runs, even if that ends this window's owner.
  choice const chosen = choices_[displayItems_[row]];
  platform::responder& first = view_.itemResponder();
  return chosen.item != nullptr ? manager_.executeItem(chosen.item, first)
                                : chosen.action.perform(first);
}
