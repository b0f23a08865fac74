#include "windows/document_window.h"

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
#include <set>
#include <string_view>
#include <vector>

namespace windows {
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

std::string unsaved_documents(std::size_t count) {
  return "You have " + std::to_string(count) + " documents with unsaved changes.";
}

document_window::document_window(windows_owner& owner) : owner_(owner) {
  setNextResponder(&owner.lastResponder());
  textView_.setNextResponder(this);
  textView_.setCommandOwner(this);
  // Made when it is wanted: it needs the key bindings.
  textView_.setContextMenu([this] { return owner_.contextMenu(); });
  addFileMethods();
  addEncodingMethods();
  window_ = platform::desktop::current().make_window(*this, textView_, textView_);
  textView_.bind([this](std::string_view key, plist::value const& value) {
    window_->update_value(key, value);
  });
}

document_window::~document_window() {
  textView_.setDocument(nullptr);
}

void document_window::addFileMethods() {
  auto const add = [this](char const* selector, bool (document_window::*action)()) {
    addMethod(selector, [this, action](plist::value const&) {
      // A refusal or failure has been told to the user: no beep on top of it.
      (this->*action)();
      return plist::value();
    });
  };
  add("saveDocument:", &document_window::saveDocument);
  add("saveDocumentAs:", &document_window::saveDocumentAs);
  add("revertDocumentToSaved:", &document_window::revertDocument);
  addMethod("canRevertDocumentToSaved", [this](plist::value const&) {
    return plist::value(!document_->filename().empty() && document_->isDocumentEdited());
  });
  addMethod("performClose:", [this](plist::value const&) {
    if (windowShouldClose()) window_->close();
    return plist::value();
  });
  addMethod("performCloseTab:", [this](plist::value const& tab) {
    closeTab(static_cast<platform::tab_id>(tab.integer_or(0)));
    return plist::value();
  });
}

void document_window::addEncodingMethods() {
  addMethod("takeFileEncodingFrom:", [this](plist::value const& sender) {
    auto const charset = encoding::charset_of_number(sender.integer_or(encoding::UTF8));
    if (!charset) return plist::value(false);
    document_->setFileEncoding(*charset);
    chosen().charset = true;
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
    chosen().line_ending = true;
    publishDocument();
    return plist::value();
  });
  addMethod("takeLineEndingFromIsChecked:", [this](plist::value const& sender) {
    return plist::value(sender.integer_or(-1) == document_->lineEnding());
  });
  addMethod("toggleByteOrderMark:", [this](plist::value const&) {
    document_->setByteOrderMark(!document_->byteOrderMark());
    chosen().mark = true;
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

void document_window::showDocument(std::shared_ptr<WynDocument> document) {
  document_ = std::move(document);
  auto& center = platform::notification_center::standard();
  auto const refresh = [this](auto const&) { documentDidChange(); };
  nameToken_ = center.observe(WynDocument::filenameDidChange, refresh, document_.get());
  editedToken_ = center.observe(WynDocument::documentEditedDidChange, refresh, document_.get());
  openersToken_ = center.observe(WynDocument::openersDidChange, refresh, document_.get());
  fileToken_ = center.observe(
      WynDocument::fileDidChange, [this](auto const&) { checkForFilesystemChanges(); },
      document_.get());
  std::erase_if(chosen_, [](auto const& each) { return each.first.expired(); });
  textView_.setDocument(document_);
  documentDidChange();
}

void document_window::documentDidChange() {
  bool const gone = document_->fileIsGone();
  bool const differs = !gone && document_->fileDiffers();
  bool const read_only = !gone && documents::is_read_only(document_->filename());
  showTitle(titleHasFolder_);
  owner_.documentNameDidChange();
  window_->update_value("fileState", gone        ? "File Deleted"
                                     : differs   ? "File Changed on Disk"
                                     : read_only ? "Read-Only"
                                                 : "");
  window_->set_represented_filename(document_->filename());
  window_->set_document_edited(isDocumentEdited());
  publishDocument();
}

void document_window::showTitle(bool with_folder) {
  titleHasFolder_ = with_folder;
  std::string const title = windowTitle();
  if (title == shownTitle_) return;
  shownTitle_ = title;
  window_->set_title(title);
}

std::string document_window::windowTitle() const {
  std::string title = document_->displayName();
  std::string const& file = document_->filename();
  if (titleHasFolder_ && !file.empty())
    title += " (" + documents::printable_name(path::parent(file)) + ")";
  if (document_->fileIsGone())
    title += " (deleted)";
  else if (document_->fileDiffers())
    title += " (changed on disk)";
  std::string waiting;
  for (std::string const& name : document_->openerNames())
    waiting += (waiting.empty() ? "" : ", ") + documents::printable(name);
  return waiting.empty() ? title : title + " \u2014 awaited by " + waiting;
}

void document_window::publishDocument() {
  window_->update_value("fileEncoding", encoding::charset_title[shownEncoding()]);
  window_->update_value("lineEnding", line_ending_labels[document_->lineEnding()]);
}

// A text that is all ASCII is saved as UTF-8 once something else is typed.
encoding::charset_t document_window::shownEncoding() const {
  encoding::charset_t const charset = document_->fileEncoding();
  return charset == encoding::ASCII ? encoding::UTF8 : charset;
}

void document_window::setCallerEnvironment(std::vector<std::string> const& variables) {
  static std::set<std::string_view> const own = {
      "BASH_ENV", "DESKTOP_STARTUP_ID", "OLDPWD", "PWD", "SHLVL", "XDG_ACTIVATION_TOKEN", "_"};
  callerEnvironment_.clear();
  for (std::string_view const variable : variables) {
    std::size_t const equals = variable.find('=');
    std::string_view const name = variable.substr(0, equals);
    if (equals == std::string_view::npos || name.empty() || name.starts_with("QN_") ||
        own.contains(name))
      continue;
    callerEnvironment_.insert_or_assign(std::string(name),
                                        std::string(variable.substr(equals + 1)));
  }
}

void document_window::showWindow() {
  window_->make_key_and_order_front();
}

bool document_window::askToSaveDocument(WynDocument& document) {
  document.lookForFile();
  if (!document.isDocumentEdited() || document.textIsTaken()) return true;
  window_->make_key_and_order_front();
  std::string const name = quoted(document.displayName());
  platform::alert question{"Do you want to save the changes you made in the document " + name + "?",
                           "Your changes will be lost if you don't save them.",
                           {"Save", "Cancel", "Don't Save"},
                           1};
  if (document.fileIsGone()) {
    question.title = "The file of the document " + name + " was deleted. Do you want to save it?";
    question.text = "Its text will be lost if you don't save it.";
  } else if (document.fileDiffers()) {
    question.text =
        "Another program has changed the file: saving replaces what that has written. " +
        question.text;
  }
  switch (platform::desktop::current().alerts().run(question)) {
    case 0:
      return saveDocument(document);
    case 2:
      document.dropUnsavedText();
      return true;
    default:
      return false;
  }
}

// What is edited is written as the project wants it, but for what the user has chosen here. A
// charset that text has been read in stays; ASCII and a file that isn't there yet have none.
void document_window::followProject(WynDocument& document) {
  if (!document.isDocumentEdited()) return;
  auto const project = conventions::declared_for(document.filename());
  auto const found = chosen_.find(document.weak_from_this());
  choices const chosen = found == chosen_.end() ? choices() : found->second;
  if (project.line_ending && !chosen.line_ending) document.setLineEnding(*project.line_ending);
  bool const has_charset =
      document.fileModificationDate() && document.fileEncoding() != encoding::ASCII;
  if (project.charset && !has_charset && !chosen.charset)
    document.setFileEncoding(*project.charset);
  bool const has_mark = document.fileEncoding() == encoding::UTF8 && !chosen.mark;
  if (project.byte_order_mark && has_mark) document.setByteOrderMark(*project.byte_order_mark);
  if (&document == document_.get()) textView_.tidyBeforeSaving(project);
}

document_window::choices& document_window::chosen() {
  return chosen_[document_];
}

void document_window::saveQuietly() {
  for (auto const& document : documents()) {
    bool const asks = document->filename().empty() || document->fileIsGone() ||
                      document->fileDiffers() || documents::is_read_only(document->filename()) ||
                      !documents::can_be_encoded(document->storage(), document->fileEncoding());
    if (!asks && document->isDocumentEdited()) document->writeToFile(document->filename());
  }
}

std::vector<std::shared_ptr<WynDocument>> document_window::documents() const {
  if (document_ == nullptr) return {};
  return {document_};
}

std::string document_window::folderForNewFiles() const {
  bool const has_file = document_ != nullptr && !document_->filename().empty();
  return has_file ? path::parent(document_->filename()) : owner_.currentDirectory();
}

void document_window::closeTab(platform::tab_id) {
  if (windowShouldClose()) window_->close();  // may end this object
}

bool document_window::saveDocument() {
  return saveDocument(*document_);
}

bool document_window::saveDocumentAs() {
  return saveDocumentAs(*document_);
}

bool document_window::saveDocument(WynDocument& document) {
  if (document.filename().empty()) return saveDocumentAs(document);
  followProject(document);
  return document.writeToFile(document.filename());
}

bool document_window::saveDocumentAs(WynDocument& document) {
  platform::save_request request;
  request.title = "Save As";
  std::string const old = document.filename();
  request.directory = old.empty() ? owner_.currentDirectory() : path::parent(old);
  request.name = old.empty() ? document.displayName() + ".txt" : path::name(old);
  for (std::size_t n = 0; n < offered_charsets().size(); ++n) {
    request.encodings.push_back(encoding::charset_title[offered_charsets()[n]]);
    if (offered_charsets()[n] == document.fileEncoding()) request.encoding = n;
  }
  for (auto const* name : line_ending_labels) request.line_endings.push_back(name);
  request.line_ending = static_cast<std::size_t>(document.lineEnding());

  auto const answer = platform::desktop::current().panels().run_save(request);
  if (!answer) return false;
  auto const old_encoding = document.fileEncoding();
  auto const old_ending = document.lineEnding();
  document.setFileEncoding(offered_charsets()[answer->encoding]);
  document.setLineEnding(static_cast<line_ending::type>(answer->line_ending));
  if (!document.writeToFile(answer->path)) {
    document.setFileEncoding(old_encoding);
    document.setLineEnding(old_ending);
    return false;
  }
  document.setFilename(answer->path);
  owner_.noteRecentFile(answer->path);
  return true;
}

bool document_window::revertDocument() {
  platform::alert const question{
      "Do you want to revert to the saved version of " + quoted(document_->displayName()) + "?",
      "Your changes since the last save will be taken back. Undo brings them again.",
      {"Revert", "Cancel"},
      1};
  if (document_->isDocumentEdited() && platform::desktop::current().alerts().run(question) != 0)
    return false;
  return reopenWithEncoding(document_->fileEncoding());
}

bool document_window::reopenWithEncoding(std::int64_t number) {
  auto const charset = encoding::charset_of_number(number);
  if (!charset) return false;
  bool const done =
      textView_.replacingText([&] { return document_->reopenWithEncoding(*charset); });
  publishDocument();
  return done;
}

void document_window::windowWillClose() {
  owner_.didCloseWindow(*this);
}

void document_window::windowDidBecomeKey() {
  platform::desktop::current().waits().deliver(lives_, [this] {
    if (document_ != nullptr) checkForFilesystemChanges();
  });
}

void document_window::checkForFilesystemChanges() {
  textView_.replacingText([this] { return document_->checkForFilesystemChanges(); });
}

bool document_window::takesOutput(commands::finished_command const& command) {
  return owner_.takesOutput(command);
}

void document_window::openAsNewDocument(text::text_block const& text) {
  owner_.openAsNewDocument(text);
}

}  // namespace windows
