#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "regex/oniguruma.h"

namespace projects {

/// A pattern that says which files or folders are part of a project. It is searched for in the
/// whole path; a "!" before it says that what it matches is left out. An empty pattern takes
/// everything, and so does one that does not compile, which is reported once.
///
/// Any thread, one at a time.
class path_filter {
 public:
  explicit path_filter(std::string pattern);

  std::string const& pattern() const { return pattern_; }
  /// `path` is absolute. A pattern that takes too long on a path doesn't match it.
  bool passes(std::string_view path) const;

 private:
  /// The patterns that are the defaults need no engine.
  using known_form = bool (*)(std::string_view name);
  static known_form known_form_of(std::string_view pattern);

  std::string pattern_;
  bool leaves_out_ = false;
  known_form known_ = nullptr;
  std::optional<oniguruma::ptrn_t> compiled_;
};

/// The patterns of a folder's files and of the folders in it.
struct filter_patterns {
  std::string files, folders;
  friend bool operator==(filter_patterns const&, filter_patterns const&) = default;

  /// Those by the settings, for folders without patterns of their own. Main thread only.
  static filter_patterns standard();
};

/// Both of them, compiled.
struct path_filters {
  explicit path_filters(filter_patterns const& patterns)
      : files(patterns.files), folders(patterns.folders) {}

  path_filter files, folders;
};

}  // namespace projects
