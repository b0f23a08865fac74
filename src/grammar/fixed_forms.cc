#include "grammar/fixed_forms.h"

#include <algorithm>

namespace grammar {
namespace {

constexpr std::size_t max_forms = 24;
constexpr unsigned max_repeat = 3;

using type = pattern_tree::type;

}  // namespace

fixed_forms fixed_forms::of(std::u16string_view pattern) {
  fixed_forms made;
  auto const tree = pattern_tree::parse(pattern);
  std::vector<form> forms(1);
  if (!tree || !expand(*tree, forms)) return made;
  auto const has_units = [](form const& f) {
    return std::any_of(f.begin(), f.end(), [](element const& e) { return e.kind == type::units; });
  };
  if (std::all_of(forms.begin(), forms.end(), has_units)) made.forms_ = std::move(forms);
  return made;
}

// Appends what the tree can match to each form, in the order in which it is tried.
bool fixed_forms::expand(pattern_tree const& tree, std::vector<form>& forms) {
  switch (tree.kind) {
    case type::units:
      if (!tree.exact) return false;
      [[fallthrough]];
    case type::word_boundary:
    case type::not_word_boundary:
      for (form& f : forms) f.push_back({tree.kind, tree.set});
      return true;
    case type::sequence:
      return std::all_of(tree.parts.begin(), tree.parts.end(),
                         [&](pattern_tree const& part) { return expand(part, forms); });
    case type::alternatives: {
      std::vector<form> made;
      for (form const& begin : forms) {
        for (pattern_tree const& part : tree.parts) {
          std::vector<form> longer(1, begin);
          if (!expand(part, longer) || made.size() + longer.size() > max_forms) return false;
          made.insert(made.end(), longer.begin(), longer.end());
        }
      }
      forms = std::move(made);
      return true;
    }
    case type::repeat: {
      if (!tree.greedy || tree.most > max_repeat) return false;
      std::vector<form> made;
      for (form const& begin : forms) {
        for (unsigned times = tree.most + 1; times-- > tree.least;) {
          std::vector<form> longer(1, begin);
          for (unsigned i = 0; i < times; ++i)
            if (!expand(tree.parts[0], longer)) return false;
          // Where the part has choices, fewer times may go before another choice.
          if (longer.size() > 1 && tree.most > 1) return false;
          if (made.size() + longer.size() > max_forms) return false;
          made.insert(made.end(), longer.begin(), longer.end());
        }
      }
      forms = std::move(made);
      return true;
    }
    default:
      return false;
  }
}

fixed_forms::result fixed_forms::match(std::u16string_view line, std::size_t at,
                                       std::size_t& size) const {
  for (form const& f : forms_) {
    result const found = match(f, line, at, size);
    if (found != result::no) return found;
  }
  return result::no;
}

fixed_forms::result fixed_forms::match(form const& form, std::u16string_view line, std::size_t at,
                                       std::size_t& size) {
  static symbol_set const words = symbol_set::words();
  std::size_t const begin = at;
  for (element const& e : form) {
    unsigned const symbol = at < line.size() ? symbol_set::symbol(line[at]) : symbol_set::end;
    if (symbol == symbol_set::other) return result::unknown;
    if (e.kind == type::units) {
      if (!e.set.has(symbol)) return result::no;
      ++at;
      continue;
    }
    if (at > 0 && line[at - 1] >= 128) return result::unknown;
    bool const is_boundary = (at > 0 && words.has(line[at - 1])) != words.has(symbol);
    if (is_boundary != (e.kind == type::word_boundary)) return result::no;
  }
  size = at - begin;
  return result::yes;
}

}  // namespace grammar
