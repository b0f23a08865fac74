#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Which lines differ between two texts.
namespace documents {

using text_lines = std::vector<std::u16string_view>;

/// The lines of a text, without their ends; an empty text is one empty line.
text_lines lines_of(std::u16string_view text);
/// With their ends, so that only a last line may be without one; an empty text has none.
text_lines whole_lines_of(std::u16string_view text);

/// Lines [old_begin, old_end) of one text stand where the other has [new_begin, new_end); from 0.
struct changed_lines {
  std::size_t old_begin, old_end, new_begin, new_end;
  friend bool operator==(changed_lines const&, changed_lines const&) = default;
};

/// The fewest lines that differ, by the greedy algorithm of Myers (1986), O(lines x differences).
/// Its steps are bounded, to about half a second: texts that differ in more places give one change
/// from the first to the last line that differs.
std::vector<changed_lines> differing_lines(text_lines const& old_text, text_lines const& new_text);

/// The changes in the unified format, with three lines round each and names in its head. With
/// `of_whole_lines` it says where a last line has no end, as the tool `patch` wants it.
std::u16string unified_diff(text_lines const& old_text, text_lines const& new_text,
                            std::vector<changed_lines> const& changes,
                            std::u16string const& old_name, std::u16string const& new_name,
                            bool of_whole_lines = false);

}  // namespace documents
