#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace keys {

struct mnemonic_title {
  std::string title;   ///< UTF-8
  std::string wanted;  ///< the letter that it should have, in either case; may be empty
};

/// For each title of a menu or a row of buttons, the byte of the letter or digit that is underlined
/// and chooses it: npos where there is none left. No letter is given twice, and every title gets
/// one if there is any way to do that. Wanted ones come first, then letters that begin words.
std::vector<std::size_t> mnemonic_places(std::vector<mnemonic_title> const& titles);

}  // namespace keys
