// Scope selectors: which scopes something applies to. From the operator that binds least:
//   a, b    either; only outside parentheses      a - b   a, where b doesn't apply
//   a & b   both                                  a | b   either
//   a b     b somewhere inside a
// Any operand may be empty. The actions build a tree of our own, since the counts of the runtime's
// nodes are not atomic, and one without a level for each operator of a chain.
header "post_include_hpp" {
#include "grammar/scope_selector.h"
}

options {
  language = "Cpp";
  namespace = "scope";
  namespaceStd = "std";
  namespaceAntlr = "antlr";
  genHashLines = false;
}

class scope_parser extends Parser;
options {
  defaultErrorHandler = false;
  exportVocab = scope_selector;
}
tokens {
  DESCENT;
}

{
 private:
  // The parser recurses, so a selector decides how much stack it takes.
  static constexpr int max_depth = 256;
  int depth_ = 0;

  void enter() {
    if (++depth_ > max_depth) throw antlr::RecognitionException("nested too deeply");
  }
  void leave() { --depth_; }

  // Adds an operand to the chain of one operator that `left` is, or begins to be.
  static void append(selector_node& left, int type, selector_node right) {
    if (left.type != type) {
      selector_node chain;
      chain.type = type;
      chain.children.push_back(std::move(left));
      left = std::move(chain);
    }
    left.children.push_back(std::move(right));
  }
}

startRule returns [selector_node node] : node = group ;

group returns [selector_node node]
{ selector_node right; }
  : node = set
    ( COMMA right = set { append(node, selector_node::any_of, std::move(right)); } )* ;

set returns [selector_node node]
{ selector_node right; }
  : node = and_rule
    ( MINUS right = and_rule { append(node, selector_node::difference, std::move(right)); } )* ;

and_rule returns [selector_node node]
{ selector_node right; }
  : node = or_rule
    ( AND right = or_rule { append(node, selector_node::all_of, std::move(right)); } )* ;

or_rule returns [selector_node node]
{ selector_node right; }
  : node = paren
    ( OR right = paren { append(node, selector_node::any_of, std::move(right)); } )* ;

paren returns [selector_node node]
  : LPAREN { enter(); } node = set { leave(); } RPAREN
  | node = scope ;

scope returns [selector_node node]
  : ( part:ID { node.parts.push_back(part->getText()); } )* ;

class scope_lexer extends Lexer;
options {
  charVocabulary = '\3'..'\377';
  defaultErrorHandler = false;
  testLiterals = false;
  importVocab = scope_selector;
}

WS : ( ' ' | '\t' | '\n' ) { $setType(antlr::Token::SKIP); } ;

OR : '|' ;
AND : '&' ;
COMMA : ',' ;
MINUS : '-' ;
LPAREN : '(' ;
RPAREN : ')' ;

ID : ID_START ( ID_START | '-' )* ;

protected ID_START : ~( '\t' | '\n' | ' ' | '&' | '(' | ')' | ',' | '-' | '|' ) ;
