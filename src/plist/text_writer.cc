#include "plist/text_writer.h"

#include <algorithm>

#include "plist/description.h"
#include "plist/key_order.h"
#include "plist/xml_reader.h"

namespace plist {
namespace {

/// Where a value stands. `depth` counts the containers around it.
struct place {
  unsigned indent;
  bool isKey;
  bool isSingleLine;
  int depth;
};

std::string print(value const& v, place at);

std::string IndentString(unsigned n) {
  return std::string(n, '\t');
}

std::string print_array(array const& elements, bool fits, place at) {
  if (elements.empty()) return "( )";
  std::string result;
  if (fits) {
    for (value const& element : elements)
      result += (result.empty() ? "( " : ", ") + print(element, {0, false, true, at.depth + 1});
    return result + " )";
  }
  result = "(\n";
  for (value const& element : elements)
    result += IndentString(at.indent + 1) +
              print(element, {at.indent + 1, false, false, at.depth + 1}) + ",\n";
  return result + IndentString(at.indent) + ")";
}

std::string print_dictionary(dictionary const& entries, bool fits, place at) {
  if (entries.empty()) return "{ }";
  if (fits) {
    auto const& [key, content] = *entries.begin();
    return std::string("{") + (at.isKey || at.isSingleLine ? ' ' : '\t') + PrettyPrintKey(key) +
           " = " + print(content, {0, true, true, at.depth + 1}) + "; }";
  }
  std::string result = at.isKey ? "{\n" + IndentString(at.indent) : "{";
  bool first = true;
  for (std::string const& key : KeySortedArray(entries)) {
    if (!first) result += IndentString(at.indent);
    first = false;
    result += "\t" + PrettyPrintKey(key) + " = " +
              print(entries.at(key), {at.indent + 1, true, false, at.depth + 1}) + ";\n";
  }
  return result + IndentString(at.indent) + "}";
}

std::string print(value const& v, place at) {
  if (auto const* text = v.as_string()) return PrettyPrintString(*text);
  auto const* elements = v.as_array();
  auto const* entries = v.as_dictionary();
  if (!elements && !entries) return description(v);
  if (at.depth >= max_depth) return "<nested too deeply>";
  bool const fits = plistFitsSingleLine(v);
  return elements ? print_array(*elements, fits, at) : print_dictionary(*entries, fits, at);
}

bool is_bare(char c) {
  auto const byte = static_cast<unsigned char>(c);
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '.' || c == '_' || c == '-' ||
         byte >= 0x80;
}

bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

bool is_string(value const& v) {
  return v.kind() == kind::string;
}

}  // namespace

bool plistFitsSingleLine(value const& v) {
  // Only the sole element of a container can decide, so this goes down in a loop.
  for (value const* inner = &v;;) {
    if (auto const* elements = inner->as_array()) {
      if (std::all_of(elements->begin(), elements->end(), is_string)) return true;
      if (elements->size() != 1) return false;
      inner = &elements->front();
    } else if (auto const* entries = inner->as_dictionary()) {
      if (entries->size() != 1) return entries->empty();
      inner = &entries->begin()->second;
    } else {
      return true;
    }
  }
}

std::string PrettyPrintString(std::string const& text) {
  auto const holds = [&](std::string_view part) { return text.find(part) != std::string::npos; };
  bool const awkward = holds("\\\\") || holds("\\\"") || text.ends_with('\\');
  if (holds("'") && !holds("\"") && !awkward) return "\"" + text + "\"";
  std::string result = "'";
  for (char const c : text) {
    if (c == '\'') result += c;
    result += c;
  }
  return result + "'";
}

std::string PrettyPrintKey(std::string const& key) {
  if (std::all_of(key.begin(), key.end(), is_bare)) return key;
  if (std::all_of(key.begin(), key.end(), is_digit)) return key;
  return PrettyPrintString(key);
}

std::string stringWithIndentIsKeyIsSingleLine(value const& v, unsigned indent, bool isKey,
                                              bool isSingleLine) {
  return print(v, {indent, isKey, isSingleLine, 0});
}

std::string PrettyPrintPList(value const& v) {
  return print(v, {0, false, false, 0});
}

}  // namespace plist
