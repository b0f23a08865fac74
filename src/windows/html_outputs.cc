#include "windows/html_outputs.h"

#include "commands/ending_children.h"
#include "platform/desktop.h"

#include <algorithm>

namespace windows {

html_outputs::html_outputs(platform::responder& last, opener open)
    : last_(last), open_(std::move(open)) {
  set_current(this);
}

html_outputs::~html_outputs() {
  if (current() == this) set_current(nullptr);
  managers_.clear();
  closing_.clear();
  commands::ending_children::shared().kill_all();
}

void html_outputs::run_command(plist::value const& command, std::string input,
                               commands::variables environment, std::string directory) {
  windowFor(command).runCommand(command, std::move(input), std::move(environment),
                                std::move(directory));
}

void html_outputs::show_output(std::string text, plist::value const& command,
                               commands::variables environment, std::string directory) {
  windowFor(command).showOutput(std::move(text), command, std::move(environment),
                                std::move(directory));
}

WynHTMLOutputManager& html_outputs::windowFor(plist::value const& command) {
  auto* const idle = WynHTMLOutputManager::idleWindowForUUID(command["uuid"].string_or(""));
  if (idle != nullptr) return *idle;
  managers_.push_back(std::make_unique<WynHTMLOutputManager>(*this));
  return *managers_.back();
}

bool html_outputs::askToStopAll() {
  // An answer may close a window, or a command may end, while another one is asked about.
  for (std::size_t i = 0; i < managers_.size(); ++i) {
    if (managers_[i]->isDone()) continue;
    if (!managers_[i]->askToStop()) return false;
  }
  return true;
}

void html_outputs::keepPlacements() const {
  for (auto const& manager : managers_) manager->keepPlacement();
}

void html_outputs::didCloseWindow(WynHTMLOutputManager& manager) {
  auto const it = std::find_if(managers_.begin(), managers_.end(),
                               [&](auto const& own) { return own.get() == &manager; });
  if (it == managers_.end()) return;
  closing_.push_back(std::move(*it));
  managers_.erase(it);
  platform::desktop::current().waits().post(lives_, [this] { closing_.clear(); });
}

}  // namespace windows
