#pragma once

#include "text/storage.h"

namespace documents {

/// Makes `units` the text of the storage from `first` on, as one step that can be undone; no step
/// where that is the text already. Lines that both have at their beginning and end stay, and with
/// them what is kept with their text, such as bookmarks.
void replace_text(text::storage& storage, text::text_block const& units, text::pos first = {});

}  // namespace documents
