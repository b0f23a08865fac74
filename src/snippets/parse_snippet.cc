#include "snippets/parse_snippet.h"

#include <antlr/ANTLRException.hpp>
#include <antlr/ASTFactory.hpp>

#include "plist/UnicharInputBuffer.h"
#include "plist/sibling_list_node.h"
#include "snippet_lexer.hpp"
#include "snippet_parser.hpp"
#include "snippets/tree_walker.h"

namespace snippet {
namespace {

/// Hands the tree to `use` while it lives; false, with the reason in `fault`, if there is none.
template <typename Use>
bool with_tree(std::string const& text, std::string& fault, Use use) try {
  plist::UnicharInputBuffer input(text.data(), text.data() + text.size());
  snippet_lexer lexer(input);
  snippet_parser parser(lexer);
  antlr::ASTFactory factory("sibling_list_node", plist::sibling_list_node::make);
  parser.initializeASTFactory(factory);
  parser.setASTFactory(&factory);
  parser.snippet();
  use(parser.getAST());
  return true;
} catch (antlr::ANTLRException const& e) {
  fault = e.toString();
  return false;
}

}  // namespace

std::unique_ptr<snippet_t> parse(std::string const& text, parse_options const& options,
                                 std::string& fault, std::vector<std::string>& warnings) {
  std::unique_ptr<snippet_t> result;
  with_tree(text, fault, [&](antlr::RefAST const& tree) {
    tree_walker walker(options, warnings);
    if (walker.walk(tree))
      result = walker.snippet();
    else
      fault = "more than " + std::to_string(max_stops) + " fields";
  });
  if (result != nullptr && !result->fault().empty()) warnings.push_back(result->fault());
  return result;
}

bool validate(std::string const& text, std::string& fault) {
  return with_tree(text, fault, [](antlr::RefAST const&) {});
}

}  // namespace snippet
