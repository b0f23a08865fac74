#include "app/clip_history_file.h"

#include "actions/WynPasteboardManager.h"
#include "path/path.h"
#include "platform/log.h"
#include "platform/system/library_folders.h"
#include "platform/system/replace_file.h"
#include "platform/utf.h"
#include "plist/xml_reader.h"
#include "plist/xml_writer.h"
#include "settings/store.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace app {
namespace {

constexpr std::size_t most_bytes = 16 << 20;  // of UTF-8

bool is_wanted() {
  return settings::store().boolean("WynClipboardHistoryKept");
}

// The text as data, as it may hold characters that XML can't.
plist::dictionary entry_of(actions::text_clip const& clip, std::string const& text) {
  plist::dictionary entry{{"Content", plist::data(text.begin(), text.end())},
                          {"Rectangular", clip.rectangular}};
  if (clip.origin) {
    entry.emplace("Indent", clip.origin->indent);
    entry.emplace("Column", clip.origin->column);
    entry.emplace("Excess", static_cast<std::int64_t>(clip.origin->excess));
  }
  return entry;
}

std::size_t column_of(plist::value const& value) {
  return static_cast<std::size_t>(std::max<std::int64_t>(0, value.integer_or(0)));
}

std::optional<actions::text_clip> clip_from(plist::value const& entry) {
  auto const* const bytes = entry["Content"].as_data();
  if (bytes == nullptr) return std::nullopt;
  actions::text_clip clip{unicode::to_utf16(std::string(bytes->begin(), bytes->end())),
                          entry["Rectangular"].boolean_or(false), std::nullopt};
  if (entry["Indent"] && entry["Column"])
    clip.origin = {column_of(entry["Indent"]), column_of(entry["Column"]),
                   static_cast<std::ptrdiff_t>(entry["Excess"].integer_or(0))};
  return clip;
}

}  // namespace

void clip_history_file::load() {
  if (path_.empty()) return;
  if (!is_wanted()) {
    ::unlink(path_.c_str());
    return;
  }
  auto const report = [&](std::string const& what) { platform::log_once(path_ + ": " + what); };
  auto& calls = platform::file_calls::system();
  std::string contents;
  if (int const error = platform::read_file(path_, contents, calls)) {
    if (error != ENOENT) report(std::string("can't be read: ") + std::strerror(error));
    return;
  }
  auto const stored = plist::read_xml(contents, platform::largest_small_file);
  if (stored.error || !stored.value.as_array()) {
    std::string kept;
    int const error = platform::set_aside(path_, kept, calls);
    report(error == 0 ? "is damaged, and is kept as " + kept : "is damaged, and will be replaced");
    return;
  }
  std::vector<actions::text_clip> clips;
  for (plist::value const& entry : stored.value.elements())
    if (auto clip = clip_from(entry)) clips.push_back(std::move(*clip));
  auto& history = WynPasteboardManager::sharedInstance();
  history.addEarlierClips(std::move(clips));
  saved_version_ = history.version();
}

void clip_history_file::save() {
  auto const version = WynPasteboardManager::sharedInstance().version();
  if (path_.empty() || !is_wanted() || version == saved_version_) return;
  saved_version_ = version;
  write();
}

void clip_history_file::write() {
  plist::array clips;
  std::size_t bytes = 0;
  for (auto const& clip : WynPasteboardManager::sharedInstance().stack()) {
    std::string const text = unicode::to_utf8(clip->text);
    bytes += text.size();
    if (bytes > most_bytes) break;
    clips.emplace_back(entry_of(*clip, text));
  }
  auto& calls = platform::file_calls::system();
  int error = platform::make_folders(path::parent(path_)) ? 0 : errno;
  if (error == 0) {
    platform::remove_left_over_temporaries(path_, calls);
    // The mode of a file that is replaced is kept.
    if (::chmod(path_.c_str(), S_IRUSR | S_IWUSR) != 0 && errno != ENOENT) error = errno;
  }
  if (error == 0) error = platform::replace_file(path_, plist::write_xml(clips).text, calls);
  if (error != 0)
    platform::log_once(path_ + ": the clipboard history can't be written: " + std::strerror(error));
}

}  // namespace app
