#pragma once

#include "commands/finished_command.h"
#include "platform/menu.h"
#include "platform/responder.h"
#include "platform/window.h"

#include <memory>
#include <string>
#include <vector>

class WynDocument;

namespace windows {

/// What windows need of the application: it owns their controllers, and gets what they don't
/// perform themselves. Main thread only.
class windows_owner {
 public:
  /// The end of the windows' responder chains.
  virtual platform::responder& lastResponder() = 0;
  /// Where relative names and file panels begin. Absolute.
  virtual std::string currentDirectory() const = 0;
  /// The menu for a click with the right button in a text.
  virtual std::vector<platform::menu_item> contextMenu() const = 0;
  /// What an empty window offers.
  virtual std::vector<platform::menu_item> recentItems() const = 0;
  /// A file has been opened or got this name.
  virtual void noteRecentFile(std::string const& path) = 0;
  /// Windows of documents with the same name show their folders: calls their showTitle().
  virtual void documentNameDidChange() = 0;
  /// A window for a text that has no file.
  virtual void openAsNewDocument(text::text_block const& text) = 0;
  /// A window of its own for a document that another one has shown.
  virtual void showInNewWindow(std::shared_ptr<WynDocument> document) = 0;
  /// What a click with the right button on a tab offers.
  virtual std::vector<platform::menu_item> tabMenu() const = 0;
  /// The same in the tree of a side bar.
  virtual std::vector<platform::menu_item> treeMenu() const = 0;
  /// Whether it takes what a command has written, so that no text does.
  virtual bool takesOutput(commands::finished_command const& command) = 0;
  /// Lets go of a controller whose window has closed; it is destroyed in a later turn of the loop,
  /// when nothing waits.
  virtual void didCloseWindow(platform::window_delegate& controller) = 0;

 protected:
  ~windows_owner() = default;
};

}  // namespace windows
