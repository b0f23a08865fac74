#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/run_loop.h"
#include "search/patient_work.h"
#include "search/project_search.h"
#include "text/text_block.h"

namespace search {

/// A search through a project beside the main loop: results come on the main thread, in their
/// order, while it runs. It ends when this object goes. Main thread only.
class project_find {
 public:
  struct observer {
    /// A few at a time; files in which nothing was found come too.
    std::function<void(std::vector<file_result>)> take;
    /// Once: there are no more results, also after stop().
    std::function<void(std::vector<path::file_error> folders)> end;
  };

  /// `texts` are what `request.open` borrows. Null if too many earlier searches can't be stopped.
  /// Throws std::invalid_argument for a bad pattern.
  static std::unique_ptr<project_find> begin(project_search_request request,
                                             std::vector<text::text_slice> texts, observer watch);
  ~project_find();

  void stop();
  bool is_running() const { return timer_ != nullptr; }
  /// Memory has run out.
  bool has_failed() const;

 private:
  struct shared;

  project_find() = default;
  void look();

  observer watch_;
  std::shared_ptr<shared> shared_;
  std::unique_ptr<work_aside> work_;
  std::unique_ptr<platform::timer> timer_;
  std::shared_ptr<char> const lives_ = std::make_shared<char>();
};

}  // namespace search
