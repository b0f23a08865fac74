#include <algorithm>
#include <cstdlib>
#include <set>

#include "grammar/back_references.h"
#include "grammar/rule.h"
#include "platform/log.h"

namespace grammar {
namespace {

/// How deep rules may nest in each other; property lists themselves are limited likewise.
constexpr int max_depth = 512;

class reader {
 public:
  explicit reader(std::string const& item) : item_(item) {}

  std::unique_ptr<rule> read(plist::value const& content, std::string const& place, int depth) {
    if (!content.as_dictionary()) {
      tell(place, "rule is not of proper type (expected key/value dictionaryKeys)");
      return nullptr;
    }
    if (depth > max_depth) {
      tell(place, "nested too deeply");
      return nullptr;
    }
    auto made = std::make_unique<rule>();
    made->name = string(content, "name", place);
    made->scope_name = string(content, "scopeName", place);
    std::string content_name = string(content, "contentName", place);
    if (content["contentName"].as_string()) made->content_name = std::move(content_name);
    made->include = string(content, "include", place);
    if (!made->include.empty()) made->place = item_ + ": " + place + "include";
    read_patterns(content, place, *made);
    made->apply_end_pattern_last = flag(content, "applyEndPatternLast", place);
    made->apply_end_pattern_first = flag(content, "applyEndPatternFirst", place);
    made->disabled = flag(content, "disabled", place);
    made->begin_captures = captures(content, "beginCaptures", place);
    made->end_captures = captures(content, "endCaptures", place);
    if (auto const* const rules = list(content, "patterns", place)) {
      made->has_patterns = true;
      for (std::size_t i = 0; i < rules->size(); ++i)
        made->patterns.push_back(
            read((*rules)[i], place + "patterns[" + std::to_string(i) + "].", depth + 1));
    }
    if (auto const* const rules = entries(content, "repository", place))
      for (auto const& [name, value] : *rules)
        made->repository.emplace(name, read(value, place + "repository." + name + ".", depth + 1));
    return made;
  }

 private:
  // Once, although captures may be read twice. `key` may end with the dot for what it holds.
  void tell(std::string key, char const* reason) const {
    if (key.ends_with('.')) key.pop_back();
    if (told_.insert(key).second) platform::log(item_ + ": " + key + ": " + reason);
  }

  void wrong_type(std::string const& key, char const* wanted, std::string const& place) const {
    tell(place + key, ("value for the '" + key + "'-key must be " + wanted).c_str());
  }

  std::string string(plist::value const& content, char const* key, std::string const& place) const {
    plist::value const& value = content[key];
    if (auto const* const text = value.as_string()) return *text;
    if (value) wrong_type(key, "a string", place);
    return {};
  }

  bool flag(plist::value const& content, char const* key, std::string const& place) const {
    plist::value const& value = content[key];
    if (value && value.integer_or(0) != value.integer_or(1)) wrong_type(key, "a number", place);
    return value.integer_or(0) != 0;
  }

  plist::array const* list(plist::value const& content, char const* key,
                           std::string const& place) const {
    plist::value const& value = content[key];
    if (value && !value.as_array()) wrong_type(key, "an array", place);
    return value.as_array();
  }

  plist::dictionary const* entries(plist::value const& content, char const* key,
                                   std::string const& place) const {
    plist::value const& value = content[key];
    if (value && !value.as_dictionary()) wrong_type(key, "a key/value dictionary", place);
    return value.as_dictionary();
  }

  void read_patterns(plist::value const& content, std::string const& place, rule& made) const {
    struct {
      char const* key;
      lazy_pattern& pattern;
    } const keys[] = {
        {"match", made.match}, {"begin", made.begin}, {"end", made.end}, {"swallow", made.swallow}};
    for (auto const& [key, pattern] : keys) {
      if (!content[key]) continue;
      if (!content[key].as_string())
        wrong_type(key, "a string", place);
      else
        pattern.set(*content[key].as_string(), made.name, item_ + ": " + place + key);
    }
    made.has_back_references =
        made.begin.is_set() && made.end.is_set() && has_back_references(made.end.source());
  }

  std::vector<capture> captures(plist::value const& content, char const* key,
                                std::string const& place) const {
    std::vector<capture> made;
    if (!content[key]) key = "captures";
    auto const* const named = entries(content, key, place);
    if (named == nullptr) return made;
    for (auto const& [group, value] : *named) {
      std::string const here = place + key + "." + group + ".";
      if (!value.as_dictionary())
        tell(here, "rule is not of proper type (expected key/value dictionaryKeys)");
      long const number = std::strtol(group.c_str(), nullptr, 10);
      made.push_back(
          {static_cast<int>(std::clamp(number, -1L, 1L << 20)), string(value, "name", here)});
    }
    std::stable_sort(made.begin(), made.end(),
                     [](capture const& a, capture const& b) { return a.group < b.group; });
    return made;
  }

  std::string const& item_;
  mutable std::set<std::string> told_;
};

}  // namespace

std::unique_ptr<rule> read_grammar(plist::value const& content, std::string const& item) {
  auto made = reader(item).read(content, "", 0);
  return made ? std::move(made) : std::make_unique<rule>();
}

}  // namespace grammar
