#pragma once

#include <map>
#include <string>
#include <vector>

#include "search/project_results.h"

namespace search {

/// The lines in which something was found as a text, to be edited and written back:
///
///     ~/src/main.cc:12: int main() {
///
/// Lines may be changed and deleted; a line that is gone, or that can't be told any more, leaves
/// the file's as it was. Main thread only.
class results_text {
 public:
  explicit results_text(project_results const& results);

  std::u16string const& text() const { return text_; }
  /// What project_replace is to do, after the text has become `edited`: for each line that is
  /// another one now its whole, if it was known whole. Lines that can't be written are counted.
  std::vector<found_file> changes(text::unit_view edited, std::size_t& refused) const;

 private:
  struct line {
    std::size_t file = 0;
    file_match whole;  // the line itself
    bool is_cut = false;
  };

  std::vector<found_file> files_;         // without matches
  std::map<std::u16string, line> lines_;  // by what stands before their text
  std::u16string text_;
};

}  // namespace search
