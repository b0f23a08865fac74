#include "styles/document_options.h"

#include "settings/store.h"
#include "settings/table.h"
#include "styles/scoped_settings.h"

#include <algorithm>
#include <array>
#include <utility>

namespace styles {
namespace {

using ranking = std::array<std::pair<conventions::indentation const*, indent_source>, 6>;

ranking ranked(indent_sources const& sources) {
  return {{{&sources.hand, indent_source::hand},
           {&sources.modeline, indent_source::modeline},
           {&sources.editorconfig, indent_source::editorconfig},
           {&sources.detection, indent_source::detection},
           {&sources.language, indent_source::language},
           {&sources.bundle, indent_source::bundle}}};
}

}  // namespace

conventions::indentation indent_sources::stored_for(std::string_view root_scope) {
  conventions::indentation result;
  if (root_scope.empty()) return result;
  auto const entry = [&](char const* domain) {
    std::string const scope(root_scope);
    plist::value const stored = settings::store().get(domain)[scope];
    bool const is_chosen = stored != settings::find(domain)->standard[scope];
    return is_chosen ? stored : plist::value();
  };
  if (plist::value const on = entry(soft_tabs_domain)["softTabs"])
    result.soft_tabs = on.boolean_or(false);
  std::int64_t const size = entry(tab_size_domain)["tabSize"].integer_or(0);
  if (size > 0 && size <= max_tab_size) result.indent_size = static_cast<unsigned>(size);
  return result;
}

indent_origin apply_sources(indent_sources const& sources, document_options& options) {
  indent_origin origin;
  auto const all = ranked(sources);
  for (auto const& [says, source] : all) {
    bool const is_chosen = source == indent_source::hand || source == indent_source::language;
    if (sources.style_is_fixed && !is_chosen && source != indent_source::bundle) continue;
    if (!says->soft_tabs) continue;
    options.softTabs = *says->soft_tabs;
    origin.style = source;
    break;
  }
  for (auto const& [says, source] : all) {
    // Levels of blanks say nothing of how wide tabs are, if those are what the document has.
    bool const is_chosen = source == indent_source::hand || source == indent_source::language;
    bool const other_style = says->soft_tabs && *says->soft_tabs != options.softTabs;
    auto const width = says->width(options.softTabs);
    if (!width || (other_style && !is_chosen)) continue;
    options.tabSize = *width;
    origin.size = source;
    break;
  }
  return origin;
}

std::string explain(indent_source source, std::string const& language) {
  switch (source) {
    case indent_source::user_default:
      return "";
    case indent_source::bundle:
      return language + " style";
    case indent_source::language:
      return "set for " + language;
    case indent_source::detection:
      return "as in the file";
    case indent_source::editorconfig:
      return ".editorconfig";
    case indent_source::modeline:
      return "modeline";
    case indent_source::hand:
      return "set here";
  }
  return "";
}

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
