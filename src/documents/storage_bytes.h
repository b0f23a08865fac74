#pragma once

#include <map>
#include <optional>

#include "encoding/stream_encoder.h"
#include "path/file_writer.h"
#include "text/storage.h"

namespace documents {

/// The text of a storage as the bytes of a file, made in pieces whenever they are written. The
/// storage must stay as it is for as long as they may be. Throws std::bad_alloc.
path::file_contents storage_bytes(text::storage const& storage, encoding::file_format format);

/// Whether the whole text comes back when it is written in this charset and read again.
bool can_be_encoded(text::storage const& storage, encoding::charset_t charset);

struct lost_character {
  std::u16string character;
  std::size_t line = 0;  ///< from 0
};
/// The first that can't be encoded; nothing if all can. Slower than can_be_encoded.
std::optional<lost_character> first_lost_character(text::storage const& storage,
                                                   encoding::charset_t charset);

/// How often each half of a surrogate pair stands alone in a text.
using lone_surrogates = std::map<char16_t, std::size_t>;
lone_surrogates lone_surrogates_in(text::unit_view units);
lone_surrogates lone_surrogates_in(text::storage const& storage);
/// The first line, from 0, up to which the text holds more of one than are `known`; nothing if it
/// never does.
std::optional<std::size_t> line_with_new_lone_surrogate(text::storage const& storage,
                                                        lone_surrogates known);

/// Whether the storage holds this text.
bool holds(text::storage const& storage, text::unit_view text);

}  // namespace documents
