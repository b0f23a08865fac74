#include "styles/typing_pairs.h"

#include "platform/utf.h"
#include "settings/store.h"

#include <string>

namespace styles {

std::vector<unit_pair> pairs_of(plist::value const& list) {
  std::vector<unit_pair> result;
  for (plist::value const& entry : list.elements()) {
    plist::array const& strings = entry.elements();
    if (strings.size() != 2) continue;
    std::u16string const open = unicode::to_utf16(strings[0].string_or(""));
    std::u16string const close = unicode::to_utf16(strings[1].string_or(""));
    if (open.size() == 1 && close.size() == 1) result.push_back({open[0], close[0]});
  }
  return result;
}

std::vector<unit_pair> pairs_of_settings(plist::value const& settings, char const* key) {
  plist::value const& own = settings[key];
  if (own.as_array()) return pairs_of(own);
  return pairs_of(settings::store().array("WynTextViewDefaultSmartTypingPairs"));
}

}  // namespace styles
