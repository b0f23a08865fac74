#include "grammar/rule.h"

#include <cstdlib>

#include "platform/log.h"
#include "platform/utf.h"

namespace grammar {

void lazy_pattern::set(std::string source, std::string owner, std::string key) {
  source_ = std::move(source);
  owner_ = owner.empty() ? "Anonymous rule" : "Rule name \"" + owner + "\"";
  key_ = std::move(key);
  is_set_ = true;
}

namespace {

// As much of a pattern as a line of a log should hold.
std::string shortened(std::string const& pattern) {
  constexpr std::size_t longest = 200;
  if (pattern.size() <= longest) return pattern;
  std::size_t end = longest;
  while ((pattern[end] & 0xC0) == 0x80) --end;
  return pattern.substr(0, end) + "\u2026";
}

}  // namespace

pattern const* lazy_pattern::get() const {
  if (!is_set_) return nullptr;
  std::call_once(compiled_, [this] {
    std::string reason;
    pattern_ = pattern::compile(unicode::to_utf16(source_), reason);
    if (!pattern_) tell_invalid(source_, reason);
  });
  return pattern_.get();
}

void lazy_pattern::tell(std::once_flag& told, std::string const& fault) const {
  std::call_once(told, [&] { platform::log(fault + "\n" + owner_ + "\n" + key_); });
}

void lazy_pattern::tell_given_up() const {
  tell(given_up_, "gave up a match that takes too long");
}

void lazy_pattern::tell_zero_width() const {
  tell(zero_width_, "zero width match " + shortened(source_));
}

void lazy_pattern::tell_too_deep() const {
  tell(too_deep_, "too many regions in one another: no more is opened by " + shortened(source_));
}

void lazy_pattern::tell_invalid(std::string const& expanded, std::string const& reason) const {
  std::call_once(invalid_, [&] {
    platform::log_text("Quirnote regular expression error\n" + owner_ + "\nError: " + reason +
                       " for pattern " + shortened(expanded) + "\n" + key_ + "\n");
  });
}

lazy_pattern const* rule::opening() const {
  if (begin.get()) return &begin;
  return match.get() ? &match : nullptr;
}

unsigned modulo_for_rule(rule const& rule) {
  std::size_t const count = rule.patterns.size() + rule.begin_captures.size() +
                            rule.end_captures.size() + (rule.has_content_name() ? 1 : 0);
  if (count == 0) {
    platform::log_text("can't descend into rule: " + rule.scope() + "\n");
    std::exit(-1);
  }
  return static_cast<unsigned>(count);
}

bool is_content_name(rule const& rule, unsigned index) {
  return rule.has_content_name() && index + 1 == modulo_for_rule(rule);
}

capture const& capture_at_index(rule const& rule, unsigned index) {
  std::size_t at = index - rule.patterns.size();
  if (at < rule.begin_captures.size()) return rule.begin_captures[at];
  at -= rule.begin_captures.size();
  if (at < rule.end_captures.size()) return rule.end_captures[at];
  platform::log_text("patterns " + std::to_string(rule.patterns.size()) + ", index " +
                     std::to_string(index) + ", captures " +
                     std::to_string(rule.end_captures.size()) + ", idx " + std::to_string(at) +
                     ", rule " + rule.scope() + "\n");
  std::exit(-1);
}

rule const* rule_at_index(rule const& rule, unsigned index, catalogue const& all_rules,
                          struct rule const* root, struct rule const* base,
                          struct rule const*& new_base) {
  struct rule const* const entry = rule.patterns[index].get();
  if (entry == nullptr || entry->include.empty()) return entry;
  std::string const& include = entry->include;
  if (include[0] == '$') {
    if (include != "$self" && include != "$base") {
      all_rules.tell(entry->place, "didn't find rule " + include);
      return entry;
    }
    return new_base = include == "$self" ? base : root;
  }
  if (include[0] == '#') {
    auto const found = base->repository.find(std::string_view(include).substr(1));
    if (found == base->repository.end() || !found->second) {
      all_rules.tell(entry->place, "didn't find rule " + include);
      return nullptr;
    }
    struct rule const* const named = found->second.get();
    if (!named->match.is_set() && !named->begin.is_set() && named->has_patterns) new_base = base;
    return named;
  }
  struct rule const* const grammar = all_rules.rule_named(include, entry->place);
  if (grammar) new_base = grammar;
  return grammar;
}

catalogue::catalogue(std::vector<entry> entries)
    : entries_(std::move(entries)), roots_(entries_.size()) {}

rule const& catalogue::root(unsigned index) const {
  std::lock_guard lock(mutex_);
  auto& root = roots_[index];
  if (!root) root = read_grammar(entries_[index].content(), entries_[index].item);
  return *root;
}

unsigned catalogue::index_named(std::string_view name) const {
  for (std::size_t i = 0; i < entries_.size(); ++i)
    if (entries_[i].scope_name == name || entries_[i].name == name) return static_cast<unsigned>(i);
  return none;
}

rule const* catalogue::rule_named(std::string_view name, std::string const& place) const {
  unsigned const index = index_named(name);
  if (index != none) return &root(index);
  tell(place, "didn't find rule named " + std::string(name));
  return nullptr;
}

void catalogue::tell(std::string const& place, std::string const& fault) const {
  std::lock_guard lock(mutex_);
  if (told_.insert(place).second) platform::log(place + ": " + fault);
}

}  // namespace grammar
