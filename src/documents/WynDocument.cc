#include "documents/WynDocument.h"

#include "documents/WynDocumentCache.h"
#include "documents/printable_name.h"
#include "documents/untitled_numbers.h"
#include "path/file_system.h"
#include "platform/notification_center.h"
#include "settings/store.h"

using documents::untitled_numbers;

class WynDocument::is_edited_notify : public text::storage::observer {
 public:
  explicit is_edited_notify(WynDocument& document) : document_(document) {
    document_.storage_->add_observer(this);
  }
  ~is_edited_notify() override { document_.storage_->remove_observer(this); }
  void did_change_memento(unsigned long, unsigned long to) override {
    document_.updateDocumentEdited(to);
  }

 private:
  WynDocument& document_;
};

std::shared_ptr<WynDocument> WynDocument::document() {
  return std::make_shared<WynDocument>();
}

encoding::charset_t WynDocument::defaultFileEncoding() {
  auto const key = settings::store().string("WynDefaultFileEncoding");
  return encoding::charset_for_key(key).value_or(encoding::UTF8);
}

line_ending::type WynDocument::defaultLineEnding() {
  auto const key = settings::store().string("WynDefaultLineEndings");
  return line_ending::type_for_key(key).value_or(line_ending::LF);
}

WynDocument::WynDocument() : WynDocument(std::make_unique<text::storage>()) {}

WynDocument::WynDocument(std::unique_ptr<text::storage> storage) : storage_(std::move(storage)) {
  storage_->undo_manager.begin_group();
  lastSavedMemento_ = storage_->current_memento;
  untitledCount_ = untitled_numbers::of_documents().take();
  supplementaryPairs_ = documents::preserves_supplementary_characters();
  setFileEncodingAndLineEndingsToDefaults();
  lastSavedFormat_ = presentFormat();
  observer_ = std::make_unique<is_edited_notify>(*this);
}

WynDocument::~WynDocument() {
  if (!viewCache_.empty() && fileContent_ != file_content::not_loaded)
    saveMetaData(filename_, *viewCache_.back());
  tellOpeners(!isDocumentEdited_);
  if (filename_.empty()) untitled_numbers::of_documents().give_back();
  WynDocumentCache::instance().remove(filename_, weak_from_this());
}

std::size_t WynDocument::length() const {
  std::size_t units = storage_->lines() - 1;
  for (std::size_t line = 0; line < storage_->lines(); ++line) units += storage_->size(line);
  return units;
}

void WynDocument::becomeFile(std::string const& path) {
  bool const was_untitled = filename_.empty();
  if (filename_ != path) {
    fileContent_ = file_content::kept;
    fileIsGone_ = fileDiffers_ = false;
    bool const is_written = writtenElsewhere_ && writtenElsewhere_->path == path;
    fileStamp_ = is_written ? std::optional(writtenElsewhere_->stamp) : std::nullopt;
    filePlace_ = is_written ? writtenElsewhere_->place : path::place_of(path);
    attributesRead_ = is_written ? writtenElsewhere_->attributes : std::nullopt;
    if (is_written) loneSurrogates_ = std::move(writtenElsewhere_->loneSurrogates);
    writtenElsewhere_.reset();
  }
  filename_ = path;
  if (was_untitled && !path.empty()) untitled_numbers::of_documents().give_back();
  if (!was_untitled && path.empty()) untitledCount_ = untitled_numbers::of_documents().take();
}

void WynDocument::setFilename(std::string const& path) {
  std::string const old = filename_;
  becomeFile(path.empty() ? path : path::standardize(path));
  auxiliaryFileInfo_.clear();
  if (filename_ != old) {
    tellOpeners(false);
    watchFile();
  }
  notifyFilename(old);
}

void WynDocument::notifyFilename(std::string const& old) {
  auto& cache = WynDocumentCache::instance();
  cache.remove(old, weak_from_this());
  if (!filename_.empty()) cache.add(filename_, weak_from_this());
  plist::dictionary info;
  if (!old.empty()) info["old"] = old;
  if (!filename_.empty()) info["new"] = filename_;
  platform::notification_center::standard().post(filenameDidChange, this, info);
}

std::string WynDocument::displayName() const {
  if (!filename_.empty()) return documents::printable_name(filename_);
  return untitledCount_ < 2 ? "untitled" : "untitled " + std::to_string(untitledCount_);
}

std::optional<documents::file_date> WynDocument::fileModificationDate() const {
  if (!fileStamp_) return std::nullopt;
  return fileStamp_->modified;
}

void WynDocument::setFileEncodingAndLineEndingsToDefaults() {
  fileEncoding_ = defaultFileEncoding();
  lineEnding_ = defaultLineEnding();
}

void WynDocument::setFileEncoding(encoding::charset_t charset) {
  fileEncoding_ = charset;
  updateDocumentEdited(storage_->current_memento);
}

void WynDocument::setLineEnding(line_ending::type type) {
  lineEnding_ = type;
  updateDocumentEdited(storage_->current_memento);
}

void WynDocument::setByteOrderMark(bool mark) {
  byteOrderMark_ = mark;
  updateDocumentEdited(storage_->current_memento);
}

bool WynDocument::hasEdits(unsigned long memento) const {
  return memento != lastSavedMemento_ || presentFormat() != lastSavedFormat_;
}

// An untitled document with nothing in it isn't edited, so that it closes without a question.
void WynDocument::updateDocumentEdited(unsigned long memento) {
  bool const has_content = !filename_.empty() || !storage_->empty();
  setDocumentEdited(has_content && (hasEdits(memento) || fileIsGone_ || fileDiffers_));
}

void WynDocument::setDocumentEdited(bool edited) {
  if (edited == isDocumentEdited_) return;
  isDocumentEdited_ = edited;
  platform::notification_center::standard().post(documentEditedDidChange, this, edited);
}

bool WynDocument::openDocument() {
  if (++openCount_ == 1) watchFile();
  return true;
}

void WynDocument::closeDocument() {
  if (openCount_ != 0) --openCount_;
  if (openCount_ != 0) return;
  tellOpeners(!isDocumentEdited_);
  WynDocumentCache::instance().remove(filename_, weak_from_this());
  watchFile();
}
