#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// Scope selectors: short expressions that say in which scopes a colour, a setting, a snippet or a
/// command applies.
///
///     scope::new_score_for_selector("source string - comment", {"source.c", "string.quoted"})
///
/// The score is negative where the selector doesn't apply; of several that do, the highest one is
/// the closest and most specific. The empty selector applies everywhere, with the least score.
namespace scope {

/// Part of a parsed selector. A chain of one operator is one node.
struct selector_node {
  enum : int { descent, any_of, all_of, difference };

  int type = descent;
  std::vector<std::string> parts;       ///< of a descent: from the outer to the inner
  std::vector<selector_node> children;  ///< of an operator, at least two
};

/// Null when it can't be parsed, with the reason. Main thread only; what it returns may be
/// evaluated on any.
std::shared_ptr<selector_node const> parse_selector(std::string_view selector, std::string* reason);

/// Evaluates parsed selectors against one list of scope names, outermost first, which it borrows.
class compare_selector {
 public:
  explicit compare_selector(std::vector<std::string> const& scopes) : scopes_(scopes) {}

  double handle_node(selector_node const& node) const;
  /// Whether `scope` is `selector_part` or begins with it and a dot.
  static bool match_part(std::string_view selector_part, std::string_view scope);

 private:
  using scope_iterator = std::vector<std::string>::const_reverse_iterator;

  double handle_selector(selector_node const& node) const;
  double handle_or(selector_node const& node) const;
  double handle_and(selector_node const& node) const;
  double handle_asymmetric_difference(selector_node const& node) const;
  /// Matches the parts, the last one first, against the scopes from `it` outward.
  static double tail_match(std::vector<std::string> const& parts, scope_iterator it,
                           scope_iterator end);

  std::vector<std::string> const& scopes_;
};

/// The parsed selector, which is kept for good. One that can't be parsed gives null and is reported
/// on standard error, once for each of the places where one stands; `place` is asked for that
/// alone. Main thread only.
std::shared_ptr<selector_node const> known_selector(std::string const& selector,
                                                    std::function<std::string()> const& place = {});

/// The score of a selector against scope names, outermost first. A selector that can't be parsed
/// applies nowhere, and is reported as above. Main thread only.
double new_score_for_selector(std::string const& selector, std::vector<std::string> const& scopes,
                              std::function<std::string()> const& place = {});

}  // namespace scope
