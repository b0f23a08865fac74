#include "documents/storage_bytes.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "encoding/encoded_size.h"
#include "encoding/lost_units.h"
#include "encoding/supplementary.h"
#include "text/unit_search.h"

namespace documents {
namespace {

/// Gives the text with its line feeds to `use`, in order and in long pieces, as long as it answers
/// true; returns whether it always did. Each call costs as much as some hundred units: lines that
/// stand one after the other in memory, as they were loaded, are one piece, and short ones that
/// have been edited are gathered.
template <typename Use>
bool put_pieces(text::storage const& storage, Use use) {
  constexpr std::size_t room = 4096;
  char16_t gathered[room];
  std::size_t size = 0;
  char16_t const *first = nullptr, *last = nullptr;
  auto const put_gathered = [&] { return use(gathered, gathered + std::exchange(size, 0)); };
  auto const put = [&](char16_t const* from, char16_t const* to) {
    auto const length = static_cast<std::size_t>(to - from);
    if (length > room - size && !put_gathered()) return false;
    if (length > room) return use(from, to);
    std::copy(from, to, gathered + size);
    size += length;
    return true;
  };
  for (std::size_t line = 0; line < storage.lines(); ++line) {
    text::unit_view const units = storage.line_units(line);
    char16_t const* const end = units.data() + units.size();
    // Separate blocks have more than a unit between them.
    bool const goes_on = first != nullptr && units.data() == last + 1 && *last == u'\n';
    if (!goes_on) {
      if (!put(first, last)) return false;
      constexpr char16_t line_feed = u'\n';
      if (line != 0 && !put(&line_feed, &line_feed + 1)) return false;
      first = units.data();
    }
    last = end;
  }
  return put(first, last) && put_gathered();
}

bool put_lines(text::storage const& storage, encoding::stream_encoder& encoder) {
  auto const encode = [&](auto first, auto last) { return encoder.put(first, last); };
  return put_pieces(storage, encode) && encoder.finish();
}

/// What put_lines puts, in bytes, where that can be told without encoding: in UTF-8, and of ASCII
/// text in all charsets whose characters are a byte each.
std::optional<std::uint64_t> size_of(text::storage const& storage,
                                     encoding::file_format const& format) {
  if (format.charset == encoding::UTF16BE || format.charset == encoding::UTF16LE)
    return std::nullopt;
  std::uint64_t units = 0, size = 0;
  put_pieces(storage, [&](auto first, auto last) {
    units += static_cast<std::uint64_t>(last - first);
    size += encoding::utf8_size(first, last, format.pairs);
    return true;
  });
  if (format.charset != encoding::UTF8 && size != units) return std::nullopt;
  if (format.charset == encoding::UTF8 && format.byte_order_mark) size += 3;
  if (format.line_ending == line_ending::CRLF) size += storage.lines() - 1;
  return size;
}

/// Gives the lone ones in order as long as `use` answers true; returns whether it always did.
template <typename Use>
bool for_each_lone_surrogate(text::unit_view units, Use use) {
  constexpr char16_t first_surrogate = 0xD800;
  char16_t const* at = units.data();
  char16_t const* const last = at + units.size();
  while ((at = text::find_unit_or_above(at, last, first_surrogate, first_surrogate)) != last) {
    bool const is_high = encoding::is_high_surrogate(*at);
    bool const is_pair = is_high && last - at > 1 && encoding::is_low_surrogate(at[1]);
    bool const is_lone = !is_pair && (is_high || encoding::is_low_surrogate(*at));
    if (is_lone && !use(*at)) return false;
    at += is_pair ? 2 : 1;
  }
  return true;
}

}  // namespace

path::file_contents storage_bytes(text::storage const& storage, encoding::file_format format) {
  auto const produce = [&storage, format](path::byte_sink const& sink) {
    encoding::stream_encoder encoder(format, sink);
    return put_lines(storage, encoder);
  };
  if (auto const size = size_of(storage, format)) return {*size, produce};
  std::uint64_t size = 0;
  produce([&size](unsigned char const*, std::size_t piece) {
    size += piece;
    return true;
  });
  return {size, produce};
}

bool can_be_encoded(text::storage const& storage, encoding::charset_t charset) {
  return put_pieces(storage, [charset](auto first, auto last) {
    return encoding::first_lost_unit(first, last, charset) == last;
  });
}

std::optional<lost_character> first_lost_character(text::storage const& storage,
                                                   encoding::charset_t charset) {
  for (std::size_t line = 0; line < storage.lines(); ++line) {
    text::unit_view const units = storage.line_units(line);
    char16_t const* const end = units.data() + units.size();
    char16_t const* const lost = encoding::first_lost_unit(units.data(), end, charset);
    if (lost == end) continue;
    bool const is_pair =
        end - lost > 1 && (lost[0] & 0xFC00) == 0xD800 && (lost[1] & 0xFC00) == 0xDC00;
    return lost_character{{lost, is_pair ? 2U : 1U}, line};
  }
  return std::nullopt;
}

lone_surrogates lone_surrogates_in(text::unit_view units) {
  lone_surrogates result;
  for_each_lone_surrogate(units, [&](char16_t unit) {
    ++result[unit];
    return true;
  });
  return result;
}

lone_surrogates lone_surrogates_in(text::storage const& storage) {
  lone_surrogates result;
  for (std::size_t line = 0; line < storage.lines(); ++line)
    for (auto const& [unit, count] : lone_surrogates_in(storage.line_units(line)))
      result[unit] += count;
  return result;
}

std::optional<std::size_t> line_with_new_lone_surrogate(text::storage const& storage,
                                                        lone_surrogates known) {
  for (std::size_t line = 0; line < storage.lines(); ++line) {
    bool const all_known = for_each_lone_surrogate(
        storage.line_units(line), [&](char16_t unit) { return known[unit]-- != 0; });
    if (!all_known) return line;
  }
  return std::nullopt;
}

bool holds(text::storage const& storage, text::unit_view text) {
  for (std::size_t line = 0; line < storage.lines(); ++line) {
    if (line != 0) {
      if (!text.starts_with(u'\n')) return false;
      text.remove_prefix(1);
    }
    text::unit_view const units = storage.line_units(line);
    if (!text.starts_with(units)) return false;
    text.remove_prefix(units.size());
  }
  return text.empty();
}

}  // namespace documents
