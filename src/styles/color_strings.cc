#include "styles/color_strings.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace styles {
namespace {

std::optional<std::array<unsigned, 4>> bytes_of(std::string const& string) {
  std::array<unsigned, 4> b{0, 0, 0, 255};
  if (std::sscanf(string.c_str(), "#%02x%02x%02x%02x", &b[0], &b[1], &b[2], &b[3]) < 3)
    return std::nullopt;
  for (unsigned& component : b) component = std::min(component, 255u);
  return b;
}

// Relative to white, as the eye sees it.
double luminance(platform::color c) {
  static auto const linear = [] {
    std::array<double, 256> made{};
    for (std::size_t byte = 0; byte < made.size(); ++byte) {
      double const value = static_cast<double>(byte) / 255;
      made[byte] = value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    }
    return made;
  }();
  return 0.2126 * linear[c.red] + 0.7152 * linear[c.green] + 0.0722 * linear[c.blue];
}

}  // namespace

std::array<float, 4> RGBAForString(std::string const& string) {
  auto const bytes = bytes_of(string);
  std::array<float, 4> rgba{0, 0, 0, 1};
  for (std::size_t n = 0; bytes && n < rgba.size(); ++n)
    rgba[n] = static_cast<float>((*bytes)[n] / 255.0);
  return rgba;
}

std::string stringForRGBA(std::array<float, 4> const& rgba) {
  char text[16];
  auto const byte = [&](std::size_t n) {
    return static_cast<unsigned>(std::clamp(rgba[n] * 255.0F, 0.0F, 255.0F));
  };
  std::snprintf(text, sizeof text, "#%02x%02x%02x%02x", byte(0), byte(1), byte(2), byte(3));
  return text;
}

std::optional<platform::color> NSColorFromString(std::string const& string) {
  auto const bytes = bytes_of(string);
  if (!bytes) return std::nullopt;
  auto const byte = [&](std::size_t n) { return static_cast<std::uint8_t>((*bytes)[n]); };
  return platform::color{byte(0), byte(1), byte(2), byte(3)};
}

std::optional<platform::color> NSColorForKey(plist::value const& dictionary, std::string_view key) {
  auto const* const string = dictionary[key].as_string();
  return string == nullptr ? std::nullopt : NSColorFromString(*string);
}

bool is_dark(platform::color c) {
  return c.red * 299 + c.green * 587 + c.blue * 114 < 128 * 1000;
}

double contrast(platform::color a, platform::color b) {
  double const of_a = luminance(a) + 0.05, of_b = luminance(b) + 0.05;
  return std::max(of_a, of_b) / std::min(of_a, of_b);
}

}  // namespace styles
