#pragma once

#include "windows/document_window.h"

#include <memory>

/// A window with one document: it asks before unsaved changes are lost.
class WynDocumentController : public windows::document_window {
 public:
  explicit WynDocumentController(windows::windows_owner& owner) : document_window(owner) {}

  void setTextDocument(std::shared_ptr<WynDocument> document);

  // document_window
  bool canBeUsedForNewDocument() const override;
  // platform::window_delegate
  bool windowShouldClose() override;
  bool isDocumentEdited() const override;

  // command_owner
  bool willExecuteCommand(commands::command_options const& command) override;

 protected:
  // windows::document_window
  void documentDidChange() override;
};
