#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace projects {

/// The patterns of a folder's .gitignore. The last one that matches a path decides; one with "!"
/// takes the path in again. Time in proportion to the lengths of pattern and path, multiplied.
/// Any thread.
class ignore_rules {
 public:
  enum class verdict { none, ignored, taken_in };

  ignore_rules() = default;
  /// `text` is what the file holds.
  explicit ignore_rules(std::string_view text);

  bool empty() const { return rules_.empty(); }
  std::size_t size() const { return size_; }  ///< in bytes of patterns
  /// `path` is relative to the folder that holds the file.
  verdict of(std::string_view path, bool is_folder) const;

 private:
  struct rule {
    std::vector<std::string> components;
    bool negated = false, folders_only = false;
  };
  void add(std::string_view line);

  std::vector<rule> rules_;
  std::size_t size_ = 0;
};

/// The patterns that hold in a folder: its own and those of the folders above, down from the one
/// that holds the repository.
class ignore_stack {
 public:
  /// Those that hold at `folder`, absolute; its own are yet to be entered.
  explicit ignore_stack(std::string const& folder);

  /// Before anything is entered.
  bool is_in_repository() const { return !levels_.empty(); }
  std::size_t size() const;  ///< in bytes of patterns

  void enter(std::string const& folder);
  void leave() { levels_.pop_back(); }
  bool is_ignored(std::string const& path, bool is_folder) const;

 private:
  struct level {
    std::size_t prefix = 0;  // bytes of a path that come before what the rules see
    ignore_rules rules;
  };
  std::vector<level> levels_;
};

}  // namespace projects
