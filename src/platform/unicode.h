#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// What a character is, by one UTF-16 unit, and where the characters of a text begin. Below 128 the
/// answers are those of the C library in the C locale; from there on those of the Unicode database.
/// A lone surrogate belongs to no class. Any thread.
namespace unicode {

bool is_lower(char16_t u);  // Ll
bool is_upper(char16_t u);  // Lu, Lt
bool is_alpha(char16_t u);  // letters and marks
bool is_alnum(char16_t u);  // letters, marks and numbers
bool is_digit(char16_t u);  // 0 to 9, Nd
bool is_space(char16_t u);  // below 128 isspace, line feed included; Zs

/// The unit's other case by the full mapping of strings; a unit whose mapping is not exactly one
/// unit long (U+00DF in upper case) stays as it is. The root locale holds: no Turkish dotless i.
char16_t to_lower(char16_t u);
char16_t to_upper(char16_t u);

/// Full case mapping of UTF-8 text, which may become longer. Invalid bytes become U+FFFD.
std::string uppercase(std::string_view utf8);
std::string lowercase(std::string_view utf8);

/// Two columns in a terminal or a fixed-pitch font: East Asian wide or full width, emoji.
bool is_wide(char32_t c);
/// No column of its own: marks, joiners, other format characters, conjoining vowels.
bool is_zero_width(char32_t c);
/// A mark in the sense of the categories M*: stacks upon the character before it.
bool is_combining(char32_t c);

/// The code point that begins at `index` < text.size(); a lone surrogate is itself.
char32_t code_point_at(std::u16string_view text, std::size_t index);

/// The index behind the grapheme cluster that `from` lies in or begins; text.size() at the end.
/// Looks no further than the cluster, apart from a bounded stretch before `from`.
std::size_t next_grapheme_break(std::u16string_view text, std::size_t from);
/// The start of the grapheme cluster that ends at or contains `from` - 1; 0 at the start.
std::size_t previous_grapheme_break(std::u16string_view text, std::size_t from);

}  // namespace unicode
