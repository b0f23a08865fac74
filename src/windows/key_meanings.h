#pragma once

#include <memory>
#include <string>
#include <vector>

#include "bundles/BundleManager.h"
#include "platform/menu.h"
#include "plist/value.h"

namespace windows {

/// One thing that a key stands for. Exactly one of item, binding and entry is there.
struct key_meaning {
  std::shared_ptr<BundleItem> item;
  double score = 0;         ///< of the item's selector; below -0.5 the item isn't for this place
  bool can_execute = true;  ///< somebody takes what the item stands for
  bool is_best = false;     ///< of the items that a press would execute or offer in a menu

  plist::value binding;

  platform::menu_item entry;       ///< without a selector if it isn't one
  std::vector<std::string> place;  ///< the titles of the menus that lead to it
};

/// All that a key stands for at a place, in the order in which a key press looks for it: items, the
/// best ones first, then the key bindings, then the menus. `key` is a key string; `scope` is the
/// names at the place, outermost first and separated by blanks; `first` gets what items do. After
/// the first keys of a binding over several, `bindings` are those that these have led to.
std::vector<key_meaning> meanings_of_key(BundleManager& manager, std::string const& key,
                                         std::string const& scope, platform::responder* first,
                                         plist::dictionary const& bindings,
                                         std::vector<platform::menu_item> const& menus);

/// What the next key is looked up in, if a press of this one does nothing but wait for it.
plist::value bindings_of_next_key(std::vector<key_meaning> const& meanings);

/// "for source.c, score 0.92", "everywhere, score 0", "for source.c: not here", "..., can't be
/// done".
std::string reason_of_item(key_meaning const& meaning);

}  // namespace windows
