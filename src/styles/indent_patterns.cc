#include "styles/indent_patterns.h"

#include "platform/log.h"
#include "platform/utf.h"
#include "styles/scope_style.h"
#include "text/tab_width.h"

#include <algorithm>
#include <bit>
#include <stdexcept>

namespace styles {
namespace {

constexpr std::size_t longest_line = 4096;  // units; longer ones are not indented by hand
constexpr std::size_t furthest_line = 200;  // above, where the walk up ends at the latest

bool matches_line(oniguruma::ptrn_t const& pattern, text::unit_view line) {
  if (line.size() > longest_line) return false;
  auto const length = static_cast<std::ptrdiff_t>(line.size());
  return bool(oniguruma::find(line.empty() ? u"" : line.data(), 0, length, &pattern));
}

}  // namespace

std::optional<oniguruma::ptrn_t> pattern_of_setting(std::string const& source,
                                                    char const* key) try {
  if (source.empty()) return std::nullopt;
  std::u16string const units = unicode::to_utf16(source);
  return oniguruma::ptrn_t(units.data(), units.data() + units.size(), 0);
} catch (std::invalid_argument const& error) {
  platform::log_once(origin_of_setting(key, source) + ": " + error.what());
  return std::nullopt;
}

indent_patterns::indent_patterns(plist::value const& settings)
    : aligned_source_(settings[aligned_key]) {
  for (std::size_t i = 0; i < keys.size(); ++i) {
    sources_[i] = settings[keys[i]].string_or("");
    patterns_[i] = pattern_of_setting(sources_[i], keys[i]);
  }
  for (plist::value const& pair : aligned_source_.elements()) {
    if (pair.elements().size() != 2) continue;
    auto line = pattern_of_setting(pair.elements()[0].string_or(""), aligned_key);
    auto above = pattern_of_setting(pair.elements()[1].string_or(""), aligned_key);
    if (line && above) aligned_.emplace_back(std::move(*line), std::move(*above));
  }
}

bool indent_patterns::are_of(plist::value const& settings) const {
  if (!(settings[aligned_key] == aligned_source_)) return false;
  for (std::size_t i = 0; i < keys.size(); ++i)
    if (settings[keys[i]].string_or("") != sources_[i]) return false;
  return true;
}

bool indent_patterns::know(type which) const {
  return patterns_[static_cast<std::size_t>(std::countr_zero(static_cast<unsigned>(which)))]
      .has_value();
}

bool indent_patterns::matches(type which, text::unit_view line) const {
  auto const i = static_cast<std::size_t>(std::countr_zero(static_cast<unsigned>(which)));
  return patterns_[i] && matches_line(*patterns_[i], line);
}

indent_patterns::line_pair const* indent_patterns::aligned_pair(text::unit_view line) const {
  auto const found = std::find_if(aligned_.begin(), aligned_.end(), [&](line_pair const& pair) {
    return matches_line(pair.first, line);
  });
  return found == aligned_.end() ? nullptr : &*found;
}

std::optional<std::size_t> indent_patterns::aligned_line(line_pair const& pair, std::size_t number,
                                                         text::storage const& text,
                                                         line_types const& types) const {
  line_pair const& block = aligned_.front();
  std::size_t inner_blocks = 0;
  for (std::size_t line = number; line-- > number - std::min(number, furthest_line);) {
    text::unit_view const units = text.line_units(line);
    if ((types ? types(line) : typeForLine(units)) == unindented) continue;
    bool const begins = matches_line(block.second, units);
    if (inner_blocks == 0 && (begins ? &pair == &block : matches_line(pair.second, units)))
      return line;
    if (begins && inner_blocks-- == 0) return std::nullopt;
    if (matches_line(block.first, units)) ++inner_blocks;
  }
  return std::nullopt;
}

unsigned indent_patterns::typeForLine(text::unit_view line) const {
  if (matches(unindented, line)) return unindented;
  unsigned bits = 0;
  for (type const which : {increase, decrease, next_line})
    if (matches(which, line)) bits |= which;
  return bits;
}

std::size_t indent_patterns::indentForContentAtLine(text::unit_view content, std::size_t number,
                                                    text::storage const& text, std::size_t tab_size,
                                                    line_types const& types) const {
  if (number == 0) return 0;
  unsigned const own = typeForLine(content);
  if (own == unindented) return text::indent_width(content, text::tab_stops(tab_size));

  line_pair const* const aligned = aligned_pair(content);
  if (aligned != nullptr)
    if (auto const like = aligned_line(*aligned, number, text, types))
      return text::indent_width(text.line_units(*like), text::tab_stops(tab_size));

  // The two lines above that count.
  unsigned above[] = {unindented, unindented};
  std::size_t base = 0, found = 0;
  std::size_t const top = number - std::min(number, furthest_line);
  for (std::size_t line = number; line-- > top && found < 2;) {
    unsigned const bits = types ? types(line) : typeForLine(text.line_units(line));
    if (bits == unindented) continue;
    if (found == 0) {
      base = text::indent_width(text.line_units(line), text::tab_stops(tab_size));
      // Labels may be indented by less than a level: the lines after them aren't the more so.
      if (is_label(bits)) base -= base % tab_size;
    }
    above[found++] = bits;
  }

  int levels = 0;
  if (above[0] & increase)
    levels = 1;
  else if (above[0] & next_line)
    levels = above[1] & next_line ? 0 : 1;
  else if (above[0] == 0 && above[1] & next_line)
    levels = -1;
  // The first of its kind may stand as the line that begins the block does.
  if (aligned != nullptr)
    levels = text::indent_width(content, text::tab_stops(tab_size)) == base ? 0 : levels;
  else if (own & decrease || (own & increase && above[0] & next_line))
    --levels;
  auto const width =
      static_cast<std::ptrdiff_t>(base) + levels * static_cast<std::ptrdiff_t>(tab_size);
  auto const wanted = static_cast<std::size_t>(std::max<std::ptrdiff_t>(width, 0));
  std::size_t const given = text::indent_width(content, text::tab_stops(tab_size));
  return is_label(own) && given - given % tab_size == wanted ? given : wanted;
}

}  // namespace styles
