#include "regex/nfa.h"

#include <string_view>

#include "regex/build_nfa_visitor.h"

namespace regex {

template <class T>
nfa<T>::nfa(T const* pattern) {
  std::basic_string_view<T> const text(pattern);
  setup(text.data(), text.data() + text.size());
}

template <class T>
void nfa<T>::setup(T const* first, T const* last) {
  parser<T> parsed;
  parsed.parse(first, last);
  build_nfa_visitor(graph_).build_pattern(parsed.list());
  graph_.first_units = find_first_units(graph_);
}

template class nfa<char>;
template class nfa<char16_t>;

}  // namespace regex
