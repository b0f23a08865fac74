#include <cerrno>
#include <new>
#include <utility>

#include "documents/WynDocument.h"
#include "documents/document_alerts.h"
#include "documents/privileged_save.h"
#include "documents/save_file.h"
#include "documents/storage_bytes.h"
#include "path/file_system.h"

namespace {

using documents::can_be_encoded;

enum class outcome { saved, unchanged, damaged };

/// A save that asks where something stands in its way. Where the file wasn't written the user
/// knows.
class asking_save {
 public:
  explicit asking_save(std::string path) : path_(std::move(path)) {}

  outcome run(text::storage const& storage, encoding::file_format const& format) {
    if (std::string const lost = documents::lost_by_saving(path_);
        !lost.empty() && !documents::ask_to_lose_attributes(path_, lost))
      return outcome::unchanged;
    std::optional<path::write_error> error;
    try {
      documents::save_request request{path_, documents::storage_bytes(storage, format), format};
      error = write(request, documents::save_file);
      if (error && !refused_ && documents::is_read_only(path_)) {
        if (!documents::ask_to_overwrite(path_)) return outcome::unchanged;
        error = write(request, documents::save_read_only_file);
      }
      if (error && !refused_ && documents::lacks_permission(*error))
        error = write(request, [refusal = *error](auto const& wanted, auto& safe) {
          return documents::save_with_privileges(wanted, safe, refusal);
        });
    } catch (std::bad_alloc const&) {
      error = path::write_error{path::make_file_error("write", path_, ENOMEM)};
    }
    if (!error) return outcome::saved;
    if (!refused_) documents::tell_could_not_save(*error, path_);
    return error->target_damaged ? outcome::damaged : outcome::unchanged;
  }

  /// What a damaged file should hold.
  std::optional<documents::safety_copy> copy;

 private:
  template <typename Write>
  std::optional<path::write_error> write(documents::save_request& request, Write save) {
    auto const error = save(request, copy);
    if (!error || !error->unprotected) return error;
    refused_ = !documents::ask_to_save_without_copy(path_, *error);
    if (refused_) return error;
    request.without_copy = true;
    return save(request, copy);
  }

  std::string const path_;
  bool refused_ = false;
};

}  // namespace

std::optional<encoding::file_format> WynDocument::formatForSaving() const {
  encoding::file_format format{fileEncoding_, lineEnding_, byteOrderMark_, supplementaryPairs_};
  if (can_be_encoded(*storage_, format.charset)) return format;
  if (format.charset == encoding::ASCII) {
    // A document that has been all ASCII gets its first other character without a question.
    format.charset = defaultFileEncoding();
    if (can_be_encoded(*storage_, format.charset)) return format;
  }
  if (!documents::ask_to_save_as_utf8(displayName(), format.charset)) return std::nullopt;
  format.charset = encoding::UTF8;
  format.byte_order_mark = false;
  return format;
}

bool WynDocument::mayOverwrite(std::string const& path) const {
  if (path != filename_ || !path::exists(path)) return true;
  switch (fileContent_) {
    case file_content::kept:
      return true;
    case file_content::has_lost_bytes:
      return documents::ask_to_lose_bytes(path, charsetRead_);
    case file_content::binary:
      return documents::ask_to_change_binary_file(path);
    case file_content::not_loaded:
      return documents::ask_to_lose_unloaded_file(path);
  }
  return false;
}

bool WynDocument::writeToFile(std::string const& path) {
  return write(path, documents::file_attributes::of(filename_));
}

bool WynDocument::writeCopyToFile(std::string const& path) {
  auto const attributes = documents::file_attributes::of(filename_);
  return write(path, path::exists(path) ? attributes : attributes.for_copy());
}

bool WynDocument::write(std::string const& given_path,
                        documents::file_attributes const& attributes) {
  if (given_path.empty()) return false;
  auto const self = weak_from_this().lock();  // an alert may let the last window go
  std::string const path = path::standardize(given_path);
  auto const format = formatForSaving();
  if (!format || !mayOverwrite(path)) return false;
  auto const memento = storage_->current_memento;
  // While a password is asked for, events are handled; a change that is our own is no news.
  bool const waiting = std::exchange(fileModifiedOnDiskAndWaitingForUser_, true);
  asking_save saving(path);
  outcome const result = saving.run(*storage_, *format);
  fileModifiedOnDiskAndWaitingForUser_ = waiting;
  if (saving.copy) safetyCopies_.push_back(std::move(*saving.copy));
  // It was no other application that has changed the file.
  if (result == outcome::damaged && path == filename_) fileStamp_ = documents::stamp_of(path);
  if (result != outcome::saved) return false;
  attributes.apply_to(path);
  didWrite(path, *format, memento);
  return true;
}

void WynDocument::didWrite(std::string const& path, encoding::file_format const& format,
                           unsigned memento) {
  documentHasBeenSaved_ = true;
  fileEncoding_ = format.charset;
  byteOrderMark_ = format.byte_order_mark;
  if (path == filename_) fileContent_ = file_content::kept;
  textIsSaved(memento);
  removeSafetyCopies();
  fileStamp_ = documents::stamp_of(path);
  if (!openViews_.empty()) saveMetaData(path, *openViews_.back());
  notifyFilename(filename_);
}

void WynDocument::removeSafetyCopies() {
  for (documents::safety_copy& copy : safetyCopies_) copy.remove();
  safetyCopies_.clear();
}

std::optional<path::file_error> WynDocument::keepUnsavedText() {
  if (!isDocumentEdited_) return std::nullopt;
  encoding::file_format format{fileEncoding_, lineEnding_, byteOrderMark_, supplementaryPairs_};
  if (!can_be_encoded(*storage_, format.charset)) format.charset = encoding::UTF8;
  std::optional<documents::safety_copy> copy;
  try {
    auto const bytes = documents::storage_bytes(*storage_, format);
    if (auto error =
            documents::safety_copy::create({filename_, displayName(), format, false}, bytes, copy))
      return error;
  } catch (std::bad_alloc const&) {
    return path::make_file_error("write", filename_, ENOMEM);
  }
  removeSafetyCopies();
  safetyCopies_.push_back(std::move(*copy));
  return std::nullopt;
}

void WynDocument::dropUnsavedText() {
  std::erase_if(safetyCopies_, [](documents::safety_copy& copy) {
    if (!copy.origin().overwrites) copy.remove();
    return !copy.origin().overwrites;
  });
}
