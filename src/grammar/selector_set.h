#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "grammar/scope_selector.h"

namespace scope {

/// Many selectors that are scored together. What the scopes further out contribute to a score
/// follows from the state there, so that a scope costs what it adds itself, however deep it stands:
/// a state has the scores of all chains of selector parts that match so far.
///
///     selector_set::state at;  // outside of all scopes
///     for (std::string const& name : scopes) set.enter(name, at);
///     double const score = selector_set::scores(set, at).of(n);
///
/// The scores are those of new_score_for_selector() to the last bit. One thread at a time.
class selector_set {
 public:
  /// A chain of parts that matches, and its score.
  struct partial {
    std::uint32_t chain;
    double score;
  };
  using state = std::vector<partial>;  ///< sorted by chain

  /// The scores in one state. The set must outlive it.
  class scores {
   public:
    scores(selector_set const& set, state const& at);
    /// Negative where the selector doesn't apply.
    double of(std::size_t selector) const { return of(set_.selectors_[selector]); }

   private:
    friend class selector_set;
    struct expression {
      int type;
      std::uint32_t chain;  ///< of a descent
      std::vector<expression> children;
    };
    double of(expression const& node) const;

    selector_set const& set_;
    std::vector<double> chains_;
  };

  /// Null selectors apply nowhere.
  explicit selector_set(std::vector<std::shared_ptr<selector_node const>> const& selectors);

  /// Goes into a scope.
  void enter(std::string_view scope, state& at);

 private:
  /// Parts from the outer to the inner. Selectors that begin alike share their chains; number 0 is
  /// the empty one.
  struct chain {
    std::uint32_t before;  ///< the chain without the last part
    std::uint32_t length;  ///< of the last part
  };
  using expression = scores::expression;
  expression compiled(selector_node const& node);
  std::vector<std::uint32_t> const& chains_ending_on(std::string_view scope);

  std::vector<chain> chains_{{0, 0}};
  std::map<std::pair<std::uint32_t, std::string>, std::uint32_t> following_;
  std::unordered_map<std::string, std::vector<std::uint32_t>> chains_by_part_;
  std::unordered_map<std::string, std::vector<std::uint32_t>> chains_by_scope_;
  std::vector<expression> selectors_;
  state entered_;
};

}  // namespace scope
