#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "platform/graphics.h"
#include "plist/value.h"

namespace styles {

/// Colours as themes write them: "#RRGGBB" or "#RRGGBBAA" in hexadecimal.

/// Red, green, blue and alpha, each from 0 to 1; opaque black for what is no colour.
std::array<float, 4> RGBAForString(std::string const& string);
/// The other way round, always with alpha. Components are truncated to a byte.
std::string stringForRGBA(std::array<float, 4> const& rgba);

/// Whether light text is read better on it than dark text.
bool is_dark(platform::color c);
/// How well one opaque colour stands out from the other, from 1 to 21; text is read well from 4.5
/// on.
double contrast(platform::color a, platform::color b);

/// Nothing for what is no colour.
std::optional<platform::color> NSColorFromString(std::string const& string);
/// That of the dictionary's value.
std::optional<platform::color> NSColorForKey(plist::value const& dictionary, std::string_view key);

}  // namespace styles
