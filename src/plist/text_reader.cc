#include "plist/text_reader.h"

#include <antlr/ASTFactory.hpp>
#include <antlr/CommonAST.hpp>
#include <antlr/RecognitionException.hpp>
#include <antlr/TokenStreamRecognitionException.hpp>

#include "plist/UnicharInputBuffer.h"
#include "text_lexer.hpp"
#include "text_parser.hpp"
#include "text_walker.hpp"

namespace plist {
namespace {

/// The runtime's nodes own the sibling behind them, so that freeing a long list would recurse once
/// for each element. This one lets go of its siblings one by one.
class node : public antlr::CommonAST {
 public:
  node() = default;
  node(node const& other) : antlr::CommonAST(other) {}
  ~node() override {
    antlr::RefAST sibling = getNextSibling();
    while (sibling) {
      antlr::RefAST const behind = sibling->getNextSibling();
      sibling->setNextSibling(antlr::nullAST);
      sibling = behind;
    }
  }
  antlr::RefAST clone() const override { return antlr::RefAST(new node(*this)); }
  static antlr::RefAST make() { return antlr::RefAST(new node); }
};

value parse(std::string_view text) {
  UnicharInputBuffer input(text.data(), text.data() + text.size());
  text_lexer lexer(input);
  text_parser parser(lexer);
  antlr::ASTFactory factory("node", node::make);
  parser.initializeASTFactory(factory);
  parser.setASTFactory(&factory);
  parser.startRule();
  return text_walker().item(parser.getAST());
}

// The two exceptions that know the place have no common base that says so.
template <typename E>
dictionary describe(E const& e) {
  return {{"info", e.toString()}, {"line", e.getLine()}, {"column", e.getColumn()}};
}

}  // namespace

value convert(std::string_view text, dictionary* errorOut) {
  dictionary error;
  try {
    return parse(text);
  } catch (antlr::RecognitionException const& e) {
    error = describe(e);
  } catch (antlr::TokenStreamRecognitionException const& e) {
    error = describe(e);
  } catch (antlr::ANTLRException const& e) {
    error = {{"info", e.toString()}};
  } catch (std::exception const& e) {
    error = {{"info", e.what()}};
  }
  if (errorOut) *errorOut = std::move(error);
  return {};
}

}  // namespace plist
