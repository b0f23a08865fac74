#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "documents/WynDocument.h"
#include "documents/document_alerts.h"
#include "documents/replace_text.h"
#include "documents/storage_bytes.h"
#include "platform/desktop.h"
#include "platform/notification_center.h"

// What other programs do to the file of a document.

using documents::file_text, documents::preserves_supplementary_characters;

void WynDocument::watchFile() {
  fileWatch_.reset();
  auto* const desktop = platform::desktop::current_or_null();
  if (desktop == nullptr || openCount_ == 0 || filename_.empty()) return;
  fileWatch_ = desktop->files().watch(filename_, [this] { fileMayHaveChanged(); });
}

// Also called after each of our own saves. No question comes on top of another one, and no text is
// replaced while something further up the stack works on it. A question waits for a pause in
// typing.
void WynDocument::fileMayHaveChanged() {
  // Shown at once, also while something waits; but a save that is under way is our own.
  if (!fileModifiedOnDiskAndWaitingForUser_ && openCount_ != 0) {
    auto const stamp = documents::stamp_of(filename_);
    setFileState(hasLostFile(), fileDiffers_ || (hasEdits(storage_->current_memento) &&
                                                 fileStamp_ && stamp && stamp != fileStamp_));
  }
  if (std::exchange(looksLater_, true)) return;
  auto const look = [this] {
    auto const self = weak_from_this().lock();
    looksLater_ = false;
    bool const is_as_known = documents::stamp_of(filename_) == fileStamp_ && !fileIsGone_;
    if (openCount_ == 0 || is_as_known) return;
    platform::notification_center::standard().post(fileDidChange, this);
    checkForFilesystemChanges();
  };
  auto& waits = platform::desktop::current().waits();
  if (isDocumentEdited_ && documents::stamp_of(filename_)) {
    waits.deliver_in_pause(weak_from_this(), look);
  } else {
    waits.deliver(weak_from_this(), look);
  }
}

/// By what shows the text, if anything does.
void WynDocument::revertToDisk() {
  revertIsDecided_ = true;
  platform::notification_center::standard().post(fileDidChange, this);
  checkForFilesystemChanges();
  revertIsDecided_ = false;
}

/// Whether the text is that of a file which isn't there any more, so that it stands nowhere else:
/// a folder or a pipe of that name has none of it.
bool WynDocument::hasLostFile() const {
  if (filename_.empty() || !fileStamp_) return false;
  struct stat info;
  return stat(filename_.c_str(), &info) != 0 || !S_ISREG(info.st_mode);
}

void WynDocument::lookForFile() {
  if (openCount_ != 0) setFileState(hasLostFile(), fileDiffers_);
}

// What shows the document is told, also when it was edited before.
void WynDocument::setFileState(bool gone, bool differs) {
  if (gone == fileIsGone_ && differs == fileDiffers_) return;
  fileIsGone_ = gone;
  fileDiffers_ = differs;
  updateDocumentEdited(storage_->current_memento);
  platform::notification_center::standard().post(documentEditedDidChange, this, isDocumentEdited_);
}

bool WynDocument::isToBeKept() {
  if (!isDocumentEdited_ || revertIsDecided_) return false;
  fileModifiedOnDiskAndWaitingForUser_ = true;
  bool const revert = documents::ask_to_revert(filename_);
  fileModifiedOnDiskAndWaitingForUser_ = false;
  return !revert;
}

bool WynDocument::checkForFilesystemChanges() {
  if (fileModifiedOnDiskAndWaitingForUser_ || filename_.empty()) return false;
  lookForFile();
  if (fileIsGone_) return false;
  auto const stamp = documents::stamp_of(filename_);
  if (!stamp || (stamp == fileStamp_ && !revertIsDecided_)) return false;
  auto const self = weak_from_this().lock();
  bool const pairs = preserves_supplementary_characters();
  file_text text;
  std::optional<path::file_error> error;
  if (!readAgain(std::nullopt, pairs, text, error)) {
    bool const too_large = error && error->code == EFBIG;
    if (too_large) documents::tell_could_not_open(*error, filename_);
    if (!error || too_large) {  // for lack of room, which is reported once for each change
      fileStamp_ = stamp;
      fileContent_ = file_content::not_loaded;
    }
    setFileState(false, true);
    return false;
  }
  if (!text.stamp) return false;
  useMarkOf(text);
  bool const equal = documents::holds(*storage_, text.units.view());
  bool const replace = !equal && !isToBeKept();
  revertIsDecided_ = false;
  if (replace) {
    documents::replace_text(*storage_, text.units);
    useFormatOf(text);
  }
  if (equal || replace) {
    rememberContent(text, pairs);
    attributesRead_ = text.info;
    if (replace)
      textIsSaved(storage_->current_memento);
    else
      textIsOnDisk();
  } else {
    fileContent_ = file_content::kept;  // the user has chosen what is in the window
    setFileState(false, true);
  }
  fileStamp_ = text.stamp;
  notifyFilename(filename_);
  return replace;
}
