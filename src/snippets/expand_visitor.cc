#include "snippets/expand_visitor.h"

#include <iconv.h>
#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

#include <cerrno>

#include "platform/unicode.h"
#include "plist/utf8.h"
#include "snippets/diacritics.h"
#include "snippets/format_string.h"

namespace snippet {

void expand_visitor::traverse(parser::nodes_t const& nodes) {
  for (auto const& node : nodes) boost::apply_visitor(*this, node);
}

void expand_visitor::operator()(parser::text_t const& node) {
  result += node.text;
}

void expand_visitor::operator()(parser::variable_t const& node) {
  auto const variable = variables.find(node.name);
  if (variable != variables.end()) result += variable->second;
}

void expand_visitor::operator()(parser::variable_fallback_t const& node) {
  auto const variable = variables.find(node.name);
  if (variable != variables.end()) {
    result += variable->second;
  } else {
    traverse(node.fallback);
  }
}

void expand_visitor::operator()(parser::variable_condition_t const& node) {
  traverse(variables.contains(node.name) ? node.if_set : node.if_not_set);
}

void expand_visitor::operator()(parser::variable_transform_t const& node) {
  auto const variable = variables.find(node.name);
  std::string const value = variable != variables.end() ? variable->second : std::string();
  replace(value, node.pattern, node.format, node.options & parser::regexp_options::g);
}

void expand_visitor::operator()(parser::variable_change_t const& node) {
  using namespace parser::variable_change;
  auto const variable = variables.find(node.name);
  if (variable == variables.end()) return;
  std::string value = variable->second;
  if (node.change & upcase) value = unicode::uppercase(value);
  if (node.change & downcase) value = unicode::lowercase(value);
  if (node.change & parser::variable_change::capitalize) value = capitalize(value);
  if (node.change & parser::variable_change::asciify) value = asciify(value);
  result += value;
}

void expand_visitor::operator()(parser::case_change_t const& node) {
  case_changes.emplace_back(result.size(), node.type);
}

void expand_visitor::operator()(parser::code_t const& node) {
  if (!callback || !*callback) return;
  std::string output = (*callback)(node.code, variables);
  if (output.ends_with('\n')) output.pop_back();
  result += output;
}

void expand_visitor::replace(std::string const& source, regexp::pattern_t const& pattern,
                             parser::nodes_t const& format, bool repeat) {
  regex::valid_utf8 const text(source);
  std::size_t at = 0;
  while (matches_ < max_matches && result.size() < max_size) {
    auto const match = regexp::search(pattern, text, at);
    if (!match) break;
    ++matches_;
    result.append(source, at, match.begin() - at);
    auto captures = match.captures();
    captures.insert(variables.begin(), variables.end());
    variables.swap(captures);
    traverse(format);
    variables.swap(captures);
    at = match.end();
    if (!repeat) break;
    if (match.begin() != match.end()) continue;
    if (at == source.size()) break;
    // On by a character, as a search can't begin within one.
    std::size_t const length = text.length_at(at);
    result.append(source, at, length);
    at += length;
  }
  result.append(source, at);
}

void expand_visitor::handle_case_changes() {
  using namespace parser::case_change;
  case_changes.emplace_back(result.size(), none);
  std::string out;
  std::size_t at = 0;
  auto state = none;
  for (auto const& [position, type] : case_changes) {
    std::string_view segment = std::string_view(result).substr(at, position - at);
    auto const convert = [&](std::string_view part, bool to_upper) {
      out += to_upper ? unicode::uppercase(part) : unicode::lowercase(part);
    };
    if (state == upper || state == lower) {
      convert(segment, state == upper);
    } else if (state != none) {
      auto const first = *diacritics::begin_of(segment.data(), segment.data() + segment.size());
      convert(first, state == upper_next);
      out += segment.substr(first.size());
    } else {
      out += segment;
    }
    at = position;
    state = type;
  }
  result = std::move(out);
  case_changes.clear();
}

std::string expand_visitor::capitalize(std::string const& text) {
  static regexp::pattern_t const pattern("^(\\s+)?(\\w+)|\\b(\\w{4,}|\\w+\\s*$)");
  static format_string::format_string_t const format("${1:?$1\\u$2:\\u$0}");
  return format_string::replace(unicode::lowercase(text), pattern, format, true, {});
}

namespace {

/// Without the marks that stand on letters: the C library's tables for them depend on the locale.
std::string without_marks(std::string const& text) {
  UErrorCode status = U_ZERO_ERROR;
  auto const* const decomposition = icu::Normalizer2::getNFDInstance(status);
  if (U_FAILURE(status)) return text;
  auto const units =
      decomposition->normalize(icu::UnicodeString::fromUTF8(icu::StringPiece(text)), status);
  if (U_FAILURE(status)) return text;
  icu::UnicodeString kept;
  for (int i = 0; i < units.length(); i = units.moveIndex32(i, 1)) {
    UChar32 const c = units.char32At(i);
    if (!unicode::is_combining(static_cast<char32_t>(c))) kept.append(c);
  }
  std::string result;
  return kept.toUTF8String(result);
}

}  // namespace

std::string expand_visitor::asciify(std::string const& text) {
  if (!plist::is_utf8(text)) return text;
  std::string source = without_marks(text);
  iconv_t const converter = iconv_open("ASCII//TRANSLIT", "UTF-8");
  if (converter == reinterpret_cast<iconv_t>(-1)) return text;
  std::string out(256, '\0');
  std::size_t used = 0, left = source.size();
  char* in = source.data();
  bool done = true;
  while (left > 0) {
    if (out.size() - used < 256) out.resize(out.size() * 2);
    char* to = out.data() + used;
    std::size_t room = out.size() - used;
    std::size_t const before = left;
    std::size_t const converted = iconv(converter, &in, &left, &to, &room);
    used = out.size() - room;
    if (converted != static_cast<std::size_t>(-1) || errno == E2BIG) continue;
    if (errno == EINVAL && left < before) continue;
    done = false;
    break;
  }
  iconv_close(converter);
  return done ? out.substr(0, used) : text;
}

}  // namespace snippet
