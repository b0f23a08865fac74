#include "platform/user_defaults.h"

#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include "platform/log.h"
#include "platform/notification_center.h"
#include "platform/system/folder_lock.h"
#include "platform/system/library_folders.h"
#include "plist/xml_reader.h"
#include "plist/xml_writer.h"

namespace platform {
namespace {

// What is damaged may be about to be written by a program that doesn't know the lock: an editor, a
// script. It is given this much time.
constexpr std::int64_t time_to_write = 2'000'000'000;  // nanoseconds

std::int64_t now_ns() {
  auto const since_1970 = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::nanoseconds>(since_1970).count();
}

std::unique_ptr<user_defaults>& standard_instance() {
  static auto& instance = *new std::unique_ptr<user_defaults>;
  return instance;
}

}  // namespace

user_defaults::user_defaults(std::string path, file_calls& calls)
    : path_(std::move(path)), calls_(calls) {}

user_defaults& user_defaults::standard() {
  auto& instance = standard_instance();
  if (!instance) instance = std::make_unique<user_defaults>(config_folder() + "/Defaults.plist");
  return *instance;
}

std::unique_ptr<user_defaults> user_defaults::set_standard(
    std::unique_ptr<user_defaults> replacement) {
  std::swap(standard_instance(), replacement);
  return replacement;
}

plist::value user_defaults::get(std::string_view key) {
  load();
  if (auto found = volatile_.find(key); found != volatile_.end()) return found->second;
  auto const pending = pending_.find(key);
  if (pending != pending_.end() && pending->second) return *pending->second;
  if (pending == pending_.end())
    if (auto found = stored_.find(key); found != stored_.end()) return found->second;
  if (auto found = registered_.find(key); found != registered_.end()) return found->second;
  return {};
}

bool user_defaults::boolean(std::string_view key, bool fallback) {
  return get(key).boolean_or(fallback);
}

std::int64_t user_defaults::integer(std::string_view key, std::int64_t fallback) {
  return get(key).integer_or(fallback);
}

double user_defaults::real(std::string_view key, double fallback) {
  return get(key).real_or(fallback);
}

std::string user_defaults::string(std::string_view key, std::string_view fallback) {
  return get(key).string_or(fallback);
}

plist::array user_defaults::array(std::string_view key) {
  return get(key).elements();
}

plist::dictionary user_defaults::dictionary(std::string_view key) {
  return get(key).entries();
}

plist::dictionary user_defaults::all() {
  load();
  plist::dictionary result = volatile_;
  plist::dictionary user = stored_;
  for (auto const& [key, v] : pending_) {
    user.erase(key);
    if (v) user.emplace(key, *v);
  }
  result.merge(user);
  result.insert(registered_.begin(), registered_.end());
  return result;
}

void user_defaults::register_defaults(plist::dictionary const& defaults) {
  for (auto const& [key, v] : defaults) registered_.insert_or_assign(key, v);
}

void user_defaults::set_check(check fault_of) {
  fault_of_ = std::move(fault_of);
  take(std::move(stored_));
}

bool user_defaults::set(std::string_view key, plist::value v, plist::value const& note) {
  if (!v) {
    remove(key);
    return true;
  }
  auto const written = plist::write_xml(plist::dictionary{{std::string(key), v}});
  if (written.error) {
    report("a setting can't be stored: " + *written.error);
    set_volatile(key, std::move(v));
    return false;
  }
  store_layer(key, std::move(v), note);
  return true;
}

void user_defaults::remove(std::string_view key) {
  store_layer(key, std::nullopt);
}

void user_defaults::store_layer(std::string_view key, std::optional<plist::value> v,
                                plist::value const& note) {
  plist::value const before = get(key);
  auto const stored = stored_.find(key);
  auto const pending = pending_.find(key);
  bool const is_stored = v ? stored != stored_.end() && stored->second == *v
                           : stored == stored_.end() && !faulty_.contains(key);
  if (!is_stored || pending != pending_.end())
    pending_.insert_or_assign(std::string(key), std::move(v));
  if (!(get(key) == before)) post(note);
}

void user_defaults::set_volatile(std::string_view key, plist::value v) {
  plist::value const before = get(key);
  volatile_.erase(std::string(key));
  if (v) volatile_.emplace(key, std::move(v));
  if (!(get(key) == before)) post();
}

void user_defaults::load() {
  if (loaded_) return;
  loaded_ = true;
  if (!path_.empty()) reload();
}

void user_defaults::take(plist::dictionary entries) {
  stored_ = std::move(entries);
  faulty_.clear();
  if (fault_of_ == nullptr) return;
  for (auto const& [key, v] : stored_) {
    std::string const fault = fault_of_(key, v);
    if (fault.empty()) continue;
    report(path_ + ": " + fault + "; the default is used instead");
    faulty_.insert(key);
  }
  std::erase_if(stored_, [this](auto const& entry) { return faulty_.contains(entry.first); });
}

void user_defaults::check_for_changes() {
  if (!loaded_ || path_.empty()) return;
  if (!pending_.empty()) store(false);
  struct stat info;
  if (::stat(path_.c_str(), &info) == 0 ? signature_of(info) == seen_ : seen_ == signature())
    return;
  auto const before = all();
  reload();
  if (all() != before) post();
}

bool user_defaults::save() {
  return store(true);
}

bool user_defaults::store(bool at_once) {
  load();
  if (path_.empty() || pending_.empty()) return true;
  auto const before = all();
  int const error = store_pending(at_once);
  bool const comes_later = error == EAGAIN && !at_once;
  if (error && !comes_later) report(path_ + ": can't be written: " + std::strerror(error));
  if (all() != before) post();
  return error == 0;
}

void user_defaults::reload() {
  file_state now = read_current();
  if (now.damage)
    report(path_ + ":" + *now.damage + "; the settings known before hold until this is mended");
  else if (now.error)
    report(path_ + ": " + std::strerror(now.error));
  if (now.error) return;  // the values known before stay in effect
  seen_ = now.seen;
  if (!now.damage) take(std::move(now.entries));
}

/// Waits, if it is to be written `at_once`, or else gives EAGAIN while a damaged file may still be
/// completed.
int user_defaults::store_pending(bool at_once) {
  if (!make_folders(folder_of(path_))) return errno;
  folder_lock const lock(folder_of(path_));
  if (lock.error()) return lock.error();
  file_state now = read_current();
  while (now.damage && is_young(now)) {
    if (!at_once) return EAGAIN;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    now = read_current();
  }
  if (now.damage) {
    now.error = set_aside(now);
    now.entries = stored_;
  }
  if (now.error) return now.error;
  for (auto const& [key, v] : pending_) {
    now.entries.erase(key);
    if (v) now.entries.emplace(key, *v);
  }
  auto const written = plist::write_xml(now.entries);
  if (written.error) return EILSEQ;  // set() lets nothing in that would lead here
  remove_left_over_temporaries(path_, calls_);
  if (int const error = replace_file(path_, written.text, calls_)) return error;
  pending_.clear();
  take(std::move(now.entries));
  struct stat info;
  seen_ = ::stat(path_.c_str(), &info) == 0 ? signature_of(info) : signature();
  return 0;
}

bool user_defaults::is_young(file_state const& state) {
  std::int64_t const age = now_ns() - state.seen.modified_ns;
  return age >= 0 && age < time_to_write;
}

/// Reads what is in the file now; a file that isn't there is empty.
user_defaults::file_state user_defaults::read_current() {
  file_state result;
  std::string text;
  struct stat info;
  result.error = read_file(path_, text, calls_, &info);
  if (result.error == ENOENT) return {};
  if (result.error) return result;
  result.seen = signature_of(info);
  auto read = plist::read_xml(text, largest_small_file);
  if (!read.error && !read.value.as_dictionary())
    read.error = {1, 1, "the top level is no dictionary"};
  if (read.error)
    result.damage = std::to_string(read.error->line) + ":" + std::to_string(read.error->column) +
                    ": " + read.error->message;
  else
    result.entries = read.value.entries();
  return result;
}

/// The state becomes that of no file.
int user_defaults::set_aside(file_state& damaged) {
  std::string name;
  if (int const error = platform::set_aside(path_, name, calls_)) return error;
  report(path_ + ":" + *damaged.damage + "; the file is kept as " + name);
  notification_center::standard().post(
      did_set_aside, this,
      plist::dictionary{{"path", path_}, {"kept", name}, {"reason", *damaged.damage}});
  damaged = {};
  return 0;
}

user_defaults::signature user_defaults::signature_of(struct stat const& info) {
  return {info.st_dev, info.st_ino, info.st_size,
          std::int64_t{info.st_mtim.tv_sec} * 1'000'000'000 + info.st_mtim.tv_nsec};
}

void user_defaults::report(std::string const& message) {
  if (reported_.insert(message).second) log(message);
}

void user_defaults::post(plist::value const& note) {
  struct restorer {
    plist::value& note;
    plist::value former;
    ~restorer() { note = former; }
  } const outer{note_, note_};
  if (!note_) note_ = note;
  notification_center::standard().post(did_change, this, plist::value(note_));
}

}  // namespace platform
