#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "grammar/rule.h"

/// The grammars in the bundles beside the program, and who wants them.
struct shipped_grammars {
  std::shared_ptr<grammar::catalogue const> all_rules;
  std::vector<std::vector<std::string>> file_types;  ///< by the catalogue's index

  /// By the longest file type that `path` ends in, be it its name or what stands behind a dot;
  /// `catalogue::none` if nobody wants it.
  unsigned index_for(std::string_view path) const;
};

/// Reads `FOLDER/*.qnbundle/Syntaxes/*`, and `file` before them all if it isn't empty. What can't
/// be read is told on standard error and left out.
shipped_grammars read_shipped_grammars(std::string const& folder, std::string const& file);
