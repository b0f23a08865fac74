#pragma once

#include "commands/command_owner.h"
#include "encoding/charset.h"
#include "platform/notification_center.h"
#include "platform/window.h"
#include "textview/WynTextView.h"
#include "windows/windows_owner.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

class WynDocument;

namespace windows {

/// "You have 2 documents with unsaved changes."
std::string unsaved_documents(std::size_t count);

/// A window that shows one document at a time: it holds the text view and saves the document. Owned
/// by its windows_owner from showWindow() until it has closed.
class document_window : public platform::window_delegate, public commands::command_owner {
 public:
  ~document_window() override;

  std::shared_ptr<WynDocument> const& textDocument() const { return document_; }
  WynTextView& textView() { return textView_; }
  WynTextView const& textView() const { return textView_; }
  platform::editor_window& window() { return *window_; }
  void showWindow();
  /// All that have been loaded, the one that is shown among them.
  virtual std::vector<std::shared_ptr<WynDocument>> documents() const;
  /// Where the user would look for a new one.
  virtual std::string folderForNewFiles() const;
  /// Entries of a menu that select each of the tabs.
  virtual std::vector<platform::menu_item> openTabs() const { return {}; }
  /// Whether another file may take this window: untitled, and nothing in it.
  virtual bool canBeUsedForNewDocument() const { return false; }
  /// The program ends, and the documents are taken care of: saves what else the window keeps. False
  /// if the user wants to stay.
  virtual bool saveBeforeEnd() { return true; }

  /// False when it was cancelled or failed; the user has seen an alert.
  bool saveDocument();
  bool saveDocumentAs();
  /// Saves what is edited if nothing has to be asked for that.
  void saveQuietly();
  /// The name of the document, with that of its folder where other windows have the same.
  void showTitle(bool with_folder);

  /// For commands in this window: the environment of the program that has opened it, NAME=VALUE
  /// each. What belongs to the editor itself or to that program's shell is left out.
  void setCallerEnvironment(std::vector<std::string> const& variables);

  // platform::responder
  plist::dictionary environmentVariables() const override { return callerEnvironment_; }

  // platform::window_delegate
  void windowWillClose() override;
  void windowDidBecomeKey() override;

  // command_owner
  bool takesOutput(commands::finished_command const& command) override;
  void openAsNewDocument(text::text_block const& text) override;

 protected:
  explicit document_window(windows_owner& owner);

  windows_owner& owner() { return owner_; }
  void showDocument(std::shared_ptr<WynDocument> document);
  /// Another document is shown, or what is to be seen of it outside of its text has changed.
  virtual void documentDidChange();
  /// What the window is called; the document is there.
  virtual std::string windowTitle() const;
  /// The user closes a tab, the one that is shown if it is 0; without tabs that is the window.
  virtual void closeTab(platform::tab_id tab);

  /// Whether the document may go: saved, or not wanted. Asks only if it is edited.
  bool askToSaveDocument(WynDocument& document);
  bool saveDocument(WynDocument& document);
  bool saveDocumentAs(WynDocument& document);

 private:
  struct choices {
    bool line_ending = false, mark = false, charset = false;
  };

  choices& chosen();
  void addFileMethods();
  void followProject(WynDocument& document);
  void addEncodingMethods();
  bool revertDocument();
  bool reopenWithEncoding(std::int64_t charset);
  void checkForFilesystemChanges();
  void publishDocument();
  encoding::charset_t shownEncoding() const;

  windows_owner& owner_;
  WynTextView textView_;
  std::shared_ptr<WynDocument> document_;
  std::unique_ptr<platform::editor_window> window_;
  platform::notification_center::token nameToken_, editedToken_, fileToken_, openersToken_;
  plist::dictionary callerEnvironment_;
  std::string shownTitle_;
  bool titleHasFolder_ = false;
  // What the user has chosen in this window, of each document that it has shown.
  std::map<std::weak_ptr<WynDocument>, choices, std::owner_less<>> chosen_;
  std::shared_ptr<char> const lives_ = std::make_shared<char>();
};

}  // namespace windows
