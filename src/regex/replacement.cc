#include "regex/replacement.h"

#include <antlr/ANTLRException.hpp>
#include <antlr/ASTFactory.hpp>
#include <cstdlib>

#include "onig_fmtTokenTypes.hpp"
#include "onig_fmt_lexer.hpp"
#include "onig_fmt_parser.hpp"
#include "plist/UnicharInputBuffer.h"
#include "plist/sibling_list_node.h"

namespace regex {
namespace {

using token = onig::onig_fmtTokenTypes;
using kind = replacement_node::kind;

static_assert(token::TRUE_BRANCH == 4 && token::TEXT == 12 && token::RBRACKET == 16 &&
              token::TAB == 19);

/// A number of too many digits is one that no pattern has.
unsigned number_of(std::string const& digits) {
  auto const n = std::strtoul(digits.c_str(), nullptr, 10);
  return n < 0x7fff'ffff ? static_cast<unsigned>(n) : 0x7fff'ffff;
}

replacement convert(antlr::RefAST node);

replacement_node convert_condition(antlr::RefAST const& node) {
  replacement_node result{kind::condition, {}, number_of(node->getText()), {}, {}};
  antlr::RefAST const yes = node->getFirstChild();
  result.if_set = convert(yes->getFirstChild());
  if (antlr::RefAST const no = yes->getNextSibling()) {
    result.if_not_set = convert(no->getFirstChild());
  }
  return result;
}

replacement_node convert_one(antlr::RefAST const& node) {
  switch (node->getType()) {
    case token::UPPERCASE:
      return {kind::case_mode, {}, upper, {}, {}};
    case token::LOWERCASE:
      return {kind::case_mode, {}, lower, {}, {}};
    case token::NORMALCASE:
      return {kind::case_mode, {}, as_is, {}, {}};
    case token::UPCASE_NEXT:
      return {kind::next_char_case, {}, upper, {}, {}};
    case token::DOWNCASE_NEXT:
      return {kind::next_char_case, {}, lower, {}, {}};
    case token::NEWLINE:
      return {kind::newline, {}, 0, {}, {}};
    case token::CAPTURE:
      return {kind::capture, {}, number_of(node->getText()), {}, {}};
    case token::CONDITION:
      return convert_condition(node);
    default:
      return {kind::text, node->getText(), 0, {}, {}};
  }
}

/// The node and its siblings after it. Characters are joined to runs.
replacement convert(antlr::RefAST node) {
  replacement result;
  for (; node; node = node->getNextSibling()) {
    replacement_node next = convert_one(node);
    if (next.what == kind::text && !result.empty() && result.back().what == kind::text) {
      result.back().text += next.text;
    } else {
      result.push_back(std::move(next));
    }
  }
  return result;
}

}  // namespace

std::unique_ptr<replacement const> parse_replacement(std::string_view text) try {
  plist::UnicharInputBuffer input(text.data(), text.data() + text.size());
  onig::onig_fmt_lexer lexer(input);
  onig::onig_fmt_parser parser(lexer);
  antlr::ASTFactory factory("sibling_list_node", plist::sibling_list_node::make);
  parser.initializeASTFactory(factory);
  parser.setASTFactory(&factory);
  parser.startRule();
  return std::make_unique<replacement const>(convert(parser.getAST()));
} catch (antlr::ANTLRException const&) {
  return nullptr;
}

void replacement_visitor::visit(replacement const& nodes) {
  for (replacement_node const& node : nodes) {
    switch (node.what) {
      case kind::text:
        put_text(node.text);
        break;
      case kind::newline:
        flush();
        put_newline();
        break;
      case kind::case_mode:
        flush();
        case_mode = node.number;
        break;
      case kind::next_char_case:
        flush();
        next_char_case = node.number;
        break;
      case kind::capture:
        if (is_set(node.number)) put_group(node.number);
        break;
      case kind::condition:
        visit(is_set(node.number) ? node.if_set : node.if_not_set);
        break;
    }
  }
}

}  // namespace regex
