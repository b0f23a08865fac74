#include "styles/scope_report.h"

#include <cstdio>

#include "bundles/Bundle.h"
#include "bundles/BundleItem.h"
#include "grammar/tokenize_filter.h"
#include "platform/shown_characters.h"
#include "plist/description.h"
#include "styles/WynThemeManager.h"
#include "styles/styled_view.h"
#include "text/views/view.h"

namespace styles {
namespace {

using platform::quoted;

std::string origin_of(style_rule const& rule) {
  if (rule.item == nullptr) {
    auto const* const theme = WynThemeManager::sharedInstance().selectedTheme();
    return "theme " + quoted(theme == nullptr ? "" : theme->name());
  }
  Bundle const* const bundle = rule.item->bundle();
  return "bundle " + quoted(bundle == nullptr ? "" : bundle->name());
}

// Without line feeds and tabs, and cut short.
std::string one_line(plist::value const& value) {
  constexpr std::size_t longest = 72;
  std::string result;
  for (char const c : plist::description(value)) {
    bool const is_blank = c == ' ' || c == '\n' || c == '\t';
    if (!is_blank || !result.ends_with(' ')) result += is_blank ? ' ' : c;
  }
  if (result.size() <= longest) return result;
  std::size_t end = longest;
  while ((result[end] & 0xC0) == 0x80) --end;
  return result.substr(0, end) + "\u2026";
}

std::string line_for(std::string const& key, plist::value const& value, double score,
                     style_rule const& rule) {
  char number[32];
  std::snprintf(number, sizeof number, "%.3g", score);
  std::string const selector = rule.content["scope"].string_or("");
  return "  " + key + ": " + one_line(value) + "\n    " + origin_of(rule) + ", " +
         quoted(rule.content["name"].string_or("untitled")) + ", " +
         (selector.empty() ? "everywhere" : "for " + selector) + ", score " + number + "\n";
}

}  // namespace

std::string scope_report(styled_view const& text_view, text::pos at) {
  text::storage& storage = *text_view.view()->storage;
  if (text_view.tokenizer() != nullptr) text_view.tokenizer()->wait_for(at.line);
  auto const path = text_view.graphPathForIterator({at, &storage});
  std::vector<std::string> const scopes = text_view.scopeForContext(path);
  std::string report = "Scopes:\n";
  for (std::string const& scope : scopes) report += "  " + scope + "\n";
  if (scopes.empty()) report += "  none\n";

  style_candidates const candidates = text_view.styleCandidates(scopes);
  report += "Style:\n";
  for (auto const& [key, merged] : text_view.stylesForContext(path).entries()) {
    auto winner = candidates.rbegin();
    while (!winner->second.content["settings"][key]) ++winner;
    report += line_for(key, merged, winner->first, winner->second);
    plist::value const& own = winner->second.content["settings"][key];
    if (!(own == merged) && own.as_string())
      report += "    blended: " + *own.as_string() + " over what scores less\n";
  }
  return report;
}

}  // namespace styles
