#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/panels/project_find_panel.h"
#include "platform/run_loop.h"
#include "search/project_find.h"
#include "search/project_replace.h"
#include "search/project_results.h"
#include "search/results_text.h"
#include "windows/document_window.h"
#include "windows/project_search.h"

namespace windows {

/// Finding and replacing in all files of a project, a folder or in those that are open, with the
/// window in which that is done. What is found comes in while the search runs; open texts are
/// searched as they stand. Main thread only; there is one.
class find_in_project final : public platform::project_find_delegate {
 public:
  struct owner {
    /// The window in front; null if there is none.
    std::function<document_window*()> front;
    /// Shows a file; null if it can't be opened, as the user has seen.
    std::function<document_window*(std::string const& path)> open;
    /// Shows a text without a file.
    std::function<document_window&(text::text_block const& text)> open_text;
  };

  explicit find_in_project(owner of);
  ~find_in_project();

  void orderFront();
  /// True if what was found here is what Next Result walks through.
  bool isWalked() const;
  /// Shows the next or previous match in its text; false at the end.
  bool step(bool backward);
  /// Whether what is in front is a document of results; what has been edited there is written to
  /// the files that the lines are of.
  bool canWriteBack() const;
  bool writeBack();
  bool isBusy() const { return find_ != nullptr || work_ != nullptr; }
  search::project_results const& results() const { return results_; }

  // platform::project_find_delegate
  void projectFindAction(platform::project_find_action action) override;
  void projectFindDidChange() override;
  void projectFindDidClose() override;
  std::size_t projectFindFiles() const override { return results_.files().size(); }
  std::size_t projectFindMatches(std::size_t file) const override;
  platform::project_find_row projectFindRow(platform::project_find_place place) override;
  ticks projectFindTicks(platform::project_find_place place) const override;
  void projectFindTick(platform::project_find_place place, bool ticked) override;
  void projectFindShow(platform::project_find_place place) override;

 private:
  enum place : std::size_t { project, folder, open_files, selection, all_places };

  std::vector<std::string> titlesOfPlaces() const;
  std::vector<projects::walk_root> rootsOf(std::size_t where) const;
  std::string folderInFront() const;
  void fillPanel();
  void keepOptions();
  bool checkPattern();
  void find();
  void take(std::vector<search::file_result> found);
  void didFind(std::vector<path::file_error> const& folders);
  void replace();
  void undoReplace();
  void openAsDocument();
  void work();
  void didReplace();
  bool confirm(std::vector<search::found_file> const& files, std::string const& title) const;
  std::string countOfMatches() const;
  void show(std::string const& status);
  void showState();

  owner const owner_;
  search::project_results results_;
  std::unique_ptr<search::project_find> find_;
  project_text_search search_;
  std::optional<search::result_place> at_;
  std::size_t run_ = 0;                             // of the results that can be walked through
  platform::project_find_values found_;             // with which they were found
  std::optional<search::match_replacement> shown_;  // what rows show as to be put there
  bool canReplace_ = false, isStopped_ = false;
  bool showsMatches_ = false;  // and not what came of replacing them
  struct results_document {
    std::weak_ptr<WynDocument> document;
    std::shared_ptr<search::results_text const> text;
  };
  std::vector<results_document> documents_;
  std::size_t refused_ = 0;  // lines that could not be written back
  std::unique_ptr<search::project_replace> replacing_;
  std::unique_ptr<platform::timer> work_;
};

}  // namespace windows
