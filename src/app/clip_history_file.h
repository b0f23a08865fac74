#pragma once

#include <cstdint>
#include <string>

namespace app {

/// The clipboard history on the disk, for those who set `WynClipboardHistoryKept`: without it the
/// history ends with the program, and a file of an earlier time is removed. No other user may read
/// the file. With several processes the one that saves last wins: they hear of each other's clips
/// when the user turns to them. Main thread only; faults are reported once on standard error.
class clip_history_file {
 public:
  /// With an empty path nothing is read or written.
  explicit clip_history_file(std::string path) : path_(std::move(path)) {}

  /// Adds what was saved to the history, as its oldest clips.
  void load();
  /// Saves the history if it has changed since the last time: of its newest clips 16 MB.
  void save();

 private:
  void write();

  std::string const path_;
  std::uint64_t saved_version_ = 0;
};

}  // namespace app
