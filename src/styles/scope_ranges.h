#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "text/pos.h"

namespace styles {

class styled_view;

/// The text of a range with its scopes as markup: an element for each, named by the scope, which
/// opens and closes where the scope does. "<", ">" and "&" of the text are escaped, and nothing
/// else; there is no other root. The view must show a document. Waits for the tokenizer.
std::u16string scope_markup(styled_view const& text_view, text::pos first, text::pos last);

/// The range widened at both ends as far as `holds` is true for the scopes, outermost first, of
/// the unit that would be taken in. It is asked once for each combination of scopes.
std::pair<text::pos, text::pos> scope_extent(
    styled_view const& text_view, text::pos first, text::pos last,
    std::function<bool(std::vector<std::string> const&)> const& holds);

}  // namespace styles
