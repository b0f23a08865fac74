#include "textview/view_switches.h"

#include "settings/store.h"
#include "settings/table.h"

#include <cassert>

namespace textview {

view_switches::view_switches() {
  for (settings::setting const& row : settings::all())
    if (row.changed_by.is_switch) switches_.push_back({&row, row.standard.boolean_or(false)});
}

bool view_switches::isOn(std::string_view key) const {
  for (view_switch const& option : switches_)
    if (option.row->key == key) return option.on;
  assert(!"a switch has a row in the table of settings");
  return false;
}

void view_switches::flip(std::size_t index) {
  view_switch& option = switches_[index];
  option.on = !option.on;
  settings::store().set(option.row->key, option.on);
  switchDidChange();
}

// Defaults also change by flip(), where each value stands already.
void view_switches::followDefaults() {
  auto& defaults = settings::store();
  for (view_switch& option : switches_) {
    bool const on = defaults.boolean(option.row->key);
    bool const is_scoped = option.row->key == show_invisibles && scopedShowInvisibles_;
    if (option.on == on || is_scoped) continue;
    option.on = on;
    switchDidChange();
  }
}

void view_switches::setScopedShowInvisibles(std::optional<bool> scoped) {
  scopedShowInvisibles_ = scoped;
  bool const on = scoped.value_or(settings::store().boolean(show_invisibles));
  for (view_switch& option : switches_)
    if (option.row->key == show_invisibles) option.on = on;
}

}  // namespace textview
