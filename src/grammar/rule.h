#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "grammar/pattern.h"
#include "plist/value.h"

/// Language grammars: trees of rules with patterns and scope names, read from property lists.
namespace grammar {

class catalogue;

/// A pattern of a rule, compiled when it is first asked for. One that is invalid is reported on
/// standard error, once, and matches nothing from then on. Any thread.
class lazy_pattern {
 public:
  /// `owner` and `key` are for the message: the rule's name, and the item with the key's place.
  void set(std::string source, std::string owner, std::string key);
  bool is_set() const { return is_set_; }
  std::string const& source() const { return source_; }
  /// Null when there is none or it is invalid.
  pattern const* get() const;
  /// Says once that searching with it was given up, or that it matched nothing at a place where
  /// that would never end, or that as many regions are open as can be, or that what its
  /// references stand for makes no pattern.
  void tell_given_up() const;
  void tell_zero_width() const;
  void tell_too_deep() const;
  void tell_invalid(std::string const& expanded, std::string const& reason) const;

 private:
  void tell(std::once_flag& told, std::string const& fault) const;

  std::string source_, owner_, key_;
  bool is_set_ = false;
  mutable std::once_flag compiled_, given_up_, zero_width_, too_deep_, invalid_;
  mutable std::unique_ptr<pattern const> pattern_;
};

/// The scope of a group of a match.
struct capture {
  int group = 0;
  std::string name;  ///< empty for none
};

/// A rule of a grammar. Members are named for the keys of its dictionary; what is absent is empty.
/// Immutable but for the patterns; owned by its grammar, and that by a catalogue. Any thread.
struct rule {
  std::string name, scope_name, include;
  std::optional<std::string> content_name;
  std::string place;  ///< item and place of an `include`, for messages
  lazy_pattern match, begin, end, swallow;
  bool has_back_references = false;  ///< `end` refers to groups of `begin`
  bool apply_end_pattern_last = false;
  /// `end` also goes before all rules of the regions within, and closes these too.
  bool apply_end_pattern_first = false;
  bool disabled = false;
  bool has_patterns = false;                    ///< the key is there, perhaps with an empty list
  std::vector<std::unique_ptr<rule>> patterns;  ///< null for an entry that is no rule
  std::vector<capture> begin_captures;          ///< by group number; also those of `match`
  std::vector<capture> end_captures;
  std::map<std::string, std::unique_ptr<rule>, std::less<>> repository;

  bool has_content_name() const { return content_name.has_value(); }
  /// What the rule adds to a list of scopes.
  std::string const& scope() const { return scope_name.empty() ? name : scope_name; }
  /// What opens a region or is matched, or null.
  lazy_pattern const* opening() const;
};

/// Number of children, in this order: patterns, begin captures, end captures, and one for a content
/// name. The process ends for a rule without any: it can't be descended into.
unsigned modulo_for_rule(rule const& rule);
/// Whether `index` is that of the rule's content name.
bool is_content_name(rule const& rule, unsigned index);
/// The capture that child `index` is: after the patterns, and not the content name.
capture const& capture_at_index(rule const& rule, unsigned index);
/// The pattern that child `index` is, with what it includes found; null when it is none or refers
/// to nothing. `root` is the view's grammar, `base` the one that the rule belongs to. `new_base` is
/// set when the child is a grammar or a group of patterns that was included: the base of what is in
/// it.
rule const* rule_at_index(rule const& rule, unsigned index, catalogue const& all_rules,
                          struct rule const* root, struct rule const* base,
                          struct rule const*& new_base);

/// Reads a grammar. Values of a wrong type are reported on standard error with `item`, and ignored.
std::unique_ptr<rule> read_grammar(plist::value const& content, std::string const& item);

/// All grammars that there are, in their order. Each is read when it is first needed, perhaps on a
/// tokenizer's thread. Any thread.
class catalogue {
 public:
  struct entry {
    std::string scope_name, name;
    std::string item;                       ///< bundle and file, for messages
    std::function<plist::value()> content;  ///< called once, on any thread
  };
  static constexpr unsigned none = ~0u;

  explicit catalogue(std::vector<entry> entries);

  std::size_t size() const { return entries_.size(); }
  /// A grammar by its index.
  rule const& root(unsigned index) const;
  /// The first one with that scope name or name.
  unsigned index_named(std::string_view name) const;
  /// The grammar of that scope name or name; null, reported once with `place`, if there is none.
  rule const* rule_named(std::string_view name, std::string const& place) const;
  /// Says once what is wrong with the reference that `place` names.
  void tell(std::string const& place, std::string const& fault) const;

 private:
  std::vector<entry> entries_;
  mutable std::recursive_mutex mutex_;
  mutable std::vector<std::unique_ptr<rule>> roots_;
  mutable std::set<std::string> told_;
};

}  // namespace grammar
