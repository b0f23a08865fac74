#pragma once

#include <memory>
#include <string>
#include <vector>

#include "regex/first_units.h"
#include "regex/nfa_node.h"
#include "regex/parser.h"

namespace regex {

template <class Iterator>
class visit_nfa;

/// A compiled pattern, of whatever units it was written in. Immutable once made.
struct nfa_graph {
  std::vector<std::unique_ptr<graph::nfa_node>> nodes;
  graph::nfa_node const* start = nullptr;
  unsigned group_count = 1;  // the whole match and the captures, at most `max_groups`
  unsigned counter_count = 0;
  regex::first_units first_units;
};

/// To be called when all else of the graph is made.
first_units find_first_units(nfa_graph const& pattern);

/// One node a line: its number, what it is, and where it leads. For tests and reports of faults.
std::string dump(nfa_graph const& pattern);

/// A compiled pattern. Any pattern compiles; see `parser` on what is wrong in one. It may be used
/// from several threads at once, and is neither copied nor moved. `T` is `char` or `char16_t`; the
/// text that is searched may be of either. The units of a `char` pattern stand for the values 0 to
/// 255.
template <class T>
class nfa {
 public:
  template <class Iterator>
  using visit_nfa = regex::visit_nfa<Iterator>;

  explicit nfa(T const* pattern);
  nfa(T const* first, T const* last) { setup(first, last); }
  nfa(nfa const&) = delete;
  nfa& operator=(nfa const&) = delete;

  nfa_graph const& graph() const { return graph_; }

 private:
  void setup(T const* first, T const* last);
  nfa_graph graph_;
};

extern template class nfa<char>;
extern template class nfa<char16_t>;

}  // namespace regex
