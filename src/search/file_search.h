#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "encoding/charset.h"
#include "path/file_version.h"
#include "projects/text_files.h"
#include "regex/oniguruma.h"
#include "search/byte_search.h"
#include "search/scope_filter.h"
#include "search/text_query.h"
#include "text/pos.h"

namespace search {

/// One match in a file. Places are those of a document of the file: lines from 0, columns in units.
struct file_match {
  text::pos first, last;
  std::uint32_t offset = 0;  ///< of the first unit, in the whole text
  std::uint32_t length = 0;
  std::string line;             ///< the first line of it, or the part around it, as UTF-8
  std::uint32_t line_from = 0;  ///< the column at which `line` begins
  oniguruma::captures_t captures;
  bool is_cut = false;  ///< the line has more than `line`
  /// What takes the place of this match, whatever others get; null for the same as they.
  std::shared_ptr<std::u16string const> put = {};
};

struct file_result {
  enum class outcome { searched, binary, unreadable, gave_up, cancelled };

  std::string path;
  outcome what = outcome::searched;
  std::string reason;  ///< why it is unreadable
  std::vector<file_match> matches;
  std::size_t count = 0;  ///< of matches, also when they aren't kept
  /// Of the file that was read, as of before the reading; nothing of a text in memory.
  std::optional<path::file_version> version;
};

/// What is looked for in files, and which of them count as text.
struct file_query {
  std::u16string sought;
  bool regular_expression = false, ignore_case = false;
  projects::text_file_rules rules;
  bool supplementary_pairs = true;  ///< as documents are read
  bool only_count = false;          ///< matches are counted and not kept
  bool whole_words = false;
  /// How much of a line is kept with a match at either side of it, about, in bytes; 0 for all.
  std::size_t excerpt = 0;
  /// Null if matches count whatever their scopes are.
  std::shared_ptr<scope_filter const> scopes = {};
};

/// Searches files as if they were opened as documents, without opening them. Most files are done by
/// their bytes: where a match needs a text that isn't there, and where UTF-8 and UTF-16 give the
/// same matches. Of a pattern that stays in its line only the lines with that text are decoded. An
/// empty match doesn't count. A file that takes too long is given up.
///
/// One for each thread. Throws std::invalid_argument for a bad pattern, and std::bad_alloc.
class file_searcher {
 public:
  /// `cancelled` must outlive it.
  file_searcher(file_query query, std::atomic<bool> const& cancelled);

  /// The file at `path`.
  file_result search(std::string const& path);
  /// The text of a file that is open and has been changed.
  file_result search(std::string const& path, text::unit_view text);

 private:
  using outcome = file_result::outcome;

  bool read(std::string const& path, file_result& result);
  void search_bytes(file_result& result);
  void search_utf8(std::string_view bytes, bool is_ascii, file_result& result);
  void search_line(std::string_view line, text::pos place, std::uint32_t offset,
                   file_result& result);
  void search_units(text::unit_view units, file_result& result);
  void search_part(text::unit_view units, std::size_t first, std::size_t last, text::pos place,
                   std::int64_t shift, file_result& result);
  std::u16string_view decode(encoding::charset_t charset,
                             std::unique_ptr<char16_t[]>& memory) const;
  void keep_those_in_scope(text::unit_view units, file_result& result) const;
  bool is_over(search_end end, file_result& result) const;

  file_query const query_;
  text_query const compiled_;
  std::atomic<bool> const& cancelled_;
  std::optional<byte_search> needed_;  // what every match holds; ASCII, or the whole text sought
  bool needed_is_ascii_ = false;
  bool is_whole_ = false;       // and it is the whole match
  bool stays_in_line_ = false;  // and a match can be told from its line
  bool keeps_matches_ = true;

  // Of the present file.
  std::chrono::steady_clock::time_point deadline_;
  std::unique_ptr<char[]> bytes_;
  std::size_t size_ = 0, capacity_ = 0;
};

}  // namespace search
