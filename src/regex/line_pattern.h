#pragma once

#include <string_view>

namespace regex {

/// Whether a pattern in the syntax of Ruby can be told, by its source alone, never to match a
/// newline nor to look beyond one. `options` are Oniguruma's. False where there is any doubt: for
/// `\s`, `[^a]`, `(?m)`, an escape of a code point.
bool is_line_pattern(std::u16string_view source, unsigned options);

}  // namespace regex
