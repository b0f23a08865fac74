#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace bundles {

/// Something that is wrong with a bundle.
struct bundle_fault {
  std::string file;
  std::size_t line = 0;  ///< from 1; 0 when it is about the file as a whole
  std::string key;       ///< "patterns.3.begin"; empty for the file as a whole
  std::string reason;
};

/// All that is wrong with the files of a bundle: broken property lists, keys that are missing,
/// unknown or of a wrong type, patterns that don't compile or take too long, scope selectors,
/// colours, keys and transformations that can't be parsed, includes and menu entries of what isn't
/// there. A grammar of another bundle may be included by a name in `other_languages`. In the order
/// of directories, files and keys. Instead of a bundle's directory it may be the file of a theme.
std::vector<bundle_fault> check_bundle(std::string const& directory,
                                       std::vector<std::string> const& other_languages);

/// "FILE:LINE: KEY: REASON"
std::string description(bundle_fault const& fault);

}  // namespace bundles
