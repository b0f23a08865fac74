#include <string>

#include "regex/nfa.h"
#include "regex/parse.h"

namespace regex {

using namespace graph;

namespace {

class dump_visitor {
 public:
  std::string line(nfa_node const& n) {
    line_ = std::to_string(n.index) + " ";
    accept(n, *this);
    if (n.next) lead("", n.next);
    return line_ + "\n";
  }

  void visit(literal_node const& n) { say("literal '" + printable(n.unit) + "'", n.reverse); }
  void visit(class_node const& n) { say("class", n.code, n.negate, n.reverse); }
  void visit(range_node const& n) {
    std::string units;
    for (unit_t u = u' '; u < 127; ++u) {
      if (n.set.has_always(u)) units += static_cast<char>(u);
    }
    say(std::string("range ") + (n.negate ? "not " : "") + units, n.reverse);
  }
  void visit(anchor_node const& n) { say("anchor " + number(n.code), false); }
  void visit(backreference_node const& n) { say("backreference " + number(n.group), n.reverse); }
  void visit(repeat_node const& n) {
    std::string const max = n.max == repeat_data::no_limit ? "" : number(n.max);
    say("repeat " + number(n.min) + "," + max + (n.greedy ? "" : " lazy"), n.reverse);
    line_ += n.single ? " single" : " counter " + number(n.counter);
    lead("content ", n.content);
    if (n.follow) lead("follow ", n.follow);
  }
  void visit(or_node const& n) {
    say("or", false);
    lead("other ", n.other);
  }
  void visit(capture_begin_node const& n) { say("capture_begin " + number(n.group), n.reverse); }
  void visit(capture_end_node const& n) { say("capture_end " + number(n.group), n.reverse); }
  void visit(look_around_node const& n) {
    say("look_around " + number(n.type), false);
    lead("content ", n.content);
  }
  void visit(no_backtrack_node const& n) {
    say("no_backtrack", false);
    lead("content ", n.content);
  }
  void visit(recursion_begin_node const& n) {
    say("recursion_begin", n.reverse);
    lead("end ", n.end);
  }
  void visit(recursion_end_node const&) { say("recursion_end", false); }
  void visit(change_flag_node const& n) {
    say("change_flag " + number(n.flag) + (n.value ? " on" : " off"), false);
  }
  void visit(condition_node const& n) {
    say("condition " + number(n.group), false);
    lead("other ", n.other);
  }
  void visit(final_node const& n) {
    say("final", false);
    if (n.owner) lead("of ", n.owner);
  }

 private:
  template <class Number>
  static std::string number(Number n) {
    return std::to_string(static_cast<unsigned>(n));
  }
  void say(std::string const& what, bool reverse) { line_ += what + (reverse ? " reverse" : ""); }
  void say(std::string const& what, unit_class code, bool negate, bool reverse) {
    say(what + (negate ? " not " : " ") + number(code), reverse);
  }
  void lead(std::string const& how, nfa_node const* n) { line_ += " -> " + how + number(n->index); }

  std::string line_;
};

}  // namespace

std::string dump(nfa_graph const& pattern) {
  std::string result = "start -> " + std::to_string(pattern.start->index) + "\n";
  dump_visitor visitor;
  for (auto const& node : pattern.nodes) result += visitor.line(*node);
  return result;
}

}  // namespace regex
