#pragma once

#include "windows/document_window.h"

#include <memory>

/// A window with one document: it asks before unsaved changes are lost.
class WynDocumentController : public windows::document_window {
 public:
  explicit WynDocumentController(windows::windows_owner& owner) : document_window(owner) {}

  void setTextDocument(std::shared_ptr<WynDocument> document);

  /// Whether another file may take this window: untitled, and nothing in it.
  bool canBeUsedForNewDocument() const;

  /// Offers to save unsaved changes. True when the window may go: saved, or not wanted.
  bool askToSave();

  // platform::window_delegate
  bool windowShouldClose() override { return askToSave(); }
  bool isDocumentEdited() const override;

  // command_owner
  bool willExecuteCommand(commands::command_options const& command) override;
};
