#include "documents/file_text.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <vector>

#include "encoding/decode_in_place.h"
#include "encoding/estimate_buffer.h"
#include "encoding/harmonize_units.h"
#include "path/file_reader.h"
#include "settings/store.h"

namespace documents {
namespace {

/// The bytes of a file in the upper half of memory for as many units, as decoding in place needs.
struct loaded_bytes {
  std::unique_ptr<text::text_block_builder> memory;
  std::size_t size = 0;

  unsigned char* begin() const { return reinterpret_cast<unsigned char*>(memory->data()) + size; }
};

loaded_bytes room_for(std::size_t size) {
  return {std::make_unique<text::text_block_builder>(size), size};
}

std::optional<path::file_error> refusal_of_size(std::string const& path, std::uint64_t size) {
  if (size <= largest_file) return std::nullopt;
  std::uint64_t const tenths = size / ((std::uint64_t{1} << 30) / 10);
  return path::file_error{"read", path, EFBIG,
                          "It has " + std::to_string(tenths / 10) + "." +
                              std::to_string(tenths % 10) +
                              " GiB, and a text can have 2 GiB at most"};
}

void cut(loaded_bytes& bytes, std::size_t size) {
  unsigned char const* const begin = bytes.begin();
  bytes.size = size;
  std::memmove(bytes.begin(), begin, size);
}

/// For a file that holds more than it seemed to, as those do which the kernel makes up.
std::optional<path::file_error> append_rest(path::file_reader& reader, std::string const& path,
                                            loaded_bytes& bytes) {
  constexpr std::size_t piece = 65536;
  std::vector<unsigned char> rest;
  for (std::size_t read = piece; read == piece;) {
    std::size_t const old_size = rest.size();
    rest.resize(old_size + piece);
    auto const result = reader.read(rest.data() + old_size, piece);
    if (result.error) return result.error;
    read = result.bytes;
    rest.resize(old_size + read);
    if (auto refusal = refusal_of_size(path, bytes.size + rest.size())) return refusal;
  }
  if (rest.empty()) return std::nullopt;
  loaded_bytes all = room_for(bytes.size + rest.size());
  std::memcpy(all.begin(), bytes.begin(), bytes.size);
  std::memcpy(all.begin() + bytes.size, rest.data(), rest.size());
  bytes = std::move(all);
  return std::nullopt;
}

void note_identity(std::string const& path, struct stat const& info, file_text& text) {
  text.stamp = stamp_of(path, path::version_of(info));
  text.info = attributes_of(path, path::version_of(info)).value_or(info);
  path::open_place place;
  if (place.open(path)) return;
  auto const there = place.info();
  if (there && path::is_same_file(*there, info)) text.place = place.place();
}

std::optional<path::file_error> load(std::string const& path, loaded_bytes& bytes, file_text& text,
                                     std::size_t skip) {
  path::file_reader reader;
  text.stamp.reset();
  text.place = {};
  if (auto error = reader.open(path)) {
    if (error->code == ENOENT) text.place = path::place_of(path).value_or(path::file_place());
    return error;
  }
  note_identity(path, reader.info(), text);
  std::vector<unsigned char> skipped(skip);
  if (auto const head = reader.read(skipped.data(), skip); head.error) return head.error;
  auto const size = static_cast<std::size_t>(reader.info().st_size);
  if (auto refusal = refusal_of_size(path, size - std::min(size, skip))) return refusal;
  bytes = room_for(size - std::min(size, skip));
  auto const result = reader.read(bytes.begin(), bytes.size);
  if (result.error) return result.error;
  if (result.bytes == bytes.size) return append_rest(reader, path, bytes);
  cut(bytes, result.bytes);
  return std::nullopt;
}

/// 0 at the end, -1 with errno.
ssize_t read_some(int descriptor, unsigned char* place, std::size_t count) {
  while (true) {
    ssize_t const bytes = ::read(descriptor, place, count);
    if (bytes >= 0 || (errno != EINTR && errno != EAGAIN)) return bytes;
    // The process at the other end may have set it not to wait.
    pollfd wanted{descriptor, POLLIN, 0};
    if (errno == EAGAIN) ::poll(&wanted, 1, -1);
  }
}

/// UTF-16 gains a mark when it is written, but loses nothing.
bool nothing_lost(encoding::decoded const& decoded, loaded_bytes const& bytes,
                  encoding::charset_t charset) {
  bool const utf16 = charset == encoding::UTF16BE || charset == encoding::UTF16LE;
  return decoded.exact || (utf16 && bytes.size % 2 == 0);
}

/// One of those that no text has a use for, not even for a terminal.
bool is_odd_control(char16_t unit) {
  constexpr char16_t substitute = 0x1A, escape = 0x1B;  // the end of old files; colours
  return unit < 0x20 && !(unit >= u'\a' && unit <= u'\r') && unit != substitute && unit != escape;
}

void decode(loaded_bytes& bytes, std::optional<encoding::charset_t> charset, bool pairs,
            file_text& text) {
  text.charset = charset ? *charset : encoding::estimate_buffer(bytes.begin(), bytes.size);
  char16_t* const units = bytes.memory->data();
  auto const decoded = encoding::decode_in_place(units, bytes.size, text.charset, pairs);
  auto const harmonized = encoding::harmonize_units(units, units + decoded.units);
  text.byte_order_mark = decoded.has_bom;
  text.exact = nothing_lost(decoded, bytes, text.charset);
  text.line_ending = harmonized.ends.prevailing();
  text.binary = harmonized.ends.mixed() && std::any_of(units, harmonized.last, is_odd_control);
  text.units = bytes.memory->finish(static_cast<std::size_t>(harmonized.last - units));
}

}  // namespace

bool preserves_supplementary_characters() {
  return settings::store().boolean("WynPreserveSupplementaryCharacters");
}

std::optional<path::file_error> read_file_text(std::string const& path,
                                               std::optional<encoding::charset_t> charset,
                                               bool pairs, file_text& text, std::size_t skip) {
  loaded_bytes bytes;
  if (auto error = load(path, bytes, text, skip)) return error;
  decode(bytes, charset, pairs, text);
  return std::nullopt;
}

std::optional<path::file_error> read_stream_text(int descriptor, std::string const& name,
                                                 bool pairs, file_text& text) {
  constexpr std::size_t piece = 65536;
  std::vector<unsigned char> all;
  for (ssize_t bytes = 1; bytes != 0;) {
    std::size_t const old_size = all.size();
    all.resize(old_size + piece);
    bytes = read_some(descriptor, all.data() + old_size, piece);
    if (bytes < 0) return path::make_file_error("read", name, errno);
    all.resize(old_size + static_cast<std::size_t>(bytes));
    if (auto refusal = refusal_of_size(name, all.size())) return refusal;
  }
  loaded_bytes loaded = room_for(all.size());
  if (!all.empty()) std::memcpy(loaded.begin(), all.data(), all.size());
  std::vector<unsigned char>().swap(all);
  decode(loaded, std::nullopt, pairs, text);
  return std::nullopt;
}

}  // namespace documents
