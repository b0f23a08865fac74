#include "styles/wrap_columns.h"

#include "platform/desktop.h"
#include "settings/store.h"
#include "styles/document_options.h"

#include <algorithm>
#include <charconv>

namespace {

constexpr char const* key = "WynWrapColumns";

plist::array stored() {
  return settings::store().array(key);
}

// 0 unless all of the text is a number of columns.
int column_of(std::string_view text) {
  int column = 0;
  char const* const end = text.data() + text.size();
  auto const [after, error] = std::from_chars(text.data(), end, column);
  bool const is_column =
      error == std::errc() && after == end && 1 <= column && column <= settings::max_margin;
  return is_column ? column : 0;
}

}  // namespace

bool wrap_columns::contains(int column) {
  plist::array const columns = stored();
  return std::any_of(columns.begin(), columns.end(),
                     [&](plist::value const& other) { return other.integer_or(0) == column; });
}

// Before the first that is greater.
void wrap_columns::add(int column) {
  plist::array columns = stored();
  auto const after = std::find_if(columns.begin(), columns.end(), [&](plist::value const& other) {
    return other.integer_or(0) > column;
  });
  columns.insert(after, column);
  settings::store().set(key, std::move(columns));
}

std::vector<platform::menu_item> wrap_columns::menu_items() {
  std::vector<platform::menu_item> items;
  for (plist::value const& column : stored()) {
    if (column.integer_or(0) < 1) continue;
    platform::menu_item item;
    item.title = std::to_string(column.integer_or(0));
    item.selector = "takeRightMarginFrom:";
    item.argument = column;
    items.push_back(std::move(item));
  }
  return items;
}

std::optional<int> wrap_columns::ask(int initial) {
  auto const answer = platform::desktop::current().prompts().run(
      "Wrap Column", "Column at which lines are wrapped", std::to_string(initial));
  return answer ? std::optional(column_of(*answer)) : std::nullopt;
}
