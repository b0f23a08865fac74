#include "typing/nearest_words.h"

#include "actions/word_units.h"
#include "text/cluster.h"
#include "text/storage.h"
#include "text/unit_search.h"

#include <algorithm>

namespace typing {
namespace {

constexpr std::size_t chunk_units = 1 << 14;
constexpr std::size_t units_of_line_change = 8;  // what going to another line costs

bool begins_word(text::unit_view line, std::size_t at) {
  if (at == 0) return true;
  if (text::is_plain(line[at - 1]) && text::is_plain(line[at]))
    return !actions::is_word_char(line[at - 1]);
  return text::is_cluster_start(line, at) &&
         !actions::is_word_char(unicode::code_point_at(line, text::previous_cluster(line, at)));
}

}  // namespace

std::size_t end_of_word(text::unit_view line, std::size_t from) {
  std::size_t at = from;
  while (at < line.size()) {
    bool const is_plain =
        text::is_plain(line[at]) && (at + 1 == line.size() || text::is_plain(line[at + 1]));
    if (!actions::is_word_char(is_plain ? line[at] : unicode::code_point_at(line, at))) return at;
    at = is_plain ? at + 1 : unicode::cluster_at(line, at).end;
  }
  return at;
}

nearest_words::nearest_words(text::storage const& storage, text::pos const& first, std::size_t last,
                             std::vector<std::u16string> beginnings)
    : storage_(storage),
      line_(first.line),
      units_after_(storage.size(first.line) - last),
      beginnings_(std::move(beginnings)),
      rest_(first.column) {}

bool nearest_words::exists() const {
  return (!before_ || distance_ <= line_) && line() < storage_.lines();
}

void nearest_words::enter_next() {
  if (before_ && distance_ == 0) {
    before_ = false;
    rest_ = units_after_;
    return;
  }
  if (!before_) ++distance_;
  before_ = !before_;
  if (!exists()) {
    if (!before_) ++distance_;
    before_ = !before_;
  }
  complete_ = !exists();
  if (!complete_) rest_ = storage_.size(line());
}

void nearest_words::look_further(std::size_t units) {
  while (!complete_ && units > 0) {
    if (!exists()) {
      complete_ = true;
      return;
    }
    std::size_t const cost = rest_ == 0 ? units_of_line_change : look_at_chunk();
    if (rest_ == 0) enter_next();
    units -= std::min(units, cost);
  }
}

std::size_t nearest_words::look_at_chunk() {
  text::unit_view const line = storage_.line_units(this->line());
  rest_ = std::min(rest_, line.size());
  std::size_t const count = std::min(rest_, chunk_units);
  std::size_t const first = before_ ? rest_ - count : line.size() - rest_;
  rest_ -= count;
  find_in(line, first, first + count);
  if (before_) std::reverse(found_.begin(), found_.end());
  std::size_t cost = count + units_of_line_change;
  for (place const& word : found_) {
    add(line.substr(word.first, word.last - word.first));
    cost += word.last - word.first;
  }
  return cost;
}

// The words that begin in this part of a line.
void nearest_words::find_in(text::unit_view line, std::size_t first, std::size_t last) {
  found_.clear();
  for (std::u16string const& beginning : beginnings_) {
    auto const next = [&](std::size_t from) {
      return static_cast<std::size_t>(
          text::find_unit(line.data() + from, line.data() + last, beginning.front()) - line.data());
    };
    for (std::size_t at = next(first); at < last; at = next(at + 1)) {
      std::size_t const typed_end = at + beginning.size();
      if (!begins_word(line, at) || !line.substr(at).starts_with(beginning) ||
          !text::is_cluster_start(line, typed_end))
        continue;
      std::size_t const end = end_of_word(line, typed_end);
      if (end > typed_end) found_.push_back({at, end});
    }
  }
  if (beginnings_.size() > 1) std::sort(found_.begin(), found_.end());
}

void nearest_words::add(std::u16string_view word) {
  if (known_.contains(word)) return;
  words_.emplace_back(word);
  known_.insert(words_.back());
}

}  // namespace typing
