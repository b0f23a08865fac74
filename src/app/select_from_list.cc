#include "app/select_from_list.h"

#include "platform/desktop.h"
#include "textview/WynTextView.h"
#include "windows/choice_list.h"

#include <optional>
#include <string>

namespace app {
namespace {

std::optional<std::size_t> pick(windows::choice_list& list) {
  auto const row = platform::desktop::current().pickers().run(list.request(), list);
  if (!row) return std::nullopt;
  return list.entry(row->row);
}

}  // namespace

void select_from_list(std::string_view list, std::vector<platform::menu_item> items,
                      WynTextView& view) {
  platform::menu_item menu;
  menu.title = list == "languages" ? "Language" : "Encoding";
  menu.items = std::move(items);
  platform::responder& first = view.itemResponder();
  auto const actions = windows::program_actions({menu}, {}, &first);
  windows::choice_list choices(menu.title, windows::action_entries(actions));
  auto const chosen = pick(choices);
  if (chosen && !actions[*chosen].perform(first)) platform::desktop::current().beep();
}

}  // namespace app
