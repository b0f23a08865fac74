#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "grammar/line_tokens.h"
#include "grammar/rule_set.h"

namespace grammar {

/// The `end` pattern of an open region with what its `begin` matched put in; empty when that is no
/// pattern. Shared by threads; equal when the sources are.
class nfa_wrapper {
 public:
  nfa_wrapper() = default;
  /// With the reason when it is no pattern.
  nfa_wrapper(std::u16string source, std::string& reason);
  pattern const* get() const { return pattern_.get(); }
  friend bool operator==(nfa_wrapper const& a, nfa_wrapper const& b);

 private:
  std::shared_ptr<pattern const> pattern_;
};

/// Those of the open regions that have references, outermost first.
using reference_stack = std::vector<nfa_wrapper>;

/// Finds the tokens of one line after the other. Of the open region's rules, its end pattern and
/// what it includes, the one that matches first wins, and of those that match at one place the one
/// that stands first.
///
/// It goes along the line once. At each place a filter tells which rules may match there, and only
/// those are tried. Rules that a filter can't know, such as ends with references, are searched for
/// when the region is opened, and again when their match has been passed by.
///
/// An end pattern that goes first is searched for when its region is opened or a line begins
/// within. What stands before its match is then all of the line that the rules within get to see,
/// and when they are through with that, it closes its region with all that is still open in there.
/// Such regions nest; without any, they cost nothing.
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
  bool parse_line(std::u16string_view line, bool is_last, line_tokens& tokens,
                  reference_stack& references, std::atomic<bool> const& stop);
  /// Whether the line that is next has one token, of `plain_path`, and ends in the state in which
  /// it begins; sometimes false where that is so. Of `units`, its line feed is left out. Takes a
  /// small part of the time of parsing it.
  bool is_plain(std::u16string_view units);
  /// The path of what stands in the innermost region.
  path_tree::id plain_path();

 private:
  using kind = wanted::kind;
  /// A match of a rule that is searched for.
  struct sought {
    std::uint16_t order;
    pattern const* nfa;
    match_groups match;
  };
  struct region {
    rule const* base;
    path_tree::id path;
    rule const* owner;
    rule_set* rules = nullptr;
    std::vector<sought> found;
    std::vector<std::uint16_t> dropped;  ///< not tried any more on this line
    /// Column, if on this line: as long as the position is still there, opening the same once more
    /// or closing it would never end.
    std::uint32_t opened_at = ~0u;
  };
  /// An open region whose end pattern goes first.
  struct first_end {
    std::size_t depth;       ///< index of the region
    std::size_t references;  ///< number of those of the regions around it
    // Of the line at work:
    bool is_found = false;
    match_groups match = {};
    std::size_t outer_size = 0;  ///< of the line, and the text's number, as the regions around it
    unsigned outer_text = 0;     ///< see them
  };
  /// Remembers children of paths, for asking the tree takes a lock.
  struct known_child {
    std::uint64_t key = ~std::uint64_t{0};
    path_tree::id path = 0;
  };

  path_tree::id child(path_tree::id parent, unsigned index);
  path_tree::id content_path(rule const& owner, path_tree::id path);
  rule_set& rules_of(region& node);
  void apply_rules(region& node);
  bool search(wanted& what, sought& found);
  bool find_next(region& node);
  bool try_at(wanted& what, std::uint32_t at);
  bool can_begin_at(wanted& what, std::uint32_t at);
  void give_up(wanted& what);
  bool is_stopped() const { return stop_->load(std::memory_order_relaxed); }
  void drop_empty();
  void drop_taken();
  void take_end();
  void close_region();
  void search_first_end(first_end& which);
  bool find_first_end(first_end& which);
  bool find_where_filter_says(rule_filter& filter, wanted& what);
  bool take_first_end();
  void take_opening();
  nfa_wrapper expanded_end(rule const& owner);
  bool opened_here(rule const& owner, std::uint32_t position) const;
  void store_path(path_tree::id path, std::vector<capture> const& captures, unsigned base_index);

  std::shared_ptr<catalogue const> all_rules_;
  std::shared_ptr<path_tree> paths_;
  rule_sets rule_sets_;
  std::vector<region> stack_;
  std::vector<first_end> first_ends_;  ///< outermost first
  std::vector<known_child> children_;
  std::unordered_map<std::u16string, nfa_wrapper> expanded_;

  // Of the line at work:
  line_text line_;
  unsigned texts_ = 0;  ///< lines parsed, and parts of lines that were cut off for rules to see
  unsigned text_ = 0;   ///< number of the one at work
  token_list tokens_;
  reference_stack* references_ = nullptr;
  std::atomic<bool> const* stop_ = nullptr;
  std::uint32_t position_ = 0;
  std::size_t depth_ = 0;
  std::uint16_t taken_ = 0;  ///< which of the region's rules matched next
  match_groups match_;       ///< and where
  match_groups searched_;
};

}  // namespace grammar
