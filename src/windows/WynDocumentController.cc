#include "windows/WynDocumentController.h"

#include "conventions/declared.h"
#include "documents/WynDocument.h"
#include "documents/printable_name.h"
#include "documents/save_file.h"
#include "documents/storage_bytes.h"
#include "encoding/charset.h"
#include "encoding/line_ending.h"
#include "path/path.h"
#include "platform/desktop.h"
#include "platform/shown_characters.h"

#include <array>
#include <vector>

namespace {

// The charsets that a user may choose, in the order of the save panel.
std::vector<encoding::charset_t> const& offered_charsets() {
  static auto const& offered = *new std::vector<encoding::charset_t>([] {
    using namespace encoding;
    std::vector<charset_t> list = {UTF8, UTF16BE, UTF16LE, Latin1, MacRoman, CP1252, ASCII};
    for (int charset = Unknown + 1; charset < charsets_end; ++charset)
      list.push_back(static_cast<charset_t>(charset));
    return list;
  }());
  return offered;
}

// By line_ending::type, as the menus have them.
constexpr std::array line_ending_labels = {"LF (Unix)", "CR (Classic)", "CR LF (Windows)"};

using platform::quoted;

}  // namespace

WynDocumentController::WynDocumentController(windows::windows_owner& owner) : owner_(owner) {
  setNextResponder(&owner.lastResponder());
  textView_.setNextResponder(this);
  textView_.setCommandOwner(this);
  textView_.setContextMenu(owner.contextMenu());
  addFileMethods();
  addEncodingMethods();
  window_ = platform::desktop::current().make_window(*this, textView_, textView_);
  textView_.bind([this](std::string_view key, plist::value const& value) {
    window_->update_value(key, value);
  });
}

WynDocumentController::~WynDocumentController() {
  textView_.setDocument(nullptr);
}

void WynDocumentController::addFileMethods() {
  auto const add = [this](char const* selector, bool (WynDocumentController::*action)()) {
    addMethod(selector, [this, action](plist::value const&) {
      // A refusal or failure has been told to the user: no beep on top of it.
      (this->*action)();
      return plist::value();
    });
  };
  add("saveDocument:", &WynDocumentController::saveDocument);
  add("saveDocumentAs:", &WynDocumentController::saveDocumentAs);
  add("revertDocumentToSaved:", &WynDocumentController::revertDocument);
  addMethod("canRevertDocumentToSaved", [this](plist::value const&) {
    return plist::value(!document_->filename().empty() && document_->isDocumentEdited());
  });
  addMethod("performClose:", [this](plist::value const&) {
    if (windowShouldClose()) window_->close();
    return plist::value();
  });
}

void WynDocumentController::addEncodingMethods() {
  addMethod("takeFileEncodingFrom:", [this](plist::value const& sender) {
    auto const charset = encoding::charset_of_number(sender.integer_or(encoding::UTF8));
    if (!charset) return plist::value(false);
    document_->setFileEncoding(*charset);
    charsetIsChosen_ = true;
    publishDocument();
    return plist::value();
  });
  addMethod("takeFileEncodingFromIsChecked:", [this](plist::value const& sender) {
    return plist::value(sender.integer_or(-1) == shownEncoding());
  });
  addMethod("takeLineEndingFrom:", [this](plist::value const& sender) {
    auto const ending = sender.integer_or(line_ending::LF);
    if (ending < line_ending::LF || ending > line_ending::CRLF) return plist::value(false);
    document_->setLineEnding(static_cast<line_ending::type>(ending));
    lineEndingIsChosen_ = true;
    publishDocument();
    return plist::value();
  });
  addMethod("takeLineEndingFromIsChecked:", [this](plist::value const& sender) {
    return plist::value(sender.integer_or(-1) == document_->lineEnding());
  });
  addMethod("toggleByteOrderMark:", [this](plist::value const&) {
    document_->setByteOrderMark(!document_->byteOrderMark());
    markIsChosen_ = true;
    return plist::value();
  });
  addMethod("canToggleByteOrderMark", [this](plist::value const&) {
    return plist::value(document_->fileEncoding() == encoding::UTF8);
  });
  addMethod("toggleByteOrderMarkIsChecked:",
            [this](plist::value const&) { return plist::value(document_->byteOrderMark()); });
  addMethod("reopenWithEncoding:", [this](plist::value const& sender) {
    return plist::value(reopenWithEncoding(sender.integer_or(-1)));
  });
  addMethod("canReopenWithEncoding",
            [this](plist::value const&) { return plist::value(!document_->filename().empty()); });
}

