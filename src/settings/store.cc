#include "settings/store.h"

#include "settings/table.h"

namespace settings {
namespace {

// What older and newer versions and bundles keep in the same file is none of our business.
std::string fault_in_file(std::string_view key, plist::value const& value) {
  setting const* const row = find(key);
  return row == nullptr ? "" : fault_of(*row, value);
}

void register_defaults(platform::user_defaults& defaults) {
  plist::dictionary standard;
  for (setting const& row : all())
    if (row.standard) standard.emplace(row.key, row.standard);
  defaults.register_defaults(standard);
  defaults.set_check(fault_in_file);
}

}  // namespace

platform::user_defaults& store() {
  auto& defaults = platform::user_defaults::standard();
  if (!defaults.has_check()) register_defaults(defaults);
  return defaults;
}

std::string fault_of(std::string_view key, plist::value const& value) {
  if (setting const* const row = find(key)) return fault_of(*row, value);
  if (key.find('.') != key.npos) return "";
  return "there is no setting " + std::string(key) + "; quirnote --list-settings lists them all";
}

}  // namespace settings
