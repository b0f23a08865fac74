#pragma once

#include <string>
#include <vector>

#include "plist/value.h"

/// What one dictionary has changed against another, so that a local copy records only that. Paths
/// are keys joined by dots; a key that holds a dot itself makes them ambiguous.
namespace plist {

/// A dictionary of `isDelta` (true), `changed` (path to new value), `deleted` (paths) and, if
/// the old dictionary has one, its `uuid`. Dictionaries in both are compared entry by entry,
/// everything else is replaced whole.
dictionary DeltaPList(dictionary const& oldDictionary, dictionary const& newDictionary);

/// The recursion of DeltaPList: adds to `changed` and `deleted`. `path` is the keys so far.
void DeltaPListHelper(dictionary const& oldDictionary, dictionary const& newDictionary,
                      dictionary& changed, array& deleted, std::vector<std::string> const& path);

/// Applies layers on top of each other, the most local first, the base last. What stands after
/// the first layer that is no delta counts for nothing. A change below a key that is missing is
/// dropped. Nothing if no layer is a base; layers that are no dictionaries are passed over.
value MergePLists(array const& layers);

/// A tree that shares no container with `v`. Scalars are shared.
value mutableDeepCopy(value const& v);

}  // namespace plist
