#include "commands/text_source.h"

#include <algorithm>

namespace commands {
namespace {

constexpr std::size_t piece_bytes = std::size_t{1} << 17;
constexpr std::size_t most_units = std::size_t{1} << 16;  // put at a time
constexpr char16_t line_feed = u'\n';

}  // namespace

text_source::text_source(text::storage const& storage, text::pos first, text::pos last)
    : storage_(storage),
      at_(first),
      last_(last),
      encoder_({.charset = encoding::UTF8, .pairs = true},
               [this](unsigned char const* bytes, std::size_t size) {
                 piece_.append(reinterpret_cast<char const*>(bytes), size);
                 return true;
               }) {}

// As many as stand in one place: lines as they were loaded follow each other in memory, with their
// ends between them.
text::unit_view text_source::take_units() {
  text::unit_view const line = storage_.line_units(at_.line);
  char16_t const* const first = line.data() + at_.column;
  char16_t const* last = first;
  while (at_ < last_ && static_cast<std::size_t>(last - first) < most_units) {
    text::unit_view const units = storage_.line_units(at_.line);
    std::size_t const end = at_.line == last_.line ? last_.column : units.size();
    if (units.data() + at_.column != last && last != first) break;
    if (at_.column < end) {
      std::size_t const count = std::min(end - at_.column, most_units);
      last = units.data() + at_.column + count;
      at_.column += static_cast<std::uint32_t>(count);
      continue;
    }
    bool const goes_on =
        last != first && storage_.line_units(at_.line + 1).data() == last + 1 && *last == line_feed;
    if (!goes_on && last != first) break;
    ++at_.line;
    at_.column = 0;
    if (!goes_on) return {&line_feed, 1};
    ++last;
  }
  return {first, static_cast<std::size_t>(last - first)};
}

std::string_view text_source::next() {
  piece_.clear();
  while (piece_.size() < piece_bytes && at_ < last_) {
    text::unit_view const units = take_units();
    encoder_.put(units.data(), units.data() + units.size());
  }
  if (at_ == last_ && !is_at_end_) {
    is_at_end_ = true;
    encoder_.finish();
  }
  return piece_;
}

}  // namespace commands
