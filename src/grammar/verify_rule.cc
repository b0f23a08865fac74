#include "grammar/verify_rule.h"

#include "grammar/back_references.h"
#include "grammar/pattern.h"
#include "platform/utf.h"

namespace grammar {
namespace {

using fault = std::optional<std::string>;

/// How deep rules may nest; property lists from files are limited likewise.
constexpr int max_depth = 512;

fault verify_keys(plist::value const& rule) {
  if (rule["match"] && rule["patterns"]) return "a match-rule cannot have sub-patterns";
  if (rule["begin"] && rule["match"]) return "rule cannot have both begin and match key";
  if (rule["begin"] && !rule["end"]) return "begin/end-rule has no end-pattern";
  if (rule["swallow"] && !rule["begin"])
    return "swallow pattern can only be used with begin/end-rules";
  if (rule["applyEndPatternFirst"] && !rule["begin"])
    return "applyEndPatternFirst can only be used with begin/end-rules";
  return {};
}

fault verify_types(plist::value const& rule) {
  auto const wrong = [](char const* key, char const* wanted) {
    return "value for the '" + std::string(key) + "'-key must be " + wanted;
  };
  for (char const* key : {"name", "contentName", "begin", "end", "match", "swallow", "include"})
    if (rule[key] && !rule[key].as_string()) return wrong(key, "a string");
  if (rule["patterns"] && !rule["patterns"].as_array()) return wrong("patterns", "an array");
  for (char const* key : {"captures", "beginCaptures", "endCaptures", "repository"})
    if (rule[key] && !rule[key].as_dictionary()) return wrong(key, "a key/value dictionary");
  return {};
}

fault verify_patterns(plist::value const& rule) {
  for (char const* key : {"begin", "end", "match", "swallow"}) {
    if (!rule[key]) continue;
    std::string const text = rule[key].string_or("");
    std::u16string source = unicode::to_utf16(text);
    // The groups are known only when `begin` has matched.
    if (std::string_view(key) == "end" && has_back_references(text))
      source = expand_back_references(source, {}, {});
    std::string reason;
    if (!pattern::compile(std::move(source), reason))
      return "invalid regular expression for '" + std::string(key) + "'-key (" + reason + ")";
  }
  return {};
}

fault verify(plist::value const& rule, int depth) {
  if (!rule.as_dictionary() || depth > max_depth)
    return "rule is not of proper type (expected key/value dictionaryKeys)";
  for (auto const check : {verify_keys, verify_types, verify_patterns})
    if (fault found = check(rule)) return found;
  for (plist::value const& child : rule["patterns"].elements())
    if (fault found = verify(child, depth + 1)) return found;
  for (char const* key : {"captures", "beginCaptures", "endCaptures", "repository"})
    for (auto const& [name, child] : rule[key].entries())
      if (fault found = verify(child, depth + 1)) return found;
  return {};
}

}  // namespace

std::optional<std::string> verify_rule(plist::value const& rule) {
  return verify(rule, 0);
}

std::optional<std::string> verify_rules(plist::array const& rules) {
  for (plist::value const& rule : rules)
    if (fault found = verify(rule, 0)) return found;
  return {};
}

}  // namespace grammar
