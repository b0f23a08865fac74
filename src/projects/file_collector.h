#pragma once

#include <memory>
#include <string>
#include <vector>

#include "projects/file_chooser.h"
#include "projects/file_walk.h"

namespace projects {

/// Collects the files that can be chosen on a thread of its own, while they can be searched
/// already.
///
///     file_collector files({tree.walk_roots(), offered_extensions::standard()});
///     for (auto const& batch : files.take()) chooser.add(batch);   // now and then
///
/// Main thread only.
class file_collector {
 public:
  struct request {
    std::vector<walk_root> roots;
    offered_extensions wanted;
  };
  /// More aren't collected.
  static constexpr std::size_t most_files = 2'000'000;

  explicit file_collector(request wanted);
  /// Waits for nothing: a thread that hangs with a disk ends by itself.
  ~file_collector();
  file_collector(file_collector const&) = delete;
  file_collector& operator=(file_collector const&) = delete;

  /// What has come since the last call, in the order of the tree.
  std::vector<file_chooser::batch> take();
  /// Where names of folders begin that can be typed.
  std::string const& top() const { return top_; }
  /// There will be no other batch.
  bool is_done() const;
  bool is_cut() const;  ///< there are more files than can be taken

 private:
  struct shared;
  std::shared_ptr<shared> const shared_;
  std::string const top_;
};

/// What is offered beside a file of this folder that belongs to no project: the nearest folder,
/// from it upwards, that version control shows to be that of a project, else the folder itself. Of
/// the home folder and those above it the folders are left out.
std::vector<walk_root> roots_near(std::string const& folder, filter_patterns const& standard);

/// Those of the files that exist, that may be offered and, if there are `roots`, that lie in them.
/// Any thread; takes as long as disks do.
std::vector<std::string> files_to_offer(std::vector<std::string> files,
                                        std::vector<walk_root> const& roots,
                                        offered_extensions const& wanted);

}  // namespace projects
