#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "path/file_version.h"
#include "regex/oniguruma_format.h"
#include "search/file_search.h"

namespace search {

/// A file in which something was found, or about which there is something to say.
struct found_file {
  std::string path;
  std::vector<file_match> matches;
  std::vector<bool> ticked;  ///< those that are to be replaced
  /// Of the text that was searched: the storage's, if the file is open in a document, or else the
  /// file's own. While it is the same the matches hold.
  std::optional<std::uint32_t> memento;
  std::optional<path::file_version> version;
  std::string note;  ///< such as why it could not be searched
};

/// One of the matches.
struct result_place {
  std::size_t file = 0, match = 0;
  friend bool operator==(result_place const&, result_place const&) = default;
};

/// A match as a list shows it.
struct result_line {
  std::string text;                 ///< the number of its line, a colon and the line
  std::size_t first = 0, last = 0;  ///< units of it that are the match
};

/// What was found in a project: its files in their order, each with its matches. Main thread only.
class project_results {
 public:
  void clear() { *this = project_results(); }
  /// Files in which nothing was found are only counted. All matches are ticked.
  void add(file_result result, std::optional<std::uint32_t> memento);
  void add_note(std::string path, std::string note);

  std::vector<found_file> const& files() const { return files_; }
  file_match const& match(result_place at) const { return files_[at.file].matches[at.match]; }
  std::size_t count() const { return count_; }
  std::size_t searched_files() const { return searched_; }
  std::size_t files_with_matches() const { return with_matches_; }
  std::size_t binary_files() const { return binary_; }

  void tick(result_place at, bool ticked) { files_[at.file].ticked[at.match] = ticked; }
  void tick_file(std::size_t file, bool ticked);
  std::size_t ticked() const;

  /// The match after or before one, through all files; from the first or the last one on without.
  std::optional<result_place> next(std::optional<result_place> from) const;
  std::optional<result_place> previous(std::optional<result_place> from) const;

  /// The name of a file and its folder, abbreviated.
  std::string title(std::size_t file) const;
  result_line line(result_place at) const;

 private:
  std::vector<found_file> files_;
  std::size_t count_ = 0, searched_ = 0, with_matches_ = 0, binary_ = 0;
};

/// What matches are replaced by: a text as it stands, or what a replacement text
/// (regex/replacement.h) makes of each. Main thread only.
class match_replacement {
 public:
  match_replacement(std::string const& text, bool is_format);

  /// Then it is no replacement text.
  bool has_failed() const { return is_format_ && format_.has_failed(); }
  /// Offsets of the match are those in `text`.
  std::u16string expand(text::unit_view text, file_match const& match);
  /// By what is kept of the match's line alone; nothing where that isn't enough.
  std::optional<std::u16string> preview(file_match const& match);

 private:
  bool is_format_;
  oniguruma::format format_;
  std::u16string literal_;
};

/// The text in which these matches, which come in order, have been replaced.
std::u16string with_replacements(text::unit_view text, std::vector<file_match> const& matches,
                                 match_replacement& replacement);

}  // namespace search
