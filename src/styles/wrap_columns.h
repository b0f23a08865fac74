#pragma once

#include "platform/menu.h"

#include <optional>
#include <vector>

/// The columns at which the user likes lines to be wrapped: a list that the menu offers, and that
/// grows by those that he enters. Columns count from 1.
namespace wrap_columns {

bool contains(int column);
void add(int column);
std::vector<platform::menu_item> menu_items();
/// Asks the user for one. Nothing when he cancels; 0 for what is no column.
std::optional<int> ask(int initial);

}  // namespace wrap_columns
