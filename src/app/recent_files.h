#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

namespace app {

/// The files opened last, newest first, kept as a property list in the state folder and shared by
/// all processes of the user. Main thread only. What can't be read or written is reported once on
/// standard error, and tried again with the next change and at the end. A damaged one is kept
/// beside the next one as PATH.damaged-N.
class recent_files {
 public:
  /// `path` is that of the list itself; empty keeps the list in memory only.
  explicit recent_files(std::string path);
  ~recent_files();
  recent_files(recent_files const&) = delete;
  recent_files& operator=(recent_files const&) = delete;

  /// Absolute paths. Whether they still exist isn't looked at: a menu asks for them, and one file
  /// on a server that is gone would stop it.
  std::vector<std::string> paths() const { return load(); }
  /// Puts `path` first.
  void add(std::string const& path);
  void remove(std::string const& path);
  void clear();

 private:
  using list_edit = std::function<void(std::vector<std::string>&)>;
  std::vector<std::string> load() const;
  void change(list_edit edit);
  void store();
  enum class state { readable, damaged, unreadable };
  state read(std::vector<std::string>& list) const;
  bool set_aside();
  bool write(std::vector<std::string> const& paths);
  void report(char const* what, int error) const;
  void report(std::string const& what) const;

  std::string list_path_;
  std::vector<std::string> in_memory_;
  std::vector<list_edit> waiting_;  ///< what isn't in the file yet
  mutable std::set<std::string> reported_;
};

}  // namespace app
