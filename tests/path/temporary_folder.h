#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string>

/// A folder of its own for a test, removed with all that is in it.
class temporary_folder {
 public:
  temporary_folder() {
    std::string name = (std::filesystem::temp_directory_path() / "quirnote-test-XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error("no folder for temporary files");
    path_ = std::filesystem::canonical(name).string();
  }
  temporary_folder(temporary_folder const&) = delete;
  temporary_folder& operator=(temporary_folder const&) = delete;
  ~temporary_folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  std::string const& path() const { return path_; }
  std::string operator/(std::string const& name) const { return path_ + "/" + name; }

  std::string write(std::string const& name, std::string const& bytes) const {
    std::ofstream(*this / name, std::ios::binary) << bytes;
    return *this / name;
  }
  static std::string read(std::string const& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  std::set<std::string> names() const {
    std::set<std::string> result;
    for (auto const& entry : std::filesystem::directory_iterator(path_))
      result.insert(entry.path().filename().string());
    return result;
  }

 private:
  std::string path_;
};
