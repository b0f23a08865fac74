#pragma once

#include <cstddef>
#include <string>

class WynTextView;

namespace app {

/// What the view knows of its text through the language's grammar. All wait until the tokenizer
/// has seen the text, all of it unless a line is given, and throw std::bad_alloc if it could not.

void wait_for_scopes(WynTextView const& text_view, std::size_t line = ~std::size_t{0});

/// Each line of the text, then for each run of it a line with its column, a tab and the names of
/// its scopes, outermost first.
std::string batch_scopes(WynTextView const& text_view);
/// The same with how each run is drawn, such as "#1F2328 on #FFFFFF bold italic underline"; the
/// second colour only where it isn't the background of all text.
std::string batch_styles(WynTextView const& text_view);
/// For each symbol its line, from 0, a tab and its name.
std::string batch_symbols(WynTextView& text_view);

}  // namespace app
