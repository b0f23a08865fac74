#include "platform/file_watcher.h"

#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "platform/system/links.h"
#include "platform/system/replace_file.h"

namespace platform {
namespace {

constexpr std::uint32_t changes = IN_CLOSE_WRITE | IN_MODIFY | IN_ATTRIB | IN_CREATE | IN_DELETE |
                                  IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF |
                                  IN_ONLYDIR;
constexpr std::uint32_t folder_is_gone = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED;
constexpr char const* any_entry = "/";     // which no file is called
constexpr double share_of_time = 1. / 20;  // that a task may take, of all the time

struct place {
  std::string folder, name;
};

place place_of(std::string const& path) {
  return {folder_of(path), name_of(path)};
}

bool is_folder(std::string const& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

/// Where something happens when the file that the path leads to is changed, made or removed.
std::vector<place> places_of(std::string const& path) {
  std::vector<place> result;
  for (std::string const& link : chain_of_links(path)) {
    place at = place_of(link);
    while (!is_folder(at.folder) && at.folder != "/" && at.folder != ".") at = place_of(at.folder);
    result.push_back(std::move(at));
  }
  return result;
}

}  // namespace

class file_watcher::file : public token {
 public:
  file(file_watcher& owner, std::string path, bool with_entries, std::function<void()> changed)
      : owner_(&owner),
        path_(std::move(path)),
        with_entries_(with_entries),
        changed_(std::move(changed)) {
    owner_->files_.insert(this);
    if (!owner_->is_off_) add_folders();
  }
  ~file() override {
    if (owner_ == nullptr) return;
    drop_folders();
    owner_->files_.erase(this);
  }

  void owner_goes() {
    timer_.reset();
    owner_ = nullptr;
  }
  bool is_at(int number, char const* name, std::uint32_t what) const {
    if (with_entries_ && (what & IN_ATTRIB) != 0) return false;
    return std::any_of(places_.begin(), places_.end(), [&](auto const& watched) {
      bool const any_name = name == nullptr || watched.second == any_entry;
      return watched.first == number && (any_name || watched.second == name);
    });
  }
  void note_change() {
    last_change_ = owner_->loop_.now();
    if (timer_) return;
    first_change_ = last_change_;
    wait(std::max(rest, not_before_ - first_change_));
  }

 private:
  void add_folders() {
    std::vector<place> all = places_of(path_);
    if (with_entries_ && is_folder(path_)) all.push_back({path_, any_entry});
    for (place& at : all)
      if (int const number = owner_->add_folder(at.folder); number != -1)
        places_.emplace_back(number, std::move(at.name));
  }
  void drop_folders() {
    for (auto const& [number, name] : std::exchange(places_, {})) owner_->drop_folder(number);
  }
  void wait(double seconds) {
    timer_ = owner_->loop_.schedule(seconds, false, [this] { time_is_up(); });
  }
  void time_is_up() {
    double const now = owner_->loop_.now(), tick = 0.001;
    double const left = std::min(last_change_ + rest, first_change_ + patience) - now;
    if (left > tick) return wait(left);
    timer_.reset();
    // Other folders may be the ones to watch now. Those that stay aren't given up in between.
    auto const former = std::exchange(places_, {});
    add_folders();
    for (auto const& [number, name] : former) owner_->drop_folder(number);
    tell(now);
  }
  void tell(double now) {
    std::weak_ptr<char> const alive = alive_;
    auto const changed = changed_;
    double const waited = owner_->waits_.seconds_waited();
    changed();
    if (alive.expired() || owner_ == nullptr) return;
    double const at_rest = owner_->waits_.seconds_waited() - waited;
    not_before_ =
        owner_->loop_.now() + (owner_->loop_.now() - now - at_rest) * (1 / share_of_time - 1);
  }

  file_watcher* owner_;
  std::string path_;
  bool with_entries_;
  std::function<void()> changed_;
  std::vector<std::pair<int, std::string>> places_;
  std::unique_ptr<timer> timer_;
  double first_change_ = 0, last_change_ = 0, not_before_ = 0;
  std::shared_ptr<char> alive_ = std::make_shared<char>();
};

file_watcher::~file_watcher() {
  for (file* watched : files_) watched->owner_goes();
  readable_.reset();
  if (descriptor_ != -1) close(descriptor_);
}

std::unique_ptr<file_watcher::token> file_watcher::watch(std::string path,
                                                         std::function<void()> changed) {
  return std::make_unique<file>(*this, std::move(path), false, std::move(changed));
}

std::unique_ptr<file_watcher::token> file_watcher::watch_folder(std::string path,
                                                                std::function<void()> changed) {
  return std::make_unique<file>(*this, std::move(path), true, std::move(changed));
}

bool file_watcher::start() {
  if (descriptor_ != -1) return true;
  descriptor_ = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  if (descriptor_ == -1) return false;
  readable_ = loop_.watch_descriptor(descriptor_, [this] { read_events(); });
  return true;
}

// The number is -1 on failure. One folder has one number, by whatever path it is reached.
int file_watcher::add_folder(std::string const& folder) {
  if (!start()) return -1;
  int const number = inotify_add_watch(descriptor_, folder.c_str(), changes);
  if (number != -1) ++users_[number];
  return number;
}

void file_watcher::drop_folder(int number) {
  auto const found = users_.find(number);
  if (found == users_.end() || --found->second != 0) return;
  users_.erase(found);
  inotify_rm_watch(descriptor_, number);
}

void file_watcher::read_events() {
  alignas(inotify_event) char buffer[16384];
  for (ssize_t size; (size = read(descriptor_, buffer, sizeof buffer)) > 0;)
    handle_events(buffer, size);
}

void file_watcher::handle_events(char const* buffer, ssize_t size) {
  for (ssize_t at = 0; at < size;) {
    inotify_event event;
    std::memcpy(&event, buffer + at, sizeof event);
    char const* const name = event.len != 0 ? buffer + at + sizeof event : nullptr;
    if (event.mask & IN_IGNORED) users_.erase(event.wd);
    if (event.mask & IN_Q_OVERFLOW)
      for (file* watched : files_) watched->note_change();
    else
      handle(event.wd, name, event.mask);
    at += static_cast<ssize_t>(sizeof event + event.len);
  }
}

// An event without a name is about the folder itself, and then only its end matters.
void file_watcher::handle(int number, char const* name, std::uint32_t what) {
  if (name == nullptr && (what & folder_is_gone) == 0) return;
  for (file* watched : files_)
    if (watched->is_at(number, name, what)) watched->note_change();
}

}  // namespace platform
