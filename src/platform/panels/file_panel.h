#pragma once

#include <optional>
#include <string>
#include <vector>

namespace platform {

struct open_request {
  std::string title;
  std::string directory;  // where to start; empty for the desktop's choice
  bool allows_folders = true;
  bool allows_multiple = true;
  bool only_folders = false;
};

struct save_request {
  std::string title;
  std::string directory;
  std::string name;  // proposed file name
  /// Choices shown beside the name, with the index chosen at first.
  std::vector<std::string> encodings;
  std::size_t encoding = 0;
  std::vector<std::string> line_endings;
  std::size_t line_ending = 0;
};

struct save_answer {
  std::string path;  // absolute; the user has agreed to replace what is there
  std::size_t encoding = 0;
  std::size_t line_ending = 0;
};

/// Modal and synchronous (waiting.h). Paths are bytes as the file system has them.
class file_panels {
 public:
  virtual ~file_panels() = default;
  /// The absolute paths chosen; none when cancelled.
  std::vector<std::string> run_open(open_request const& request);
  std::optional<save_answer> run_save(save_request const& request);

 protected:
  virtual std::vector<std::string> ask_open(open_request const& request) = 0;
  virtual std::optional<save_answer> ask_save(save_request const& request) = 0;
};

}  // namespace platform
