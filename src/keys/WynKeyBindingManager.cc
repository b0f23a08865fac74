#include "keys/WynKeyBindingManager.h"

#include "keys/WynKeyEvent.h"
#include "keys/displayed_keys.h"
#include "keys/key_binding_file.h"
#include "platform/system/library_folders.h"

#include <algorithm>
#include <filesystem>
#include <iostream>

namespace {

constexpr char const* escape = "\x1B";

bool perform(plist::value const& action, keys::key_binding_target& view) {
  auto const selector = action.string_or("");
  return selector == "noop:" || view.tryToPerformWith(selector, {});
}

}  // namespace

WynKeyBindingManager& WynKeyBindingManager::sharedInstance() {
  static WynKeyBindingManager instance(allKeyBindingFiles());
  return instance;
}

WynKeyBindingManager::WynKeyBindingManager(std::vector<std::string> const& files) {
  auto const complain = [](std::string const& message) {
    std::cerr << "Quirnote: " << message << '\n';
  };
  for (auto const& file : files)
    for (auto& [key, binding] : keys::read_key_binding_file(file, complain))
      keyBindings_.insert_or_assign(key, binding);
}

std::vector<std::string> WynKeyBindingManager::allKeyBindingFiles() {
  auto folders = platform::library_domains();
  folders.push_back(platform::shared_support_folder());
  std::vector<std::string> files;
  for (auto folder = folders.rbegin(); folder != folders.rend(); ++folder) {
    auto file = *folder + "/KeyBindings.dict";
    std::error_code error;
    if (std::filesystem::is_regular_file(file, error) && std::ranges::count(files, file) == 0)
      files.push_back(std::move(file));
  }
  return files;
}

std::optional<std::string> WynKeyBindingManager::selectorForEvent(
    platform::key_event const& event) const {
  auto const found =
      keyBindings_.find(WynKeyEvent::keyEventWithEvent(event).stringRepresentation());
  if (found == keyBindings_.end() || !found->second.as_string()) return std::nullopt;
  return *found->second.as_string();
}

bool WynKeyBindingManager::interpretKeyEventForTextView(platform::key_event const& event,
                                                        keys::key_binding_target& view) {
  WynKeyEvent const pressed = WynKeyEvent::keyEventWithEvent(event);
  auto const key = pressed.stringRepresentation();
  auto const pending = pending_.extract(&view);
  if (!pending.empty()) view.showPendingKeys("");
  auto const& table = pending.empty() ? keyBindings_ : pending.mapped().table.entries();
  auto const found = table.find(key);
  if (found == table.end()) {
    if (!pending.empty() && key == escape) return true;
    view.interpretKeyEvents(event);
    return true;
  }
  auto const binding = found->second;
  if (binding.as_string()) return perform(binding, view);
  if (binding.as_dictionary()) {
    std::string const before = pending.empty() ? "" : pending.mapped().keys + " ";
    auto const& [table_of_next, keys] =
        pending_[&view] = {binding, before + keys::displayed_key(key)};
    view.showPendingKeys(keys);
  } else {
    performAll(binding.elements(), view);
  }
  return true;
}

void WynKeyBindingManager::performAll(plist::array const& actions, keys::key_binding_target& view) {
  for (auto action = actions.begin(); action != actions.end(); ++action) {
    if (action->string_or("") != "insertText:")
      perform(*action, view);
    else if (++action != actions.end())
      view.insertText(*action);
    else
      return;
  }
}
