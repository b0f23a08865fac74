#pragma once

#include "commands/command_owner.h"
#include "encoding/charset.h"
#include "platform/notification_center.h"
#include "platform/window.h"
#include "textview/WynTextView.h"
#include "windows/windows_owner.h"

#include <memory>
#include <string>

class WynDocument;

/// A window with one document: it holds the text view, saves the document and asks before unsaved
/// changes are lost. Owned by its windows_owner
/// from showWindow() until its window has closed.
class WynDocumentController : public platform::window_delegate, public commands::command_owner {
 public:
  explicit WynDocumentController(windows::windows_owner& owner);
  ~WynDocumentController() override;

  void setTextDocument(std::shared_ptr<WynDocument> document);
  std::shared_ptr<WynDocument> const& textDocument() const { return document_; }
  WynTextView& textView() { return textView_; }
  platform::window& window() { return *window_; }
  void showWindow();

  /// Whether another file may take this window: untitled, and nothing in it.
  bool canBeUsedForNewDocument() const;

  /// Offers to save unsaved changes. True when the window may go: saved, or not wanted.
  bool askToSave();
  /// False when it was cancelled or failed; the user has seen an alert.
  bool saveDocument();
  bool saveDocumentAs();
  /// Saves what is edited if nothing has to be asked for that.
  bool saveQuietly();
  /// The name of the document, with that of its folder where other windows have the same.
  void showTitle(bool with_folder);

  // platform::window_delegate
  bool windowShouldClose() override { return askToSave(); }
  void windowWillClose() override;
  void windowDidBecomeKey() override;
  bool isDocumentEdited() const override;

  // command_owner
  bool willExecuteCommand(commands::command_options const& command) override;
  bool takesOutput(commands::finished_command const& command) override;
  void openAsNewDocument(text::text_block const& text) override;

 private:
  void addFileMethods();
  void followProject();
  void addEncodingMethods();
  bool revertDocument();
  bool reopenWithEncoding(std::int64_t charset);
  void documentDidChange();
  void checkForFilesystemChanges();
  void publishDocument();
  encoding::charset_t shownEncoding() const;

  windows::windows_owner& owner_;
  WynTextView textView_;
  std::shared_ptr<WynDocument> document_;
  std::unique_ptr<platform::window> window_;
  platform::notification_center::token nameToken_, editedToken_, fileToken_;
  std::string shownTitle_;
  bool titleHasFolder_ = false;
  bool lineEndingIsChosen_ = false, markIsChosen_ = false, charsetIsChosen_ = false;
  std::shared_ptr<char> const lives_ = std::make_shared<char>();
};
