#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <new>
#include <utility>

#include "documents/WynDocument.h"
#include "documents/document_alerts.h"
#include "documents/file_text.h"
#include "documents/privileged_save.h"
#include "documents/save_file.h"
#include "documents/storage_bytes.h"
#include "path/file_system.h"
#include "platform/notification_center.h"

namespace {

using documents::can_be_encoded;

/// `damaged`: the file isn't what it was, but not safely what was saved either.
enum class outcome { saved, unchanged, damaged, reverting };

auto const plain_save = [](auto const& request, auto& copy, auto& written) {
  return documents::save_file(request, copy, written);
};

/// A save that asks where something stands in its way. Where the file wasn't written the user
/// knows.
class asking_save {
 public:
  /// `may_revert`: what another program has written can be taken over instead.
  asking_save(std::string path, path::write_options options, bool may_revert)
      : path_(std::move(path)), options_(std::move(options)), may_revert_(may_revert) {}

  outcome run(text::storage const& storage, encoding::file_format const& format) {
    if (std::string const lost = documents::lost_by_saving(path_);
        !lost.empty() && !documents::ask_to_lose_attributes(path_, lost))
      return outcome::unchanged;
    std::optional<path::write_error> error;
    try {
      documents::save_request request{path_, documents::storage_bytes(storage, format), format,
                                      options_};
      error = write(request, plain_save);
      if (may_ask(error) && documents::is_read_only(path_)) {
        if (!documents::ask_to_overwrite(path_)) return outcome::unchanged;
        request.options.even_read_only = true;
        error = write(request, plain_save);
      }
      if (may_ask(error) && documents::lacks_permission(*error))
        error = write(request, [refusal = *error](auto const& wanted, auto& safe, auto& version) {
          return documents::save_with_privileges(wanted, safe, version, refusal);
        });
    } catch (std::bad_alloc const&) {
      error = path::write_error{path::make_file_error("write", path_, ENOMEM)};
    }
    if (!error) return outcome::saved;
    if (reverts_) return outcome::reverting;
    meddled = error->code == EBUSY;
    if (!refused_) documents::tell_could_not_save(*error, path_);
    return error->target_damaged || error->is_in_place ? outcome::damaged : outcome::unchanged;
  }

  /// What a damaged file should hold.
  std::optional<documents::safety_copy> copy;
  /// What stands in the file after a save.
  std::optional<path::file_version> written;
  /// A save that failed because another program wrote at the same time.
  bool meddled = false;

 private:
  template <typename Write>
  std::optional<path::write_error> write(documents::save_request& request, Write save) {
    constexpr int most_changes = 100;  // of a file that is written all the time
    for (int changes = 0;; ++changes) {
      auto const error = save(request, copy, written);
      bool const goes_on =
          error && changes < most_changes &&
          ((error->unprotected && !request.without_copy && no_copy(request, *error)) ||
           (error->changed && may_revert_ && overwrites_changes(request, *error)));
      if (!goes_on) return error;
    }
  }

  bool no_copy(documents::save_request& request, path::write_error const& error) {
    request.without_copy = documents::ask_to_save_without_copy(path_, error);
    refused_ = !request.without_copy;
    return request.without_copy;
  }

  bool overwrites_changes(documents::save_request& request, path::write_error const& error) {
    auto const answer = documents::ask_to_overwrite_changes(path_);
    refused_ = answer != documents::overwriting::keep_ours;
    reverts_ = answer == documents::overwriting::revert;
    request.options.known->version = error.found;
    return !refused_;
  }

  bool may_ask(std::optional<path::write_error> const& error) const {
    return error && !refused_ && !error->changed;
  }

  std::string const path_;
  path::write_options const options_;
  bool const may_revert_;
  bool refused_ = false;
  bool reverts_ = false;
};

/// Without pairs each half is written by itself, and the user has chosen that.
bool must_be_whole(encoding::file_format const& format) {
  return format.charset == encoding::UTF8 && format.pairs;
}

}  // namespace

