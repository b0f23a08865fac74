#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "plist/value.h"

/// The text forms of single values in XML property lists. Parsers take no blanks around the text
/// unless stated, and give nothing when it is not of their form.
namespace plist::xml {

/// Decimal with an optional sign, or hexadecimal after 0x; must fit 64 bits with a sign.
std::optional<std::int64_t> parse_integer(std::string_view text);
/// Decimal digits with point and exponent; nan, inf and infinity in any case.
std::optional<double> parse_real(std::string_view text);
/// Base64 with its padding; blanks may stand anywhere.
std::optional<data> parse_base64(std::string_view text);
/// 2001-01-01T00:00:00Z. Digits of a fraction of a second are taken, see format_date.
std::optional<date> parse_date(std::string_view text);

std::string format_real(double d);
std::string format_base64(data const& bytes);
/// Whole seconds print without a fraction, as the format is published. Others carry as many digits
/// as it takes to read the very same time back; readers that know whole seconds only refuse those.
/// Nothing outside of the years 1 to 9999.
std::optional<std::string> format_date(date when);

}  // namespace plist::xml
