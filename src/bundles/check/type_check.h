#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "bundles/check/known_keys.h"
#include "plist/value.h"

/// Whether what stands in the property lists of bundles and themes is of the type that the program
/// takes. What isn't counts as absent. Any thread.
namespace bundles {

/// Keys from the outermost in, with indexes as decimal numbers.
using way = std::vector<std::string>;
using fault_teller = std::function<void(way const& to, std::string const& reason)>;

/// Whether the value can stand under a key of that type. Tells why not, and which parts of a value
/// that can are of a wrong type themselves.
bool check_type(plist::value const& v, way const& to, content_type type, fault_teller const& tell);

/// Reports each value of a wrong type in a file, which may be a delta. The rules of grammars are
/// not checked: their faults are reported when they are read.
void check_types(plist::value const& content, item_kind kind, fault_teller const& tell);
/// The same, as complaints with file and key.
void complain_of_types(plist::value const& content, item_kind kind, std::string const& file);
/// The same for the file of a theme.
void complain_of_theme_types(plist::value const& content, std::string const& file);

}  // namespace bundles
