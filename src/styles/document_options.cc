#include "styles/document_options.h"

#include "settings/store.h"
#include "styles/scoped_settings.h"

#include <algorithm>

namespace styles {

document_options document_options::stored(std::string_view root_scope) {
  auto& defaults = settings::store();
  using scoped_settings::value_for;
  plist::value const size = value_for(root_scope, "tabSize", tab_size_domain);
  plist::value const soft_tabs = value_for(root_scope, "softTabs", soft_tabs_domain);
  plist::value const soft_wrap = value_for(root_scope, "softWrap", soft_wrap_domain);
  std::int64_t const columns = size.integer_or(defaults.integer("WynTextViewTabSize"));
  std::int64_t const margin = defaults.integer(right_margin_key);
  return {static_cast<unsigned>(std::clamp<std::int64_t>(columns, 1, max_tab_size)),
          soft_tabs.boolean_or(false),
          soft_wrap.boolean_or(defaults.boolean("WynTextViewSoftWrap")),
          margin < 1 ? -1 : static_cast<int>(std::min<std::int64_t>(margin, max_margin))};
}

}  // namespace styles
