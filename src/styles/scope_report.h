#pragma once

#include <string>

#include "text/pos.h"

namespace styles {
class styled_view;

/// Why text looks and behaves as it does, for people who write themes and bundles: the scopes at a
/// place, outermost first, then for each key of its style the value, the rule that gave it, of
/// which theme or bundle, and that rule's score. Lines of UTF-8, the last one ended too. The place
/// must exist; there must be a document. Waits for the tokenizer as long as that has patience.
std::string scope_report(styled_view const& text_view, text::pos at);

}  // namespace styles
