#pragma once

#include "commands/html_output.h"
#include "windows/WynHTMLOutputManager.h"

#include <functional>
#include <memory>
#include <vector>

namespace windows {

/// All windows with output of commands. While it lives it is the one that commands find. Main
/// thread only.
class html_outputs : public commands::html_output, public html_output_owner {
 public:
  using opener = std::function<void(commands::output_place const& place)>;

  html_outputs(platform::responder& last, opener open);
  ~html_outputs();

  // commands::html_output
  void run_command(plist::value const& command, std::string input, commands::variables environment,
                   std::string directory) override;
  void show_output(std::string text, plist::value const& command, commands::variables environment,
                   std::string directory) override;

  /// Asks about each command that is still running; false if one is to go on.
  bool askToStopAll();
  /// Before the program ends with windows open.
  void keepPlacements() const;

  // html_output_owner
  platform::responder& lastResponder() override { return last_; }
  void openPlace(commands::output_place const& place) override { open_(place); }
  void didCloseWindow(WynHTMLOutputManager& manager) override;

 private:
  WynHTMLOutputManager& windowFor(plist::value const& command);

  platform::responder& last_;
  opener open_;
  std::vector<std::unique_ptr<WynHTMLOutputManager>> managers_, closing_;
  std::shared_ptr<char> const lives_ = std::make_shared<char>();
};

}  // namespace windows
