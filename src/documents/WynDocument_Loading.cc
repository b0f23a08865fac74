#include <cerrno>
#include <functional>
#include <new>

#include "documents/WynDocument.h"
#include "documents/WynDocumentCache.h"
#include "documents/document_alerts.h"
#include "documents/replace_text.h"
#include "path/file_system.h"
#include "settings/store.h"

using documents::file_text, documents::preserves_supplementary_characters;

namespace {

bool preserves_format() {
  return settings::store().boolean("WynFileEncodingAndLineEndingsPreserve");
}

std::unique_ptr<text::storage> storage_with(text::text_block const& units) {
  auto storage = std::make_unique<text::storage>();
  storage->insert(storage->end(-1), units);
  storage->forget_history();
  return storage;
}

using file_reading = std::function<std::optional<path::file_error>(bool pairs, file_text&)>;

/// Null if it failed; the user knows why, but for a file that isn't there. `reason` may be null.
std::unique_ptr<text::storage> load(std::string const& path, file_reading const& read, bool pairs,
                                    file_text& text, path::file_error* reason) {
  std::optional<path::file_error> error;
  try {
    error = read(pairs, text);
    if (!error || error->code == ENOENT) return storage_with(text.units);
    documents::tell_could_not_open(*error, path);
  } catch (std::bad_alloc const&) {
    text = {};
    error = path::make_file_error("read", path, ENOMEM);
    documents::tell_out_of_memory(path);
  }
  if (reason) *reason = *error;
  return nullptr;
}

}  // namespace

std::shared_ptr<WynDocument> WynDocument::documentWithContentsOfFile(std::string const& path,
                                                                     path::file_error* reason) {
  if (auto shared = WynDocumentCache::instance().documentForPath(path)) return shared;
  auto document = initWithContentsOfFile(path, reason);
  if (document) WynDocumentCache::instance().add(document->filename(), document);
  return document;
}

std::shared_ptr<WynDocument> WynDocument::initWithContentsOfFile(std::string const& path,
                                                                 path::file_error* reason) {
  std::string const file = path::standardize(path);
  bool const pairs = preserves_supplementary_characters();
  auto const read = [&](bool with_pairs, file_text& text) {
    return documents::read_file_text(file, std::nullopt, with_pairs, text);
  };
  file_text text;
  auto storage = load(file, read, pairs, text, reason);
  if (storage == nullptr) return nullptr;
  auto document = std::make_shared<WynDocument>(std::move(storage));
  document->becomeFile(file);
  document->fileStamp_ = text.stamp;
  document->filePlace_ = text.place;
  document->attributesRead_ = text.info;
  document->wasReadAs(text, pairs);
  return document;
}

std::shared_ptr<WynDocument> WynDocument::documentWithContentsOfStream(int descriptor,
                                                                       std::string const& name) {
  bool const pairs = preserves_supplementary_characters();
  auto const read = [&](bool with_pairs, file_text& text) {
    return documents::read_stream_text(descriptor, name, with_pairs, text);
  };
  file_text text;
  auto storage = load(name, read, pairs, text, nullptr);
  if (storage == nullptr) return nullptr;
  auto document = std::make_shared<WynDocument>(std::move(storage));
  document->wasReadAs(text, pairs);
  return document;
}

void WynDocument::wasReadAs(file_text const& text, bool pairs) {
  useMarkOf(text);
  useFormatOf(text);
  lastSavedFormat_ = presentFormat();
  rememberContent(text, pairs);
}

void WynDocument::useMarkOf(file_text const& text) {
  if (text.charset == encoding::UTF8) byteOrderMark_ = text.byte_order_mark;
}

void WynDocument::useFormatOf(file_text const& text) {
  if (!preserves_format()) return;
  fileEncoding_ = text.charset;
  lineEnding_ = text.line_ending;
}

void WynDocument::rememberContent(file_text const& text, bool pairs) {
  supplementaryPairs_ = pairs;
  charsetRead_ = text.charset;
  // Without pairs many files lose bytes, and their owner has chosen that.
  bool const lost_bytes = !text.exact && pairs;
  fileContent_ = lost_bytes    ? file_content::has_lost_bytes
                 : text.binary ? file_content::binary
                               : file_content::kept;
  loneSurrogates_.clear();
  if (text.charset == encoding::UTF8 && pairs)
    loneSurrogates_ = documents::lone_surrogates_in(text.units.view());
}

// How the user wants it written from now on may still be something else.
void WynDocument::textIsOnDisk() {
  lastSavedMemento_ = storage_->current_memento;
  lastSavedFormat_.mark = byteOrderMark_;
  fileDiffers_ = false;
  updateDocumentEdited(lastSavedMemento_);
}

void WynDocument::textIsSaved(unsigned memento) {
  fileIsGone_ = fileDiffers_ = false;
  lastSavedMemento_ = memento;
  lastSavedFormat_ = presentFormat();
  updateDocumentEdited(storage_->current_memento);
}

bool WynDocument::readAgain(std::optional<encoding::charset_t> charset, bool pairs, file_text& text,
                            std::optional<path::file_error>& error) {
  try {
    error = documents::read_file_text(filename_, charset, pairs, text);
    // Memory must not run out between the erasure of the old text and the insertion of the new.
    if (!error) storage_with(text.units);
    return !error;
  } catch (std::bad_alloc const&) {
    documents::tell_out_of_memory(filename_);
    return false;
  }
}

bool WynDocument::reopenWithEncoding(encoding::charset_t charset) {
  if (filename_.empty()) return true;
  auto const self = weak_from_this().lock();  // an alert may let the last window go
  bool const pairs = preserves_supplementary_characters();
  file_text text;
  std::optional<path::file_error> error;
  if (!readAgain(charset, pairs, text, error)) {
    if (error) documents::tell_could_not_open(*error, filename_);
    return false;
  }
  documents::replace_text(*storage_, text.units);
  useMarkOf(text);
  if (preserves_format()) fileEncoding_ = charset;
  rememberContent(text, pairs);
  fileStamp_ = text.stamp;
  filePlace_ = text.place;
  attributesRead_ = text.info;
  textIsSaved(storage_->current_memento);
  return true;
}

bool WynDocument::restore(documents::safety_copy copy) {
  auto const self = weak_from_this().lock();  // an alert may let the last window go
  file_text text;
  std::optional<path::file_error> error;
  try {
    error = copy.read(text);
    if (!error) storage_with(text.units);  // see readAgain
  } catch (std::bad_alloc const&) {
    documents::tell_out_of_memory(copy.file());
    return false;
  }
  if (error) {
    documents::tell_could_not_open(*error, copy.file());
    return false;
  }
  auto const& format = copy.origin().format;
  fileEncoding_ = copy.origin().charset_of_file.value_or(format.charset);
  lineEnding_ = format.line_ending;
  byteOrderMark_ = format.byte_order_mark;
  supplementaryPairs_ = format.pairs;
  documents::replace_text(*storage_, text.units);  // observers see the new format
  if (fileContent_ != file_content::not_loaded) fileContent_ = file_content::kept;
  safetyCopies_.push_back(std::move(copy));
  return true;
}
