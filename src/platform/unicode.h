#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// What a character is. Below 128 the answers are those of the C library in the C locale; from
/// there on those of the Unicode database. A lone surrogate belongs to no class. Any thread.
namespace unicode {

bool is_lower(char32_t c);  // Ll
bool is_upper(char32_t c);  // Lu, Lt
bool is_alpha(char32_t c);  // letters and marks
bool is_alnum(char32_t c);  // letters, marks and numbers
bool is_digit(char32_t c);  // 0 to 9, Nd
bool is_space(char32_t c);  // below 128 isspace, line feed included; Zs

/// The unit's other case by the full mapping of strings; a unit whose mapping is not exactly one
/// unit long (U+00DF in upper case) stays as it is. The root locale holds: no Turkish dotless i.
char16_t to_lower(char16_t u);
char16_t to_upper(char16_t u);

/// Full case mapping of UTF-8 text, which may become longer. Invalid bytes become U+FFFD.
std::string uppercase(std::string_view utf8);
std::string lowercase(std::string_view utf8);

/// Two columns in a terminal or a fixed-pitch font: East Asian wide or full width, emoji.
bool is_wide(char32_t c);
/// No column of its own: marks that stack, joiners, other format characters (but those that are
/// printed, such as the Arabic number sign and the soft hyphen), conjoining vowels and finals.
bool is_zero_width(char32_t c);
/// A mark in the sense of the categories M*: stacks upon the character before it.
bool is_combining(char32_t c);

/// A letter of Arabic, Hebrew or another script that is written from right to left.
bool runs_right_to_left(char32_t c);

/// The code point that begins at `index` < text.size(); a lone surrogate is itself. Where clusters
/// of them begin is found by platform/clusters.h.
char32_t code_point_at(std::u16string_view text, std::size_t index);

}  // namespace unicode
