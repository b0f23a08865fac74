#pragma once

#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/picker.h"
#include "projects/background.h"
#include "projects/file_collector.h"
#include "text/line_place.h"

namespace windows {

/// The files of the projects in which files were chosen last, so that they are there at once the
/// next time. Main thread only.
class file_lists {
 public:
  struct list {
    projects::file_collector::request request;
    std::vector<projects::file_chooser::batch> files;
    bool is_whole = false;                           ///< `files` are those of a walk that has ended
    std::unique_ptr<projects::file_collector> walk;  ///< while one is under way
    std::vector<projects::file_chooser::batch> fresh;  ///< of that walk, if `is_whole`
    std::string top;
    bool is_cut = false;
  };

  /// A walk begins, unless one is under way.
  std::shared_ptr<list> open(projects::file_collector::request const& request);

 private:
  std::list<std::shared_ptr<list>> lists_;  // the last one first
};

}  // namespace windows

/// The list in which a file is found by a few letters of its name. Files come in while letters are
/// typed; without letters those that were used lately come first. What is chosen for some letters
/// comes first for them the next time.
///
/// Made for one use. Main thread only.
class WynFileChooser final : public platform::picker_source {
 public:
  struct request {
    projects::file_collector::request files;
    /// Those of open documents, the one used last first; without `current`, the one in front, which
    /// comes after them and the recent ones.
    std::vector<std::string> open;
    std::string current;
    /// Opened lately, the last one first. They are looked for, and those that lie outside of the
    /// files' roots are left out unless `takes_all_recent`.
    std::vector<std::string> recent;
    bool takes_all_recent = false;
  };
  using opener =
      std::function<bool(std::string const& path, std::optional<text::line_place> const& place,
                         platform::picked_way way)>;

  /// `lists` must outlive it.
  WynFileChooser(request wanted, windows::file_lists& lists, opener open);

  /// Opens the file and learns what the letters stand for; false if it can't be opened.
  bool accept(platform::picked_row chosen);

  // platform::picker_source
  void set_filter(std::string const& text) override;
  void take_key(platform::key_event const&) override {}
  std::size_t count() const override { return chooser_.size(); }
  platform::picker_row row(std::size_t index) const override;
  std::string help(std::size_t index) const override;
  std::size_t first_row() const override;
  std::string note() const override;
  bool is_filling() const override;
  std::optional<std::size_t> take_new_rows(std::size_t chosen) override;

 private:
  void showFirst(std::vector<std::string> const& recent);
  std::string filterString() const;
  std::string folderBelowTop(std::string const& folder) const;

  request const request_;
  opener const open_;
  std::shared_ptr<windows::file_lists::list> const list_;
  projects::file_chooser chooser_;
  projects::typed_file_name typed_{u""};
  std::optional<std::vector<std::string>> foundRecent_;  // not yet shown
  projects::background background_;
};
