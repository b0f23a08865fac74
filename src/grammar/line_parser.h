#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "grammar/line_tokens.h"

namespace grammar {

/// The `end` pattern of an open region with what its `begin` matched put in; empty when that is no
/// pattern. Shared by threads; equal when the sources are.
class nfa_wrapper {
 public:
  nfa_wrapper() = default;
  explicit nfa_wrapper(std::u16string source);
  pattern const* get() const { return pattern_.get(); }
  friend bool operator==(nfa_wrapper const& a, nfa_wrapper const& b);

 private:
  std::shared_ptr<pattern const> pattern_;
};

/// Those of the open regions that have references, outermost first.
using reference_stack = std::vector<nfa_wrapper>;

/// Finds the tokens of one line after the other. Of the open region's rules, its end pattern and
/// what it includes, the one that matches first wins, and of those that match at one place the one
/// that stands first. Each is searched for once and then only when its match has been passed by.
///
/// The whole state between lines is the path of a line's last token and the references.
class line_parser {
 public:
  line_parser(std::shared_ptr<catalogue const> all_rules, unsigned start_rule,
              std::shared_ptr<path_tree> paths);

  /// Opens the regions on a path, innermost last.
  void setup_stack(path_tree::id path);
  /// `line` ends with a line feed unless it is the last one. False, with nothing of use in
  /// `tokens`, when `stop` became true.
  bool parse_line(std::u16string line, bool is_last, line_tokens& tokens,
                  reference_stack& references, std::atomic<bool> const& stop);

 private:
  enum class kind { opening, end, swallow };
  struct order_key {
    std::uint32_t begin;
    unsigned order;
    friend auto operator<=>(order_key const&, order_key const&) = default;
  };
  /// A pattern to search for in a region.
  struct wanted {
    kind type;
    rule const* owner;
    std::vector<unsigned> steps;  ///< from the region's path to the owner's
    pattern const* nfa;           ///< null for an end pattern that is among the references
    lazy_pattern const* named;    ///< for messages
  };
  struct candidate {
    wanted const* what;
    pattern const* nfa;
    match_groups match;
  };
  struct region {
    rule const* base;
    path_tree::id path;
    rule const* owner;
    std::map<order_key, candidate> matches;
    std::uint32_t opened_at = ~0u;  ///< on this line; without text so far while position is there
  };
  using region_key = std::pair<rule const*, rule const*>;  ///< a rule and its base
  using rule_set = std::vector<wanted>;

  path_tree::id content_path(rule const& owner, path_tree::id path) const;
  path_tree::id top_path() const;
  rule_set const& rules_of(region_key const& of);
  void collect(rule_set& rules, region_key const& of, std::vector<unsigned> steps);
  void collect_end(rule_set& rules, rule const& owner);
  void apply_rules(std::uint32_t position, region& node);
  void search(std::uint32_t position, region& node, candidate found, unsigned order);
  void take_end(candidate const& taken);
  void take_opening(std::map<order_key, candidate>::iterator taken);
  bool opened_here(rule const& owner, std::uint32_t position) const;
  void store_path(match_groups const& match, path_tree::id path,
                  std::vector<capture> const& captures, unsigned base_index);
  void tell_zero_width(rule const& owner);

  std::shared_ptr<catalogue const> all_rules_;
  rule const* root_;
  std::shared_ptr<path_tree> paths_;
  std::vector<region> stack_;
  std::set<rule const*> told_;
  std::map<region_key, rule_set> rule_sets_;
  std::set<region_key> collected_;  ///< guards against groups that include themselves

  // Of the line at work:
  line_text line_;
  line_tokens* tokens_ = nullptr;
  reference_stack* references_ = nullptr;
  std::uint32_t position_ = 0;
  std::size_t depth_ = 0;
};

}  // namespace grammar
