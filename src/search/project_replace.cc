#include "search/project_replace.h"

#include <algorithm>
#include <new>
#include <utility>

#include "documents/WynDocument.h"
#include "documents/WynDocumentCache.h"
#include "documents/rewrite_file.h"

namespace search {
namespace {

constexpr char const* has_changed = "it has been changed since it was searched";
constexpr char const* no_memory = "there is not enough memory";

std::vector<file_match> ticked_of(found_file const& file) {
  std::vector<file_match> matches;
  for (std::size_t n = 0; n < file.matches.size(); ++n)
    if (file.ticked[n]) matches.push_back(file.matches[n]);
  return matches;
}

// One that was opened after the search holds what the file did then, if neither has changed.
bool is_as_searched(WynDocument const& document, found_file const& file) {
  if (file.memento) return document.storage().current_memento == *file.memento;
  auto const stamp = documents::stamp_of(file.path);
  return !document.isDocumentEdited() && stamp && file.version && stamp->target == *file.version;
}

}  // namespace

project_replace::project_replace(std::vector<found_file> files, match_replacement replacement,
                                 path::file_system_calls& calls)
    : files_(std::move(files)), replacement_(std::move(replacement)), calls_(calls) {
  std::erase_if(files_, [](found_file const& file) {
    return std::find(file.ticked.begin(), file.ticked.end(), true) == file.ticked.end();
  });
}

bool project_replace::step() {
  std::size_t const all = is_undoing_ ? changed_.size() : files_.size();
  if (next_ >= all) return false;
  std::size_t const at = next_++;
  std::string const path = is_undoing_ ? changed_[at].path : files_[at].path;
  try {
    report_.push_back(is_undoing_ ? put_back(changed_[at]) : replace(files_[at]));
  } catch (std::bad_alloc const&) {
    report_.push_back({.path = path, .fault = no_memory});
  }
  return next_ < all;
}

void project_replace::begin_undo() {
  if (is_undoing_) changed_.erase(changed_.begin(), changed_.begin() + std::ptrdiff_t(next_));
  files_.clear();
  report_.clear();
  next_ = 0;
  is_undoing_ = true;
}

std::size_t project_replace::replaced() const {
  std::size_t count = 0;
  for (outcome const& file : report_) count += file.fault.empty() ? file.count : 0;
  return count;
}

std::size_t project_replace::faults() const {
  return static_cast<std::size_t>(std::count_if(
      report_.begin(), report_.end(), [](outcome const& file) { return !file.fault.empty(); }));
}

project_replace::outcome project_replace::replace(found_file const& file) {
  auto const matches = ticked_of(file);
  auto const document = WynDocumentCache::instance().documentForPath(file.path);
  if (document != nullptr && document->openCount() != 0)
    return replace_in(*document, file, matches);
  if (!file.version)
    return {.path = file.path, .fault = "it has been closed since it was searched"};
  return rewrite(file, matches);
}

// From the end, so that what comes before stays where it is.
project_replace::outcome project_replace::replace_in(WynDocument& document, found_file const& file,
                                                     std::vector<file_match> const& matches) {
  text::storage& storage = document.storage();
  if (!is_as_searched(document, file)) return {.path = file.path, .fault = has_changed};
  std::u16string const text = storage.whole_text();
  changed_file changed;
  {
    text::undo_group const group(storage.undo_manager);
    for (auto match = matches.rbegin(); match != matches.rend(); ++match) {
      std::u16string const made = replacement_.expand(text, *match);
      text::iterator const first(match->first, &storage);
      storage.erase(first, text::iterator(match->last, &storage));
      storage.insert(first, made.data(), made.data() + made.size());
    }
  }
  changed.path = file.path;
  changed.document = document.weak_from_this();
  changed.memento = storage.current_memento;
  changed.count = matches.size();
  changed_.push_back(std::move(changed));
  return {.path = file.path, .count = matches.size(), .fault = {}, .is_open = true};
}

project_replace::outcome project_replace::rewrite(found_file const& file,
                                                  std::vector<file_match> const& matches) {
  changed_file changed;
  auto const result = documents::rewrite_file(
      file.path, *file.version,
      [&](text::unit_view text) -> std::optional<std::u16string> {
        file_match const& last = matches.back();
        if (std::size_t{last.offset} + last.length > text.size()) return std::nullopt;
        return with_replacements(text, matches, replacement_);
      },
      [&](std::string const& old_bytes) { return keep(old_bytes, changed); }, calls_);
  if (!result.written) {
    bool const has_fault = !result.fault.empty();
    return {.path = file.path, .fault = has_fault ? result.fault : has_changed};
  }
  changed.path = file.path;
  changed.count = matches.size();
  changed.written = *result.written;
  changed_.push_back(std::move(changed));
  return {.path = file.path, .count = matches.size()};
}

project_replace::outcome project_replace::put_back(changed_file const& file) {
  if (auto const document = file.document.lock()) {
    text::storage& storage = document->storage();
    if (storage.current_memento != file.memento)
      return {.path = file.path, .fault = "it has been changed since"};
    storage.undo_manager.undo();
    return {.path = file.path, .count = file.count, .fault = {}, .is_open = true};
  }
  if (file.written == path::file_version())
    return {.path = file.path, .fault = "it has been closed since"};
  auto const bytes = kept(file);
  if (!bytes) return {.path = file.path, .fault = "what stood in it could not be read back"};
  auto result = documents::restore_file(file.path, file.written, *bytes, calls_);
  return {.path = file.path, .count = file.count, .fault = std::move(result.fault)};
}

// In a file without a name, as it may be more than fits in memory.
bool project_replace::keep(std::string const& bytes, changed_file& file) {
  if (kept_ == nullptr) kept_.reset(std::tmpfile());
  if (kept_ == nullptr || std::fseek(kept_.get(), 0, SEEK_END) != 0) return false;
  file.kept_at = std::ftell(kept_.get());
  file.kept_size = bytes.size();
  return std::fwrite(bytes.data(), 1, bytes.size(), kept_.get()) == bytes.size() &&
         std::fflush(kept_.get()) == 0;
}

std::optional<std::string> project_replace::kept(changed_file const& file) const {
  std::string bytes(file.kept_size, '\0');
  bool const is_whole = std::fseek(kept_.get(), file.kept_at, SEEK_SET) == 0 &&
                        std::fread(bytes.data(), 1, bytes.size(), kept_.get()) == bytes.size();
  if (!is_whole) return std::nullopt;
  return bytes;
}

}  // namespace search
