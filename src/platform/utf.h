#pragma once

#include <string>
#include <string_view>

/// Conversion between UTF-16, the form of text in buffers, and UTF-8, the form of everything else.
/// Both directions accept any input; any thread.
namespace unicode {

/// A lone surrogate becomes the three bytes its number would have, so that no unit is lost:
/// to_utf16(to_utf8(t)) == t for all t. Such bytes are not valid UTF-8 for other programs.
std::string to_utf8(std::u16string_view text);

/// Three-byte surrogates come back as the lone unit they were. Any other invalid UTF-8 becomes
/// U+FFFD, one for each maximal part of a sequence that was cut short, else one a byte.
std::u16string to_utf16(std::string_view text);

}  // namespace unicode
