#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "grammar/pattern.h"
#include "grammar/rule.h"
#include "grammar/rule_filter.h"

namespace grammar {

struct rule_set;

/// A pattern to look for in an open region.
struct wanted {
  enum class kind { opening, end, swallow };

  kind type;
  rule const* owner;
  rule const* base;             ///< the grammar in which the owner's references are looked up
  std::vector<unsigned> steps;  ///< from the region's path to the owner's
  pattern const* nfa;           ///< null for an end pattern that is among the references
  lazy_pattern const* named;    ///< for messages
  rule_set* opened = nullptr;   ///< the rules within the region that it opens, once known

  bool needs_groups = true;  ///< groups of its matches are needed

  void find_needs();
  /// Whether it has to be searched for, instead of being tried where the filter says so.
  bool is_sought() const { return nfa == nullptr || nfa->depends_on_start(); }

  /// What is known from the text at work, a line or the part of it that is to be seen.
  struct attempts {
    unsigned text = 0;  ///< its number; what follows is of no use if it is another
    unsigned failed = 0;
    std::uint32_t next = 0;  ///< after many failures: where the next match begins
    bool given_up = false;
  } tried = {};
  unsigned given_up = 0;  ///< on so many lines
};

/// The patterns to look for in one kind of region, in the order in which they win.
struct rule_set {
  std::vector<wanted> rules;
  std::vector<std::uint16_t> sought;
  std::unique_ptr<rule_filter> filter;  ///< for the others
  /// The end pattern if it goes before all rules of the regions within; it isn't in `rules`.
  std::optional<wanted> first_end;
  std::unique_ptr<rule_filter> first_end_filter;  ///< null if it has to be searched for
};

/// Finds out which rules a region has: its end pattern and what it includes. Each kind of region,
/// that is a rule with the grammar to which it belongs, is collected when it is first asked for.
class rule_sets {
 public:
  rule_sets(catalogue const& all_rules, rule const* root) : all_rules_(all_rules), root_(root) {}

  /// Stays where it is as long as this lives.
  rule_set& of(rule const& owner, rule const& base);

 private:
  using region_key = std::pair<rule const*, rule const*>;

  void collect(std::vector<wanted>& rules, region_key const& of, std::vector<unsigned> steps);
  bool may_collect(region_key const& group, rule const& entry) const;
  void collect_end(std::vector<wanted>& rules, region_key const& of);
  static std::optional<wanted> end_of(region_key const& of);
  static void find_first_end(rule_set& set, region_key const& of);

  catalogue const& all_rules_;
  rule const* root_;
  std::map<region_key, rule_set> sets_;
  std::set<region_key> collected_;           ///< a group that comes again adds nothing
  std::vector<region_key> being_collected_;  ///< outermost first
};

}  // namespace grammar
