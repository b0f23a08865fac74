#include "textview/indent_patterns.h"

#include "bundles/item_file.h"
#include "platform/utf.h"
#include "text/tab_width.h"
#include "textview/scope_style.h"

#include <algorithm>
#include <stdexcept>

namespace {

constexpr std::size_t longest_line = 4096;  // units; nobody indents a longer one by hand
constexpr std::size_t furthest_line = 200;  // above, where the walk up ends at the latest

}  // namespace

std::optional<oniguruma::ptrn_t> pattern_of_setting(std::string const& source,
                                                    char const* key) try {
  if (source.empty()) return std::nullopt;
  std::u16string const units = unicode::to_utf16(source);
  return oniguruma::ptrn_t(units.data(), units.data() + units.size(), 0);
} catch (std::invalid_argument const& error) {
  bundles::complain(origin_of_setting(key, source) + ": " + error.what());
  return std::nullopt;
}

indent_patterns::indent_patterns(plist::value const& settings) {
  for (std::size_t i = 0; i < keys.size(); ++i) {
    sources_[i] = settings[keys[i]].string_or("");
    patterns_[i] = pattern_of_setting(sources_[i], keys[i]);
  }
}

bool indent_patterns::are_of(plist::value const& settings) const {
  for (std::size_t i = 0; i < keys.size(); ++i)
    if (settings[keys[i]].string_or("") != sources_[i]) return false;
  return true;
}

bool indent_patterns::matches(type which, text::unit_view line) const {
  std::size_t i = 0;
  while ((1u << i) != which) ++i;
  if (!patterns_[i] || line.size() > longest_line) return false;
  auto const length = static_cast<std::ptrdiff_t>(line.size());
  return bool(oniguruma::find(line.empty() ? u"" : line.data(), 0, length, &*patterns_[i]));
}

unsigned indent_patterns::typeForLine(text::unit_view line) const {
  if (matches(unindented, line)) return unindented;
  unsigned bits = 0;
  for (type const which : {increase, decrease, next_line})
    if (matches(which, line)) bits |= which;
  return bits;
}

std::size_t indent_patterns::indentForContentAtLine(text::unit_view content, std::size_t number,
                                                    text::storage const& text,
                                                    std::size_t tab_size) const {
  if (number == 0) return 0;
  unsigned const own = typeForLine(content);
  if (own == unindented) return text::indent_width(content, tab_size);

  // The two lines above that count.
  unsigned above[] = {unindented, unindented};
  std::size_t base = 0, found = 0;
  std::size_t const top = number - std::min(number, furthest_line);
  for (std::size_t line = number; line-- > top && found < 2;) {
    unsigned const bits = typeForLine(text.line_units(line));
    if (bits == unindented) continue;
    if (found == 0) base = text::indent_width(text.line_units(line), tab_size);
    above[found++] = bits;
  }

  int levels = 0;
  if (above[0] & increase)
    levels = 1;
  else if (above[0] & next_line)
    levels = above[1] & next_line ? 0 : 1;
  else if (above[0] == 0 && above[1] & next_line)
    levels = -1;
  if (own & decrease || (own & increase && above[0] & next_line)) --levels;
  auto const width =
      static_cast<std::ptrdiff_t>(base) + levels * static_cast<std::ptrdiff_t>(tab_size);
  return width < 1 ? 0 : static_cast<std::size_t>(width);
}
