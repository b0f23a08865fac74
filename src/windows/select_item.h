#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "bundles/BundleManager.h"
#include "bundles/item_view.h"
#include "platform/picker.h"
#include "projects/BriskStringRanker.h"
#include "windows/program_actions.h"

/// The window in which a bundle item, or anything else that the program does, is found by letters
/// of its name or by its key, and executed.
///
///     WynSelectBundleItem select(manager, view, menus, bindings);
///     if (auto const row = desktop.pickers().run(select.request(), select)) select.accept(*row);
///
/// Items come in the order of their scores at the caret, and then the actions of menus and keys in
/// theirs; letters order all of them by how well they fit. Capitals find items for any scope.
///
/// Each letter costs time in proportion to the names that the letters before it have found. Made
/// for one use: items, scope and menus are those of the time when it was made. The manager and the
/// view must outlive it. Main thread only.
class WynSelectBundleItem final : public platform::picker_source {
 public:
  /// Dynamic menus must have been filled in.
  WynSelectBundleItem(BundleManager& manager, bundles::item_view& view,
                      std::vector<platform::menu_item> menus, plist::dictionary const& bindings,
                      bool isSearchingKeyEquivalents = false);

  platform::picker_request request() const;

  std::string const& filterString() const { return filterString_; }
  std::string const& scope() const { return scope_; }
  bool isSearchingKeyEquivalents() const { return isSearchingKeyEquivalents_; }

  /// Shows what a key stands for at the caret, or what it does after the keys shown before if these
  /// wait for another one; what a press would do comes first. `key` is a key string.
  void showKeyEquivalent(std::string const& key);
  /// Executes what a row shows; false if no responder performs it.
  bool accept(std::size_t row);

  // platform::picker_source
  void set_filter(std::string const& text) override;
  void take_key(platform::key_event const& key) override;
  std::vector<std::string> pending_keys() const override;
  std::size_t count() const override { return displayItems_.size(); }
  platform::picker_row row(std::size_t index) const override;
  std::string help(std::size_t index) const override;
  std::string note() const override { return note_; }

 private:
  /// An item, or else an action.
  struct choice {
    std::shared_ptr<BundleItem> item;
    windows::program_action action;
    std::string title, detail;
    bool applies = true;  // the item is for the scope at the caret
    // Once they are needed. What an entry of a menu does is another name of it.
    std::optional<BriskStringRanker> ranker, otherRanker;
  };

  void addItems();
  void addActions();
  void add(std::shared_ptr<BundleItem> const& item, bool applies);
  void add(windows::program_action action);
  void showAll();
  void updateNote();
  static void prepareRankers(choice& each);
  double scoreOf(choice& each) const;
  void showMatch(choice const& each, platform::picker_row& row) const;
  void filterItemsUsingString(bool narrows);

  BundleManager& manager_;
  bundles::item_view& view_;
  std::vector<platform::menu_item> const menus_;
  plist::dictionary const& bindings_;
  bool const isSearchingKeyEquivalents_;
  std::string const scope_;
  bool const hasSelection_;

  std::vector<choice> choices_;            // all there are, in the order without letters
  std::vector<std::size_t> displayItems_;  // of choices_
  std::string filterString_, note_;
  std::u16string prepared_;    // the filter string as the ranker takes it
  bool isEverywhere_ = false;  // the filter string is in capitals
  // The keys that are shown, and where the next one is looked up if it belongs to them.
  std::vector<std::string> keys_;
  plist::value bindingsOfNextKey_;
};
