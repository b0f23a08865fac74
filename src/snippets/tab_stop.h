#pragma once

#include <cstddef>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "regex/onig_replace.h"

namespace snippet {

/// The index of "$0", where the caret ends up: sorted after all others.
constexpr int end_index = std::numeric_limits<int>::max();

/// What a mirror with a regular expression makes of its field's text. Shared by copies of the stop.
struct transform_t {
  std::string regexp, format, options;
  onig::option::type flags;
  std::string fault;  ///< of pattern or format, with which it gives an empty text; or empty
  onig::ptrn_t pattern;
  std::unique_ptr<regex::replacement const> replacement;

  transform_t(std::string regexp, std::string format, std::string options);
  /// With a pattern that takes too long the text as it is, and a reason in `why_not`.
  std::string applied_to(std::string_view text, std::string const& indent,
                         std::string& why_not) const;
};

/// A place of a snippet: in units from its start. The rank counts the places in the order in which
/// they come, so that two at one offset are still one inside the other.
struct position_t {
  std::size_t offset = 0;
  std::size_t rank = 0;
};

/// A field, which is filled in, or a mirror of one, which follows. Both may be nested in other
/// fields.
struct tab_stop_t {
  static constexpr std::size_t no_parent = std::numeric_limits<std::size_t>::max();

  int index = 0;
  position_t first, last;
  std::size_t parent = no_parent;  ///< the innermost stop that it stands in
  bool is_field = false;
  bool is_removed = false;  ///< typed over, together with what it stood in
  std::shared_ptr<transform_t const> transform = {};  ///< of a mirror with a regular expression

  bool is_regexp_mirror() const { return transform != nullptr; }
};

}  // namespace snippet
