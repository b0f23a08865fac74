#pragma once

#include "text/storage.h"

namespace documents {

/// Makes `units` the text of the storage, as one step that can be undone. Lines that both have at
/// their beginning and end stay, and with them what is kept with their text, such as bookmarks.
void replace_text(text::storage& storage, text::text_block const& units);

}  // namespace documents
