#pragma once

#include <string>
#include <vector>

/// The files opened last, newest first, kept as a property list in the state folder and shared by
/// all processes of the user. Main thread only. What can't be read or written is left out silently:
/// the list is a convenience.
class recent_files {
 public:
  /// `path` is that of the list itself; empty keeps the list in memory only.
  explicit recent_files(std::string path);

  /// Absolute paths. Those that no longer exist are left out.
  std::vector<std::string> paths() const;
  /// Puts `path` first.
  void add(std::string const& path);
  void clear();

 private:
  std::vector<std::string> load() const;
  void store(std::vector<std::string> const& paths);

  std::string list_path_;
  std::vector<std::string> in_memory_;
};
