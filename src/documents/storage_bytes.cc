#include "documents/storage_bytes.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "encoding/encoded_size.h"
#include "encoding/lost_units.h"

namespace documents {
namespace {

/// Short lines are put many at a time, since each call costs as much as some hundred units.
bool put_lines(text::storage const& storage, encoding::stream_encoder& encoder) {
  constexpr std::size_t room = 4096;
  char16_t gathered[room];
  std::size_t size = 0;
  auto const put_gathered = [&] {
    return encoder.put(gathered, gathered + std::exchange(size, 0));
  };
  for (std::size_t line = 0; line < storage.lines(); ++line) {
    text::unit_view const units = storage.line_units(line);
    if (size + units.size() + 1 > room && !put_gathered()) return false;
    if (line != 0) gathered[size++] = u'\n';
    if (units.size() >= room - size) {
      if (!put_gathered() || !encoder.put(units.data(), units.data() + units.size())) return false;
      continue;
    }
    std::copy(units.begin(), units.end(), gathered + size);
    size += units.size();
  }
  return put_gathered() && encoder.finish();
}

/// What put_lines puts, in bytes, where the charset lets it be told without encoding.
std::optional<std::uint64_t> size_of(text::storage const& storage,
                                     encoding::file_format const& format) {
  if (format.charset != encoding::UTF8) return std::nullopt;
  std::uint64_t const line_end = format.line_ending == line_ending::CRLF ? 2 : 1;
  std::uint64_t size = (format.byte_order_mark ? 3 : 0) + (storage.lines() - 1) * line_end;
  for (std::size_t line = 0; line < storage.lines(); ++line) {
    text::unit_view const units = storage.line_units(line);
    size += encoding::utf8_size(units.data(), units.data() + units.size(), format.pairs);
  }
  return size;
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
  for (std::size_t line = 0; line < storage.lines(); ++line) {
    text::unit_view const units = storage.line_units(line);
    char16_t const* const last = units.data() + units.size();
    if (encoding::first_lost_unit(units.data(), last, charset) != last) return false;
  }
  return true;
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
