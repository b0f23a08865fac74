#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "path/file_system_calls.h"
#include "search/project_results.h"

class WynDocument;

namespace search {

/// Replaces the ticked matches of a search, a file at each step, and takes it back again. Open
/// documents get one step that can be undone, and stay unsaved; other files are written, as
/// documents are, and each is as it was or whole. Matches of a file that has been changed since the
/// search stay.
///
///     project_replace replacing(results.files(), {"$1", true});
///     while (replacing.step()) continue;
///     show(replacing.report());
///
/// Main thread only.
class project_replace {
 public:
  project_replace(std::vector<found_file> files, match_replacement replacement,
                  path::file_system_calls& calls = path::file_system_calls::system());

  /// False when there is nothing more to do. The next step may be the last, at any file.
  bool step();
  bool is_undone() const { return is_undoing_; }
  /// From now on steps put back what was replaced, where it hasn't been changed since; again, what
  /// the steps before have not come to.
  void begin_undo();
  bool can_undo() const { return (is_undoing_ ? next_ : 0) < changed_.size(); }

  struct outcome {
    std::string path = {};
    std::size_t count = 0;   ///< of matches, if there is no fault
    std::string fault = {};  ///< why the file is as it was, or is damaged
    bool is_open = false;    ///< in a document, which isn't saved
  };
  /// Of each file with anything to replace, in their order.
  std::vector<outcome> const& report() const { return report_; }
  std::size_t replaced() const;
  std::size_t faults() const;

 private:
  struct changed_file {
    std::string path;
    std::weak_ptr<WynDocument> document;  // or else the file's own
    std::uint32_t memento = 0;            // after the replacement
    std::size_t count = 0;
    path::file_version written;
    long kept_at = 0;
    std::size_t kept_size = 0;
  };
  struct close_file {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  outcome replace(found_file const& file);
  outcome replace_in(WynDocument& document, found_file const& file,
                     std::vector<file_match> const& matches);
  outcome rewrite(found_file const& file, std::vector<file_match> const& matches);
  outcome put_back(changed_file const& file);
  bool keep(std::string const& bytes, changed_file& file);
  std::optional<std::string> kept(changed_file const& file) const;

  std::vector<found_file> files_;
  match_replacement replacement_;
  path::file_system_calls& calls_;
  std::size_t next_ = 0;
  bool is_undoing_ = false;
  std::vector<changed_file> changed_;
  std::vector<outcome> report_;
  std::unique_ptr<std::FILE, close_file> kept_;  // the bytes that stood in files
};

}  // namespace search
