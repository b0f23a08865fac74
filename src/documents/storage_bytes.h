#pragma once

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

/// Whether a line or a text holds half of a surrogate pair.
bool has_lone_surrogate(text::unit_view units);
/// The first line that holds half of a surrogate pair, from 0; nothing if none does.
std::optional<std::size_t> line_with_lone_surrogate(text::storage const& storage);

/// Whether the storage holds this text.
bool holds(text::storage const& storage, text::unit_view text);

}  // namespace documents
