#include "windows/WynDocumentController.h"

#include "documents/WynDocument.h"

void WynDocumentController::setTextDocument(std::shared_ptr<WynDocument> document) {
  showDocument(std::move(document));
}

bool WynDocumentController::canBeUsedForNewDocument() const {
  auto const& document = textDocument();
  return document != nullptr && document->filename().empty() && document->storage().empty() &&
         !document->isDocumentEdited() && !document->textIsTaken() && !textView().isPlayingMacro();
}

void WynDocumentController::documentDidChange() {
  document_window::documentDidChange();
  window().set_offers(canBeUsedForNewDocument() ? owner().recentItems()
                                                : std::vector<platform::menu_item>());
}

bool WynDocumentController::isDocumentEdited() const {
  return textDocument() != nullptr && textDocument()->isDocumentEdited() &&
         !textDocument()->textIsTaken();
}

bool WynDocumentController::windowShouldClose() {
  return textDocument() == nullptr || askToSaveDocument(*textDocument());
}

// As if the user had answered "Save" when the window was to close. A file that others have deleted
// is written anew.
bool WynDocumentController::willExecuteCommand(commands::command_options const& command) {
  bool const wants_save =
      command.saves_first && (isDocumentEdited() || textDocument()->filename().empty());
  return !wants_save || saveDocument();
}
