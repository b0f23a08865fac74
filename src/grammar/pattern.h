#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "grammar/fixed_forms.h"

struct re_pattern_buffer;

namespace grammar {

/// Where the groups of a match stand, in code units; the first is the whole match.
struct match_groups {
  struct range {
    std::int32_t begin = -1, end = -1;
  };
  std::vector<range> groups;

  std::uint32_t begin() const { return static_cast<std::uint32_t>(groups[0].begin); }
  std::uint32_t end() const { return static_cast<std::uint32_t>(groups[0].end); }
  bool empty() const { return begin() == end(); }
  bool is_set(int group) const {
    return group >= 0 && static_cast<std::size_t>(group) < groups.size() &&
           groups[static_cast<std::size_t>(group)].begin >= 0;
  }
};

/// A line as patterns search it. A line of ASCII is narrowed to bytes, in which searching takes
/// about half the time.
class line_text {
 public:
  /// A line with its line end, or the last one of a text, which has none. Lone surrogates, which
  /// the library must not see, become U+FFFD.
  void set(std::u16string_view units, bool is_last);
  /// Has the line, up to the next `set`, end at `size`, at most its own: no pattern sees more of
  /// it, and it is as if the text ended there.
  void cut(std::size_t size) { size_ = size; }
  std::u16string_view units() const { return {units_.data(), size_}; }
  bool is_narrow() const { return narrow_.size() == units_.size(); }
  std::string const& narrow() const { return narrow_; }
  bool is_last() const { return is_last_ || size_ < units_.size(); }

 private:
  std::u16string units_;
  std::string narrow_;
  std::size_t size_ = 0;
  bool is_last_ = false;
};

/// A compiled pattern of a grammar, in the syntax of Oniguruma for Ruby, plain groups capturing
/// even beside named ones. Unchanging; any thread may search with it.
class pattern {
 public:
  enum class result { none, found, gave_up };

  /// Null with the reason when it is no valid pattern.
  static std::unique_ptr<pattern const> compile(std::u16string source, std::string& reason);
  ~pattern();

  /// The first match that begins at `from` or after. Gives up after a second or so, or soon after
  /// `stop`, if given, becomes true.
  result search(line_text const& text, std::uint32_t from, match_groups& found,
                std::atomic<bool> const* stop = nullptr) const;
  /// The match that begins at `at`. Unless `with_groups`, only the whole match is set.
  result match(line_text const& text, std::uint32_t at, bool with_groups,
               match_groups& found) const;
  /// Whether a match depends on where the search for it begins, as with \G, or can begin elsewhere
  /// than it was tried, as with \K.
  bool depends_on_start() const { return depends_on_start_; }
  std::u16string const& source() const { return source_; }

 private:
  pattern() = default;
  re_pattern_buffer* wide() const;
  int search_observed(line_text const& text, std::uint32_t from,
                      std::atomic<bool> const* stop) const;

  re_pattern_buffer* narrow_ = nullptr;  ///< for lines of ASCII; null if there it doesn't compile
  mutable std::once_flag wide_compiled_, observed_compiled_;
  mutable re_pattern_buffer* wide_ = nullptr;      ///< for UTF-16
  mutable re_pattern_buffer* observed_ = nullptr;  ///< for UTF-16, to be watched by a clock
  std::u16string source_;
  fixed_forms forms_;
  bool depends_on_start_ = false;
};

}  // namespace grammar
