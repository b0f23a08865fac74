#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace commands {

/// A line of a file that a line of output names.
struct output_place {
  std::string file = {};
  std::size_t line = 0;    ///< from 1
  std::size_t column = 0;  ///< from 1; 0 if none is named
  std::size_t first = 0;   ///< bytes [first, last) of the line of output name it
  std::size_t last = 0;
  friend bool operator==(output_place const&, output_place const&) = default;
};

/// The place that a line of a tool's output names, in one of the forms that tools print:
///
///     main.c:12:5: error: ...              compilers, linters, grep -n
///     In file included from a.h:3,
///     make: *** [Makefile:4: all] Error 1
///     main.ts(12,5): error TS2322: ...
///       --> src/main.rs:12:5
///       File "tool.py", line 12, in f
///         at f (/home/me/app.js:12:5)
///     tool.sh: line 12: foo: command not found
///     ... at tool.pl line 12.              also: in tool.php on line 12
///
/// Names may hold blanks. What could be one is offered to `is_file`, the longest first, and the
/// first that it takes is it. `file` is the name as it stands there.
std::optional<output_place> place_in_line(
    std::string_view line, std::function<bool(std::string const& name)> const& is_file);

/// Finds the places in the output of one command. Names are looked up on disk, each once: relative
/// ones in the folder that the command runs in, or in which make says that it is.
class place_finder {
 public:
  explicit place_finder(std::string directory);

  /// `line` is the next one, without its line feed. The place has an absolute path, of a file that
  /// exists.
  std::optional<output_place> place_in(std::string_view line);

 private:
  std::string const& path_of(std::string const& name);
  void follow_make(std::string_view line);

  std::string directory_;
  std::vector<std::string> of_make_;          // the folders it has entered, the present one last
  std::map<std::string, std::string> known_;  // absolute names to their files' paths; "" for none
};

}  // namespace commands