void WynDocumentController::setTextDocument(std::shared_ptr<WynDocument> document) {
  document_ = std::move(document);
  auto& center = platform::notification_center::standard();
  auto const refresh = [this](auto const&) { documentDidChange(); };
  nameToken_ = center.observe(WynDocument::filenameDidChange, refresh, document_.get());
  editedToken_ = center.observe(WynDocument::documentEditedDidChange, refresh, document_.get());
  fileToken_ = center.observe(
      WynDocument::fileDidChange, [this](auto const&) { checkForFilesystemChanges(); },
      document_.get());
  lineEndingIsChosen_ = markIsChosen_ = charsetIsChosen_ = false;
  textView_.setDocument(document_);
  documentDidChange();
}

void WynDocumentController::documentDidChange() {
  bool const gone = document_->fileIsGone();
  bool const read_only = !gone && documents::is_read_only(document_->filename());
  showTitle(titleHasFolder_);
  owner_.documentNameDidChange();
  window_->update_value("fileState", gone ? "File Deleted" : read_only ? "Read-Only" : "");
  window_->set_represented_filename(document_->filename());
  window_->set_document_edited(document_->isDocumentEdited());
  publishDocument();
}

void WynDocumentController::showTitle(bool with_folder) {
  titleHasFolder_ = with_folder;
  std::string title = document_->displayName();
  std::string const& file = document_->filename();
  if (with_folder && !file.empty())
    title += " (" + documents::printable_name(path::parent(file)) + ")";
  if (document_->fileIsGone()) title += " (deleted)";
  if (title == shownTitle_) return;
  shownTitle_ = title;
  window_->set_title(title);
}

void WynDocumentController::publishDocument() {
  window_->update_value("fileEncoding", encoding::charset_title[shownEncoding()]);
  window_->update_value("lineEnding", line_ending_labels[document_->lineEnding()]);
}

// A text that is all ASCII is saved as UTF-8 once something else is typed.
encoding::charset_t WynDocumentController::shownEncoding() const {
  encoding::charset_t const charset = document_->fileEncoding();
  return charset == encoding::ASCII ? encoding::UTF8 : charset;
}

void WynDocumentController::showWindow() {
  window_->make_key_and_order_front();
}

bool WynDocumentController::canBeUsedForNewDocument() const {
  return document_ != nullptr && document_->filename().empty() && document_->storage().empty() &&
         !document_->isDocumentEdited() && !textView_.isPlayingMacro();
}

bool WynDocumentController::isDocumentEdited() const {
  return document_ != nullptr && document_->isDocumentEdited();
}

bool WynDocumentController::askToSave() {
  if (document_ != nullptr) document_->lookForFile();
  if (!isDocumentEdited()) return true;
  window_->make_key_and_order_front();
  std::string const name = quoted(document_->displayName());
  platform::alert question{"Do you want to save the changes you made in the document " + name + "?",
                           "Your changes will be lost if you don't save them.",
                           {"Save", "Cancel", "Don't Save"},
                           1};
  if (document_->fileIsGone()) {
    question.title = "The file of the document " + name + " was deleted. Do you want to save it?";
    question.text = "Its text will be lost if you don't save it.";
  }
  switch (platform::desktop::current().alerts().run(question)) {
    case 0:
      return saveDocument();
    case 2:
      document_->dropUnsavedText();
      return true;
    default:
      return false;
  }
}

