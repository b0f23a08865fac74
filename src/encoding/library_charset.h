#pragma once

#include <string>

#include "encoding/charset.h"
#include "encoding/decode_in_place.h"

/// The charsets that ICU converts. The callers of the other headers need not know of them:
/// decode_in_place, stream_encoder and first_lost_unit come here. Where ICU has no data for one,
/// nothing but ASCII can be read or written in it.
namespace encoding {

/// As decode_in_place. Bytes that are no text become U+FFFD, or U+001A for some single ones; then
/// the result isn't `exact`, and neither is it if a character has several forms and the file holds
/// one that ICU doesn't write. UTF-32 always gets a mark when it is written.
decoded decode_by_library(char16_t* block, std::size_t byte_count, charset_t charset);

/// Appends the bytes of the units [first, last) to `out`. What the charset doesn't have becomes
/// "?". A high surrogate at the end of a part is kept for the next one. Each thread writes one
/// text at a time in each charset, and begins it by start_encoding_by_library.
void start_encoding_by_library(charset_t charset);
void encode_by_library(char16_t const* first, char16_t const* last, charset_t charset, bool is_end,
                       std::string& out);

/// As first_lost_unit.
char16_t const* first_lost_by_library(char16_t const* first, char16_t const* last,
                                      charset_t charset);

}  // namespace encoding
