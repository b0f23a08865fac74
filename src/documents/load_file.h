#pragma once

#include <string>
#include <vector>

namespace documents {

/// Appends the text of the file at `path` to `out`, for insertion in a buffer; with a header that
/// names the file, its charset and line ends if `with_header`. Line ends are normalised in the
/// bytes, before the charset is looked at. False, with `out` unchanged, if it can't be read;
/// only regular files can.
bool load_file(std::string const& path, std::vector<char16_t>& out, bool with_header);

}  // namespace documents