std::optional<encoding::file_format> WynDocument::formatForSaving() const {
  // Those that the file held are given back as they were.
  auto const confirmed = [this](encoding::file_format const& format) {
    std::optional<encoding::file_format> result = format;
    if (!must_be_whole(format)) return result;
    auto const line = documents::line_with_new_lone_surrogate(*storage_, loneSurrogates_);
    if (line && !documents::ask_to_save_lone_surrogate(displayName(), *line + 1)) result.reset();
    return result;
  };
  encoding::file_format format{fileEncoding_, lineEnding_, byteOrderMark_, supplementaryPairs_};
  if (can_be_encoded(*storage_, format.charset)) return confirmed(format);
  if (format.charset == encoding::ASCII) {
    // A document that has been all ASCII gets its first other character without a question.
    format.charset = defaultFileEncoding();
    if (can_be_encoded(*storage_, format.charset)) return confirmed(format);
  }
  auto const lost = documents::first_lost_character(*storage_, format.charset);
  if (!documents::ask_to_save_as_utf8(displayName(), format.charset, lost)) return std::nullopt;
  format.charset = encoding::UTF8;
  format.byte_order_mark = false;
  return confirmed(format);
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

path::write_options WynDocument::optionsForSaving(std::string const& path) const {
  path::write_options options;
  if (path == filename_) {
    std::optional<path::file_version> version;
    if (fileStamp_) version = fileStamp_->target;
    options.known = path::known_file{version, filePlace_};
    options.attributes_if_new = attributesRead_;
    return options;
  }
  auto const there = documents::stamp_of(path);
  options.known =
      path::known_file{there ? std::optional(there->target) : std::nullopt, path::place_of(path)};
  options.attributes = attributesRead_;
  auto const own =
      fileStamp_ ? documents::attributes_of(filename_, fileStamp_->target) : std::nullopt;
  if (!own) return options;
  // Another file, which may be open to everybody, can have got the number of the one that was read.
  bool const is_other = path::version_of(*own) != fileStamp_->target;
  if (is_other && options.attributes)
    options.attributes->st_mode &= own->st_mode;
  else
    options.attributes = own;
  return options;
}

/// For a file that is created by whoever runs the program: no owner, and of the permissions only
/// what the umask leaves. One that is there already keeps its own: whoever owns the text isn't to
/// get the file.
void WynDocument::takeLeaveOfOwner(path::write_options& options) {
  if (!options.attributes) return;
  mode_t const mask = umask(0);
  umask(mask);
  options.attributes->st_mode &= ~mask & 0777;
  options.attributes->st_uid = geteuid();
  options.attributes->st_gid = static_cast<gid_t>(-1);  // stays
  options.attributes_if_new = std::exchange(options.attributes, std::nullopt);
}

/// What others have written to the file of an unedited text is taken over, as it is at other times.
void WynDocument::lookBeforeSaving() {
  if (isDocumentEdited_ || fileModifiedOnDiskAndWaitingForUser_ || !fileStamp_) return;
  auto const stamp = documents::stamp_of(filename_);
  if (!stamp || stamp == fileStamp_) return;
  platform::notification_center::standard().post(fileDidChange, this);
  checkForFilesystemChanges();
}

bool WynDocument::writeToFile(std::string const& path) {
  return write(path, false);
}

bool WynDocument::writeCopyToFile(std::string const& path) {
  return write(path, true);
}

bool WynDocument::write(std::string const& given_path, bool as_copy) {
  if (given_path.empty()) return false;
  auto const self = weak_from_this().lock();  // an alert may let the last window go
  std::string const path = path::standardize(given_path);
  bool const is_own = path == filename_;
  if (is_own) lookBeforeSaving();
  auto const format = formatForSaving();
  if (!format || !mayOverwrite(path)) return false;
  auto const memento = storage_->current_memento;
  // While a password is asked for, events are handled; a change that is our own is no news.
  bool const waiting = std::exchange(fileModifiedOnDiskAndWaitingForUser_, true);
  auto options = optionsForSaving(path);
  if (as_copy) takeLeaveOfOwner(options);
  asking_save saving(path, std::move(options), is_own);
  outcome const result = saving.run(*storage_, *format);
  fileModifiedOnDiskAndWaitingForUser_ = waiting;
  if (saving.copy) safetyCopies_.push_back(std::move(*saving.copy));
  // Where no other application has changed the file there will be nothing to ask.
  if (result == outcome::damaged && is_own && !saving.meddled)
    fileStamp_ = documents::stamp_of(path);
  if (result == outcome::reverting) revertToDisk();
  if (result != outcome::saved) return false;
  didWrite(path, *format, memento, *saving.written);
  return true;
}

void WynDocument::didWrite(std::string const& path, encoding::file_format const& format,
                           unsigned memento, path::file_version const& written) {
  documentHasBeenSaved_ = true;
  fileEncoding_ = format.charset;
  byteOrderMark_ = format.byte_order_mark;
  if (path == filename_) fileContent_ = file_content::kept;
  textIsSaved(memento);
  removeSafetyCopies();
  written_file file{path,
                    documents::stamp_of(path, written),
                    path::place_of(path),
                    documents::attributes_of(path, written),
                    {}};
  if (must_be_whole(format)) file.loneSurrogates = documents::lone_surrogates_in(*storage_);
  if (path == filename_) {
    fileStamp_ = file.stamp;
    filePlace_ = file.place;
    if (file.attributes) attributesRead_ = file.attributes;
    loneSurrogates_ = std::move(file.loneSurrogates);
  } else {
    writtenElsewhere_ = std::move(file);
  }
  if (!openViews_.empty()) saveMetaData(path, *openViews_.back());
  notifyFilename(filename_);
}

void WynDocument::removeSafetyCopies() {
  for (documents::safety_copy& copy : safetyCopies_) copy.remove();
  safetyCopies_.clear();
}

std::optional<path::file_error> WynDocument::keepUnsavedText() {
  // News of the file's end may be under way; nothing that shows the text is to hear of it now.
  if (!isDocumentEdited_ && !hasLostFile()) return std::nullopt;
  encoding::file_format format{fileEncoding_, lineEnding_, byteOrderMark_, supplementaryPairs_};
  std::optional<encoding::charset_t> charset_of_file;
  if (!can_be_encoded(*storage_, format.charset))
    charset_of_file = std::exchange(format.charset, encoding::UTF8);
  std::optional<documents::safety_copy> copy;
  try {
    auto const bytes = documents::storage_bytes(*storage_, format);
    documents::safety_copy_origin const origin{.path = filename_,
                                               .title = displayName(),
                                               .format = format,
                                               .overwrites = false,
                                               .charset_of_file = charset_of_file};
    if (auto error = documents::safety_copy::create_anywhere(origin, bytes, copy)) return error;
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
