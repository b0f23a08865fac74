#pragma once

#include <cstddef>
#include <string_view>

/// Extended grapheme clusters of UTF-16 text: what a reader takes for one character, such as a
/// letter with its marks, a syllable of Hangul, two letters of a flag or joined emoji. The rules
/// are those of UAX 29 (with conjuncts of Indic scripts), on the properties of the Unicode
/// database; a lone surrogate goes as a letter. Where a cluster breaks depends on what stands
/// before, but from a known break onward it does not. Any thread.
namespace unicode {

/// All units below this one are a cluster and a cell each next to others of their kind, but for
/// CR LF. Scans for other text compare with it.
constexpr char16_t first_special_unit = 0x300;

struct cluster {
  std::size_t end;   ///< the index after its last unit
  unsigned columns;  ///< 0, 1 or 2: the cells that a terminal gives it
};

/// The cluster that begins at `from` < text.size(), where one must begin. Columns add up to at most
/// 2: wide and full-width characters have two, marks, joiners, format characters and the vowels
/// and finals of conjoining Hangul none, and all others one; a variation selector makes an emoji
/// two or one.
cluster cluster_at(std::u16string_view text, std::size_t from);

/// Whether `at` is between the two units of one code point.
bool splits_pair(std::u16string_view text, std::size_t at);

/// Whether a cluster begins at `at` <= text.size(); so one does at both ends. Takes time in
/// proportion to the cluster, and to the run of flags where it is in one.
bool is_grapheme_break(std::u16string_view text, std::size_t at);
/// Whether a cluster begins between these two units of `text`, whatever else it holds. False where
/// that depends, and at both ends.
bool surely_breaks(std::u16string_view text, std::size_t at);

/// The nearest break at or before `at` that doesn't depend on what stands before it; 0 is one. From
/// there a walk forward finds all others without looking at anything twice.
std::size_t sure_break_before(std::u16string_view text, std::size_t at);

/// The index after the grapheme cluster that `from` lies in or begins; text.size() at the end.
std::size_t next_grapheme_break(std::u16string_view text, std::size_t from);
/// The start of the grapheme cluster that ends at or contains `from` - 1; 0 at the start.
std::size_t previous_grapheme_break(std::u16string_view text, std::size_t from);

}  // namespace unicode
