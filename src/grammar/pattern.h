#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

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

/// A compiled pattern of a grammar, in the syntax of Oniguruma for Ruby, plain groups capturing
/// even beside named ones. Unchanging; any thread may search with it.
class pattern {
 public:
  enum class result { none, found, gave_up };

  /// Null with the reason when it is no valid pattern.
  static std::unique_ptr<pattern const> compile(std::u16string source, std::string& reason);
  ~pattern();

  /// The first match that begins at `from` or behind. `text` is a line, of valid UTF-16; the last
  /// line of a text has no line end, and `is_last` says so. Gives up after a second.
  result search(std::u16string_view text, std::uint32_t from, bool is_last,
                match_groups& found) const;
  std::u16string const& source() const { return source_; }

 private:
  pattern() = default;

  re_pattern_buffer* regex_ = nullptr;
  std::u16string source_;
};

/// Replaces lone surrogates, which the library must not see, by U+FFFD.
void make_valid(std::u16string& text);

}  // namespace grammar
