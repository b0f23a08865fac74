#pragma once

#include <string>
#include <string_view>

namespace search {

/// Looks for a text in the bytes of a file, as it stands or without regard to the case of ASCII
/// letters, at about the speed of memory as long as two of its bytes are rare. It compares by the
/// byte where both stand, so texts are best kept below some hundred bytes. Any thread.
class byte_search {
 public:
  /// `sought` must not be empty.
  byte_search(std::string sought, bool ignore_case);

  std::size_t size() const { return sought_.size(); }
  /// The first place from `first` on where the text stands whole; `last` if there is none.
  char const* find(char const* first, char const* last) const;

 private:
  bool stands_at(char const* at) const;

  /// A place in the text, with the bytes that may stand there.
  struct probe {
    std::size_t offset = 0;
    char one = 0, other = 0;
  };
  probe probe_at(std::size_t offset) const;

  std::string sought_;  // in lower case when case is ignored
  bool ignore_case_;
  probe rare_, second_;
};

/// The longest run of ASCII that every match of a pattern in the syntax of Ruby must contain, as
/// far as its source says so simply; "" if it doesn't.
std::string required_text(std::u16string_view pattern);

}  // namespace search
