#include "styles/scoped_settings.h"

#include "settings/store.h"

#include <chrono>
#include <limits>

namespace {

constexpr double reference_date = 978307200;  // 2001-01-01 in seconds since 1970

// What is between dots counts, so that the empty scope has one component, which only that has.
int common_components(std::string_view a, std::string_view b) {
  for (int count = 0;; ++count) {
    std::size_t const a_end = a.find('.'), b_end = b.find('.');
    if (a.substr(0, a_end) != b.substr(0, b_end)) return count;
    if (a_end == std::string_view::npos || b_end == std::string_view::npos) return count + 1;
    a.remove_prefix(a_end + 1);
    b.remove_prefix(b_end + 1);
  }
}

}  // namespace

namespace scoped_settings {

plist::value value_for(std::string_view root_scope, std::string_view key, std::string_view domain) {
  plist::dictionary const entries = settings::store().dictionary(domain);
  int best = -1;
  double best_date = 0;
  plist::value result;
  for (auto const& [scope, entry] : entries) {
    int const common = common_components(root_scope, scope);
    plist::date const* const updated = entry["updated"].as_date();
    double const date =
        updated != nullptr ? updated->seconds : std::numeric_limits<double>::lowest();
    if (common < best || (common == best && date <= best_date)) continue;
    best = common;
    best_date = date;
    result = entry[key];
  }
  return result;
}

void set_value(std::string_view root_scope, plist::value value, std::string_view key,
               std::string_view domain, plist::value const& note) {
  auto& defaults = settings::store();
  plist::dictionary entries = defaults.dictionary(domain);
  plist::dictionary entry{{"updated", now()}};
  entry.insert_or_assign(std::string(key), std::move(value));
  entries.insert_or_assign(std::string(root_scope), std::move(entry));
  defaults.set(domain, std::move(entries), note);
}

plist::date now() {
  auto const since_1970 = std::chrono::system_clock::now().time_since_epoch();
  return {std::chrono::duration<double>(since_1970).count() - reference_date};
}

}  // namespace scoped_settings
