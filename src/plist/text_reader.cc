#include "plist/text_reader.h"

#include <antlr/ASTFactory.hpp>
#include <antlr/RecognitionException.hpp>
#include <antlr/TokenStreamRecognitionException.hpp>

#include "plist/UnicharInputBuffer.h"
#include "plist/sibling_list_node.h"
#include "text_lexer.hpp"
#include "text_parser.hpp"
#include "text_walker.hpp"

namespace plist {
namespace {

value parse(std::string_view text) {
  UnicharInputBuffer input(text.data(), text.data() + text.size());
  text_lexer lexer(input);
  text_parser parser(lexer);
  antlr::ASTFactory factory("sibling_list_node", sibling_list_node::make);
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
