#pragma once

#include "typing/code_lines.h"

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <vector>

namespace typing {

/// Which indentation lines keep when they are indented again, from above to below, where brackets
/// or words end blocks. There are more ways to indent than patterns say: a line keeps what the
/// lines before it allow, by brackets, statements without braces and the labels and blocks above,
/// and goes with the lines that it continues. Widths are in columns.
class kept_indents {
 public:
  explicit kept_indents(code_lines& lines) : lines_(lines) {}

  /// The columns that the line should be indented by; those in `wanted` are what the patterns say.
  std::size_t of_line(line_indent wanted);
  /// The indentation after a line that ends statements without braces, the outermost one's.
  std::optional<std::size_t> after_single_line(std::size_t number);
  /// The line has been indented by this much more or less.
  void line_was_moved(std::size_t number, std::ptrdiff_t by);

 private:
  bool allows(line_indent proposed);
  bool allows_closing(line_indent proposed);
  bool allows_label(line_indent proposed);
  bool allows_first_of_block(line_indent proposed);
  bool allows_after_label(line_indent proposed);
  bool is_in_expression(std::size_t number, std::size_t inner);
  bool is_part_of_expression(std::size_t number);
  bool allows_inside(std::size_t width, std::size_t outside);

  std::optional<std::size_t> matching_line(std::size_t number);
  bool opens_block(std::size_t number);
  bool is_shallower_below(line_indent proposed);
  std::vector<std::size_t> heads_of(std::size_t number);
  std::size_t width_of_first(std::size_t number) {
    return lines_.width_of(lines_.first_line_of(number));
  }
  void learn_steps(std::size_t number);
  void learn_steps(std::size_t first, std::size_t last);

  code_lines& lines_;
  std::map<std::size_t, std::ptrdiff_t> moved_;
  std::set<std::size_t> steps_;  ///< by which the lines of blocks above are indented
  std::optional<std::size_t> learned_;
  bool looked_below_ = false;
  std::size_t above_ = 0, first_ = 0;  ///< the counting line above, and the first of its statement
};

}  // namespace typing
