#pragma once

#include <string>

#include "regex/regexp.h"

namespace path {

/// A pattern for the last components of a path:
///
///     *      any part of a component that doesn't begin with ".", or nothing
///     **     the same, going on over several components
///     ?      any character
///     [a-z]  one of these characters, or of the others after "^"
///     {a,b}  either, see path/expand_braces.h
///     \      makes the next character a plain one
///     !      as the first character: whatever the rest does not match
///
///     path::glob_t const sources("*.{c,h}");
///     sources.does_match("/home/me/a.c");   // true
///     sources.does_match("/home/me/.a.c");  // false
///
/// Alternatives of more than 64 KiB in all are not expanded: their braces are plain. Copies are
/// cheap. Made on any thread, and used on one at a time.
class glob_t {
 public:
  explicit glob_t(std::string const& glob) { setup(glob); }

  /// A glob that is no pattern, such as "[z-a]", which is reported on standard error, or one of
  /// more than 64 KiB finds nothing, and so does one that has taken too long on a path once.
  bool does_match(std::string const& path) const;

 private:
  void setup(std::string glob);

  bool negated_ = false;
  bool of_names_ = false;
  mutable regexp::pattern_t pattern_;
};

}  // namespace path
