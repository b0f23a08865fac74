#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace conventions {

/// Properties by their names, in lower case. Values of those that are known are in lower case too.
using properties = std::map<std::string, std::string>;

/// An `.editorconfig`: sections that name files, with properties for them.
///
///     auto const file = conventions::parse_editorconfig("root = true\n[*.py]\nindent_size = 4\n");
///     file.properties_for("tools/run.py")["indent_size"];  // "4"
struct editorconfig_file {
  struct section {
    std::string glob;
    std::vector<std::pair<std::string, std::string>> lines;
  };
  bool is_root = false;  ///< nothing in the folders above holds
  std::vector<section> sections;

  /// Of a file, which is named from the folder of this one on. Later sections win.
  properties properties_for(std::string_view path) const;
};

/// Lines that say nothing that is known are passed over, and so are names and values beyond the
/// lengths that any reader has to take.
editorconfig_file parse_editorconfig(std::string_view text);

/// What the files called `.editorconfig` in the folder of an absolute path and in those above say
/// about the file there, up to one that is the root; nearer ones win. "unset" is left out, and what
/// follows from other properties is there: a width from the other one. Files that can't be read,
/// that are none or of more than `largest_editorconfig` bytes say nothing.
properties editorconfig_properties(std::string const& path);

inline constexpr std::size_t largest_editorconfig = 128 << 10;  // bytes

}  // namespace conventions
