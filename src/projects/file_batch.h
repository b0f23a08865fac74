#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace projects {

/// Paths of many files, and their names in the form in which letters are looked for in them: each
/// name and each folder is kept once. Any thread, once it is finished.
class file_batch {
 public:
  using index = std::uint32_t;  ///< of a file, a name or a folder

  /// An absolute path, which isn't there yet.
  void add(std::string_view path);
  /// Nothing is added from now on.
  void finish();

  index size() const { return static_cast<index>(files_.size()); }
  std::string path(index file) const;
  index name_of(index file) const { return files_[file].name; }
  index folder_of(index file) const { return files_[file].folder; }

  index names() const { return static_cast<index>(names_.size() - 1); }
  std::string_view name(index name) const { return names_.at(name); }
  /// By append_searched (abbreviation.h).
  std::u16string_view searched(index name) const;
  std::uint64_t letters(index name) const { return searched_[name].letters; }
  std::size_t blanks(index name) const { return searched_[name].blanks; }
  /// The files that are called so, in order.
  std::pair<index const*, index const*> files_called(std::string_view name) const;

  index folders() const { return static_cast<index>(folders_.size() - 1); }
  /// Without a slash at the end, so empty for the root.
  std::string_view folder(index folder) const { return folders_.at(folder); }

 private:
  struct file {
    index folder, name;
  };
  struct form {
    std::uint64_t letters;
    index begin;  // in units_
    std::uint32_t blanks;
  };
  /// Texts one after the other, which cost little more than their bytes.
  class texts {
   public:
    std::size_t size() const { return begins_.size(); }
    std::string_view at(std::size_t n) const {
      return std::string_view(bytes_).substr(begins_[n], begins_[n + 1] - begins_[n]);
    }
    void add(std::string_view text) {
      bytes_ += text;
      begins_.push_back(static_cast<index>(bytes_.size()));
    }
    void finish() {
      bytes_.shrink_to_fit();
      begins_.shrink_to_fit();
    }

   private:
    std::string bytes_;
    std::vector<index> begins_ = {0};
  };

  index name_index(std::string_view name);
  std::size_t slot_of(std::string_view name) const;
  void grow_table();

  std::vector<file> files_;
  texts names_, folders_;
  std::vector<form> searched_;  // one more than there are names
  std::u16string units_;
  std::vector<index> table_;  // by hash: a name and 1, or 0
  // The files of name n are by_name_[first_[n]] up to by_name_[first_[n + 1]].
  std::vector<index> by_name_, first_;
};

}  // namespace projects
