#include "documents/storage_bytes.h"

#include "encoding/lost_units.h"

namespace documents {
namespace {

bool put_lines(text::storage const& storage, encoding::stream_encoder& encoder) {
  static constexpr char16_t line_end = u'\n';
  for (std::size_t line = 0; line < storage.lines(); ++line) {
    if (line != 0 && !encoder.put(&line_end, &line_end + 1)) return false;
    text::unit_view const units = storage.line_units(line);
    if (!encoder.put(units.data(), units.data() + units.size())) return false;
  }
  return encoder.finish();
}

}  // namespace

path::file_contents storage_bytes(text::storage const& storage, encoding::file_format format) {
  auto const produce = [&storage, format](path::byte_sink const& sink) {
    encoding::stream_encoder encoder(format, sink);
    return put_lines(storage, encoder);
  };
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
