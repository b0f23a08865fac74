#pragma once

#include <string>

class WynTextView;

/// Each line of the text, then for each run of it a line with its column, a tab and the names of
/// its scopes, outermost first. Waits until the tokenizer has seen all of the text.
std::string batch_scopes(WynTextView const& text_view);
