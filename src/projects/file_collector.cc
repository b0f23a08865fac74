#include "projects/file_collector.h"

#include "path/file_system.h"
#include "path/path.h"
#include "platform/log.h"
#include "platform/system/start_thread.h"

#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <mutex>
#include <new>
#include <thread>
#include <utility>

namespace projects {
namespace {

// A batch is given away when it is as large, or as old, as that.
constexpr file_batch::index first_files = 512, most_in_batch = 16384;
constexpr std::chrono::milliseconds longest_wait(50);

bool exists(std::string const& path) {
  struct stat info;
  return ::lstat(path.c_str(), &info) == 0;
}

bool is_above_all(std::string const& folder) {
  std::string const home = path::home();
  return folder == "/" || home == folder || home.starts_with(folder + "/");
}

// In which all roots stand, so that their own names can be typed.
std::string folder_of_all(std::vector<walk_root> const& roots) {
  std::string common;
  for (walk_root const& root : roots) {
    std::string parent = path::parent(root.path);
    if (&root == &roots.front()) common = parent;
    while (common != "/" && parent != common && !parent.starts_with(common + "/"))
      common = path::parent(common);
  }
  return common;
}

}  // namespace

std::vector<walk_root> roots_near(std::string const& folder, filter_patterns const& standard) {
  walk_root root{folder, true, standard};
  if (is_above_all(folder)) root.patterns.folders = "!.";
  for (std::string at = folder; !is_above_all(at) && !at.empty(); at = path::parent(at))
    for (char const* const name : {".git", ".hg", ".svn", ".bzr", "_darcs", "_MTN"})
      if (exists(path::join(at, name))) return {{at, true, standard}};
  return {root};
}

std::vector<std::string> files_to_offer(std::vector<std::string> files,
                                        std::vector<walk_root> const& roots,
                                        offered_extensions const& wanted) {
  std::erase_if(files, [&](std::string const& path) {
    struct stat info;
    return !wanted.take(path) || (!roots.empty() && !walk_would_take(roots, path)) ||
           ::stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode);
  });
  return files;
}

// The thread owns it too.
struct file_collector::shared {
  std::mutex mutable mutex;
  bool is_wanted = true;
  std::vector<file_chooser::batch> batches;
  bool is_done = false, is_cut = false;

  bool goes_on() const {
    std::lock_guard const lock(mutex);
    return is_wanted;
  }

  /// False if nobody wants it any more.
  bool give(std::shared_ptr<file_batch>& batch) {
    batch->finish();
    std::lock_guard const lock(mutex);
    if (batch->size() > 0) batches.push_back(std::exchange(batch, nullptr));
    return is_wanted;
  }

  void walk(request wanted);
};

void file_collector::shared::walk(request wanted) {
  using clock = std::chrono::steady_clock;
  auto batch = std::make_shared<file_batch>();
  auto given = clock::now();
  std::size_t count = 0;
  file_batch::index most = first_files;
  file_walk files(std::move(wanted.roots), {});
  std::size_t seen = 0;
  for (std::string path; files.next(path);) {
    if (++seen % 1024 == 0 && !goes_on()) return;
    if (!wanted.wanted.take(path)) continue;
    if (count++ == most_files) {
      std::lock_guard const lock(mutex);
      is_cut = true;
      break;
    }
    batch->add(path);
    bool const is_old = batch->size() % 8 == 0 && clock::now() - given > longest_wait;
    if (batch->size() < most && !is_old) continue;
    if (!give(batch)) return;
    batch = std::make_shared<file_batch>();
    given = clock::now();
    most = std::min<file_batch::index>(2 * most, most_in_batch);
  }
  give(batch);
}

file_collector::file_collector(request wanted)
    : shared_(std::make_shared<shared>()), top_(folder_of_all(wanted.roots)) {
  auto const work = [self = shared_, wanted = std::move(wanted)] {
    try {
      self->walk(wanted);
    } catch (std::bad_alloc const&) {
      platform::log_once("out of memory: Go to File doesn't offer all files");
    }
    std::lock_guard const lock(self->mutex);
    self->is_done = true;
  };
  std::thread thread;
  if (platform::start_thread(thread, work))
    thread.detach();
  else
    work();
}

file_collector::~file_collector() {
  std::lock_guard const lock(shared_->mutex);
  shared_->is_wanted = false;
}

std::vector<file_chooser::batch> file_collector::take() {
  std::lock_guard const lock(shared_->mutex);
  return std::exchange(shared_->batches, {});
}

bool file_collector::is_done() const {
  std::lock_guard const lock(shared_->mutex);
  return shared_->is_done;
}

bool file_collector::is_cut() const {
  std::lock_guard const lock(shared_->mutex);
  return shared_->is_cut;
}

}  // namespace projects
