#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Looks for a sequence of units, as it stands or by `traits::equal_nocase`. Runs at memory speed
/// as long as what is sought is rare, and in linear time whatever text and pattern are. Any thread.
namespace regex {

class literal_search {
 public:
  /// `sought` must not be empty.
  literal_search(std::u16string_view sought, bool ignore_case);

  std::size_t size() const { return sought_.size(); }
  /// The first or the last place where the sequence stands whole from `first` up to `last`; `last`
  /// if there is none.
  char16_t const* find(char16_t const* first, char16_t const* last) const;
  char16_t const* find_last(char16_t const* first, char16_t const* last) const;

 private:
  /// A place in the sequence, with the units that may stand there. The scan looks at two of them.
  struct probe {
    std::size_t offset = 0;
    std::vector<char16_t> units;
  };

  probe make_probe(std::size_t offset) const;
  char16_t fold(char16_t u) const;
  bool stands_at(char16_t const* at, std::size_t& compared) const;
  char16_t const* next_candidate(char16_t const* at, char16_t const* stop) const;
  /// The first place, or the last one with `to_the_end`.
  char16_t const* find_steadily(char16_t const* first, char16_t const* last, bool to_the_end) const;

  std::u16string sought_;  // folded when case is ignored
  bool ignore_case_;
  probe rare_, second_;
  std::vector<std::size_t> borders_;  // of each prefix, for find_steadily
};

}  // namespace regex
