#pragma once

#include <antlr/CommonAST.hpp>

namespace plist {

/// A node of ANTLR trees with long lists in them. The runtime's own nodes own the sibling after
/// them, so that freeing a list would recurse once for each element. This one lets go of its
/// siblings one by one.
class sibling_list_node : public antlr::CommonAST {
 public:
  sibling_list_node() = default;
  sibling_list_node(sibling_list_node const& other) : antlr::CommonAST(other) {}
  ~sibling_list_node() override {
    antlr::RefAST sibling = getNextSibling();
    while (sibling) {
      antlr::RefAST const next = sibling->getNextSibling();
      sibling->setNextSibling(antlr::nullAST);
      sibling = next;
    }
  }
  antlr::RefAST clone() const override { return antlr::RefAST(new sibling_list_node(*this)); }
  static antlr::RefAST make() { return antlr::RefAST(new sibling_list_node); }
};

}  // namespace plist
