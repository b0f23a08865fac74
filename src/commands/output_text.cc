#include "commands/output_text.h"

#include "encoding/utf8_blocks.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace commands {
namespace {

constexpr std::size_t first_room = 4096;
constexpr std::size_t small_room = std::size_t{1} << 19;  // units, which can be moved at no cost
constexpr std::size_t overshoot = 128;                    // units that fast decoding may write over
constexpr std::size_t slack = std::size_t{1} << 20;       // units: more than comes at a time
constexpr std::size_t longest_sequence = 4;
constexpr int run = 64;  // sequences decoded one by one where the fast way has failed

/// How many bytes a sequence has by its first one; 0 if none begins so.
std::size_t length_of(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead < 0xC2 || lead > 0xF4) return 0;
  return static_cast<std::size_t>(std::countl_one(lead));
}

bool is_continued(unsigned char const* at, std::size_t length) {
  for (std::size_t n = 1; n < length; ++n)
    if ((at[n] & 0xC0) != 0x80) return false;
  return true;
}

char32_t character_at(unsigned char const* at, std::size_t length) {
  if (length == 1) return *at;
  char32_t value = *at & (0x7Fu >> length);
  for (std::size_t n = 1; n < length; ++n) value = value << 6 | (at[n] & 0x3F);
  return value;
}

/// Neither longer than need be nor beyond the last character.
bool is_proper(char32_t character, std::size_t length) {
  constexpr char32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
  return character >= least[length] && character <= 0x10FFFF;
}

}  // namespace

// What is known to come is made room for at once, in pages that cost nothing until they are
// written, so that a large text is never there twice.
void output_text::make_room(std::size_t units) {
  std::size_t const wanted = used_ + units + overshoot;
  if (units_ != nullptr && wanted <= units_->capacity()) return;
  std::size_t room = std::max(wanted + wanted / 2, first_room);
  if (used_ + units > small_room) room = std::max(room, expected_ + slack);
  auto larger = std::make_unique<text::text_block_builder>(room);
  if (used_ != 0) std::memcpy(larger->data(), units_->data(), used_ * sizeof(char16_t));
  units_ = std::move(larger);
}

void output_text::put(char32_t character) {
  char16_t* const out = units_->data() + used_;
  if (character > 0xFFFF) {
    out[0] = static_cast<char16_t>(0xD7C0 + (character >> 10));
    out[1] = static_cast<char16_t>(0xDC00 + (character & 0x3FF));
    used_ += 2;
  } else {
    out[0] = static_cast<char16_t>(character);
    ++used_;
  }
}

// Up to the end, or to a sequence that is cut there.
unsigned char const* output_text::decode(unsigned char const* at, unsigned char const* end) {
  while (at != end) {
    char16_t* const out = units_->data() + used_;
    auto const reached = encoding::decode_utf8_blocks({at, out}, end);
    used_ += static_cast<std::size_t>(reached.out - out);
    at = reached.in;
    for (int n = 0; n < run && at != end; ++n) {
      std::size_t const length = length_of(*at);
      auto const left = static_cast<std::size_t>(end - at);
      is_valid_ = length != 0 && is_continued(at, std::min(length, left));
      if (!is_valid_ || length > left) return at;
      char32_t const character = character_at(at, length);
      is_valid_ = is_proper(character, length);
      if (!is_valid_) return at;
      put(character);
      at += length;
    }
  }
  return at;
}

void output_text::append(std::string_view bytes) {
  if (!is_valid_ || bytes.empty()) return;
  make_room(bytes.size() + longest_sequence);
  while (!cut_.empty() && !bytes.empty() && is_valid_) {
    cut_ += bytes.front();
    bytes.remove_prefix(1);
    auto const* const first = reinterpret_cast<unsigned char const*>(cut_.data());
    if (decode(first, first + cut_.size()) != first) cut_.clear();
  }
  auto const* const first = reinterpret_cast<unsigned char const*>(bytes.data());
  unsigned char const* const end = first + bytes.size();
  unsigned char const* const reached = decode(first, end);
  if (!is_valid_)
    units_.reset();
  else
    cut_.append(reached, end);
  if (is_valid_ && like_ != nullptr) pass_same();
}

void output_text::pass_same() {
  text::unit_view rest(units_->data(), used_);
  while (like_ != nullptr && !rest.empty()) {
    text::unit_view const line = like_->line_units(same_.line).substr(same_.column);
    std::size_t const count = std::min(line.size(), rest.size());
    auto const equal = static_cast<std::size_t>(
        std::mismatch(line.begin(), line.begin() + static_cast<std::ptrdiff_t>(count), rest.begin())
            .first -
        line.begin());
    same_.column += static_cast<std::uint32_t>(equal);
    rest.remove_prefix(equal);
    if (rest.empty()) break;
    bool const goes_on =
        equal == line.size() && rest[0] == u'\n' && same_.line + std::size_t{1} < like_->lines();
    if (!goes_on) {
      like_ = nullptr;
      break;
    }
    same_ = {same_.line + std::size_t{1}, 0};
    rest.remove_prefix(1);
  }
  std::copy(rest.begin(), rest.end(), units_->data());
  used_ = rest.size();
}

std::optional<text::text_block> output_text::take() {
  if (!is_valid_ || !cut_.empty()) return std::nullopt;
  return units_ == nullptr ? text::text_block() : units_->finish(used_);
}

}  // namespace commands
