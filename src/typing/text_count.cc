#include "typing/text_count.h"

#include "platform/clusters.h"
#include "typing/nearest_words.h"

#include <algorithm>

namespace typing {
namespace {

std::string counted(std::size_t number, char const* what) {
  return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

}  // namespace

text_count count_text(text::unit_view text) {
  text_count count;
  for (std::size_t begin = 0; begin < text.size(); ++count.lines) {
    std::size_t const end = std::min(text.find(u'\n', begin), text.size());
    text::unit_view const line = text.substr(begin, end - begin);
    for (std::size_t at = 0, word_end = 0; at < line.size(); ++count.characters) {
      if (at >= word_end && (word_end = end_of_word(line, at)) > at) ++count.words;
      at = unicode::cluster_at(line, at).end;
    }
    begin = end + 1;
  }
  return count;
}

std::string described(text_count const& count) {
  return counted(count.lines, "line") + ", " + counted(count.characters, "character") + ", " +
         counted(count.words, "word");
}

}  // namespace typing
