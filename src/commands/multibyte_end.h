#pragma once

namespace commands {

/// The end of the last character of UTF-8 in the bytes that is all there: what is left out is the
/// beginning of one whose other bytes are to come, three at most. Bytes that no others could make
/// a character of count as whole.
inline char const* find_multibyte_end(char const* first, char const* last) {
  auto const byte_at = [](char const* at) { return static_cast<unsigned char>(*at); };
  for (char const* at = last; at != first && last - at < 3;) {
    unsigned char const byte = byte_at(--at);
    if (byte < 0x80) break;
    if (byte < 0xC0) continue;
    int const length = byte < 0xC2 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : byte < 0xF5 ? 4 : 1;
    return last - at < length ? at : last;
  }
  return last;
}

}  // namespace commands
