#include "app/select_from_list.h"

#include "grammar/tokenize_filter.h"
#include "platform/desktop.h"
#include "text/views/view.h"
#include "textview/WynTextView.h"
#include "windows/choice_list.h"

#include <memory>
#include <optional>
#include <string>

namespace app {
namespace {

std::optional<std::size_t> pick(windows::choice_list& list) {
  auto const row = platform::desktop::current().pickers().run(list.request(), list);
  if (!row) return std::nullopt;
  return list.entry(*row);
}

// The list follows the text after a while; where that is soon done it is made now.
void update_symbols(WynTextView& view) {
  constexpr std::size_t most_units = 100'000;
  text::storage const& storage = *view.view()->storage;
  if (view.tokenizer() == nullptr || storage.length() > most_units) return;
  if (view.tokenizer()->wait_for(storage.lines() - 1)) view.buildFunctionPopUp();
}

void select_symbol(WynTextView& view) {
  update_symbols(view);
  auto const symbols = view.sharedFunctionPopUp();
  std::size_t const line = view.view()->selection.current_mark.base.line + std::size_t{1};
  windows::choice_list list("Go to Symbol", windows::symbol_entries(*symbols, line));
  auto const chosen = pick(list);
  if (chosen && view.view() != nullptr)
    view.performSelectorWithObject("goToLineNumber:",
                                   static_cast<std::int64_t>((*symbols)[*chosen].line));
}

}  // namespace

void select_from_list(std::string_view list, std::vector<platform::menu_item> items,
                      WynTextView& view) {
  if (list == "symbols") return select_symbol(view);
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