// What is edited is written as the project wants it, but for what the user has chosen here. A
// charset that text has been read in stays; ASCII and a file that isn't there yet have none.
void WynDocumentController::followProject() {
  if (!document_->isDocumentEdited()) return;
  auto const project = conventions::declared_for(document_->filename());
  if (project.line_ending && !lineEndingIsChosen_) document_->setLineEnding(*project.line_ending);
  bool const has_charset =
      document_->fileModificationDate() && document_->fileEncoding() != encoding::ASCII;
  if (project.charset && !has_charset && !charsetIsChosen_)
    document_->setFileEncoding(*project.charset);
  bool const has_mark = document_->fileEncoding() == encoding::UTF8 && !markIsChosen_;
  if (project.byte_order_mark && has_mark) document_->setByteOrderMark(*project.byte_order_mark);
  textView_.tidyBeforeSaving(project);
}

bool WynDocumentController::saveQuietly() {
  bool const asks = document_->filename().empty() || document_->fileIsGone() ||
                    documents::is_read_only(document_->filename()) ||
                    !documents::can_be_encoded(document_->storage(), document_->fileEncoding());
  if (asks || !document_->isDocumentEdited()) return false;
  return document_->writeToFile(document_->filename());
}

bool WynDocumentController::saveDocument() {
  if (document_->filename().empty()) return saveDocumentAs();
  followProject();
  return document_->writeToFile(document_->filename());
}

bool WynDocumentController::saveDocumentAs() {
  platform::save_request request;
  request.title = "Save As";
  std::string const old = document_->filename();
  request.directory = old.empty() ? owner_.currentDirectory() : path::parent(old);
  request.name = old.empty() ? document_->displayName() + ".txt" : path::name(old);
  for (std::size_t n = 0; n < offered_charsets().size(); ++n) {
    request.encodings.push_back(encoding::charset_title[offered_charsets()[n]]);
    if (offered_charsets()[n] == document_->fileEncoding()) request.encoding = n;
  }
  for (auto const* name : line_ending_labels) request.line_endings.push_back(name);
  request.line_ending = static_cast<std::size_t>(document_->lineEnding());

  auto const answer = platform::desktop::current().panels().run_save(request);
  if (!answer) return false;
  auto const old_encoding = document_->fileEncoding();
  auto const old_ending = document_->lineEnding();
  document_->setFileEncoding(offered_charsets()[answer->encoding]);
  document_->setLineEnding(static_cast<line_ending::type>(answer->line_ending));
  if (!document_->writeToFile(answer->path)) {
    document_->setFileEncoding(old_encoding);
    document_->setLineEnding(old_ending);
    return false;
  }
  document_->setFilename(answer->path);
  owner_.noteRecentFile(answer->path);
  return true;
}

bool WynDocumentController::revertDocument() {
  platform::alert const question{
      "Do you want to revert to the saved version of " + quoted(document_->displayName()) + "?",
      "Your changes since the last save will be taken back. Undo brings them again.",
      {"Revert", "Cancel"},
      1};
  if (document_->isDocumentEdited() && platform::desktop::current().alerts().run(question) != 0)
    return false;
  return reopenWithEncoding(document_->fileEncoding());
}

bool WynDocumentController::reopenWithEncoding(std::int64_t number) {
  auto const charset = encoding::charset_of_number(number);
  if (!charset) return false;
  bool const done =
      textView_.replacingText([&] { return document_->reopenWithEncoding(*charset); });
  publishDocument();
  return done;
}

void WynDocumentController::windowWillClose() {
  owner_.didCloseWindow(*this);
}

void WynDocumentController::windowDidBecomeKey() {
  platform::desktop::current().waits().deliver(lives_, [this] {
    if (document_ != nullptr) checkForFilesystemChanges();
  });
}

void WynDocumentController::checkForFilesystemChanges() {
  textView_.replacingText([this] { return document_->checkForFilesystemChanges(); });
}

// As if the user had answered "Save" when the window was to close. A file that others have deleted
// is written anew.
bool WynDocumentController::willExecuteCommand(commands::command_options const& command) {
  bool const wants_save =
      command.saves_first && (isDocumentEdited() || document_->filename().empty());
  return !wants_save || saveDocument();
}

bool WynDocumentController::takesOutput(commands::finished_command const& command) {
  return owner_.takesOutput(command);
}

void WynDocumentController::openAsNewDocument(text::text_block const& text) {
  owner_.openAsNewDocument(text);
}
