#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// How well the letters that a user types fit names, for BriskStringRanker.h and for lists of very
/// many names.
namespace projects {

/// Adds to `text` a name in the form in which letters are looked for in it: lower case, a blank
/// before each word, and nothing else but letters and digits. An empty name adds nothing.
/// `origins`, if given, gets for each unit that of the name from which it came. Any thread.
void append_searched(std::u16string_view name, std::u16string& text,
                     std::vector<std::uint32_t>* origins = nullptr);
/// The same for UTF-8.
void append_searched(std::string_view name, std::u16string& text);

/// A bit for each letter; several share one, so a letter may be missing whose bit is set.
std::uint64_t letter_bits(std::u16string_view letters);

/// Letters that are looked for in many names. One thread at a time: it keeps memory that it works
/// in from name to name.
class abbreviation {
 public:
  /// By BriskStringRanker::prepareFilterString.
  explicit abbreviation(std::u16string letters);

  std::u16string const& letters() const { return letters_; }
  std::uint64_t bits() const { return bits_; }

  /// From 0 up to about 1.5 for a name by append_searched, in which there are `blanks` blanks; or
  /// -1 when the letters don't stand in it in this order, and without letters. Takes time in
  /// proportion to the name and the letters.
  double score(std::u16string_view text, std::size_t blanks);
  /// Where in such a name the letters are that count, in their order; none without a match.
  std::vector<std::size_t> places(std::u16string_view text);

 private:
  struct answer {
    std::size_t from;
    double score;
  };
  struct scores {
    double word = -1, plain = 0;
  };

  bool prepare(std::u16string_view text);
  std::size_t word_start(std::size_t from, std::size_t i) const;
  scores ways(std::size_t from, std::size_t i, double boost);
  double score_from(std::size_t from, std::size_t i, double boost);

  std::u16string const letters_;
  std::uint64_t const bits_;
  double const unit_, share_;
  // Of the present name.
  std::u16string_view text_;
  std::vector<std::size_t> latest_;
  std::vector<std::vector<answer>> known_;
};

}  // namespace projects
