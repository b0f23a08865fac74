// The replacement texts of find and replace and of a snippet's regular expressions. Characters are
// the bytes of UTF-8. The parser builds a list with conditions as subtrees; a run of text is one
// node for each character.
header "post_include_hpp" {
#include <cstddef>
}

options {
  language = "Cpp";
  namespace = "onig";
  namespaceStd = "std";
  namespaceAntlr = "antlr";
  genHashLines = false;
}

class onig_fmt_parser extends Parser;
options {
  buildAST = true;
  defaultErrorHandler = false;
  exportVocab = onig_fmt;
}

// In the order of their numbers, from 4 on.
tokens {
  TRUE_BRANCH; FALSE_BRANCH; UPPERCASE; LOWERCASE; NORMALCASE; NEWLINE; UPCASE_NEXT; DOWNCASE_NEXT;
  TEXT; CAPTURE; CONDITION; OR; RBRACKET; DIGIT; NEWLINE_ESC; TAB;
}

{
 public:
  static constexpr int max_depth = 200;

  // The parser recurses, so a text decides how much stack it takes.
  void enter() {
    if (++depth_ > max_depth)
      throw antlr::RecognitionException("nested too deeply", getFilename(), LT(1)->getLine(),
                                        LT(1)->getColumn());
  }
  void leave() { --depth_; }

 private:
  int depth_ = 0;
}

startRule : ( escape | change_case | text | capture | condition )* ;

escape : UPPERCASE | LOWERCASE | NORMALCASE | NEWLINE ;

change_case : UPCASE_NEXT | DOWNCASE_NEXT ;

text : TEXT ;

capture : CAPTURE ;

condition : { enter(); } CONDITION^ true_branch ( OR! false_branch )? RBRACKET! { leave(); } ;

true_branch : startRule { #true_branch = #([TRUE_BRANCH, "true"], #true_branch); } ;

false_branch : startRule { #false_branch = #([FALSE_BRANCH, "false"], #false_branch); } ;

class onig_fmt_lexer extends Lexer;
options {
  k = 1;
  charVocabulary = '\0'..'\377';
  defaultErrorHandler = false;
  testLiterals = false;
  importVocab = onig_fmt;
}

{
 private:
  // The conditions that are open: within one ':' and ')' mean something.
  std::size_t in_condition = 0;
}

NEWLINE : '\n' ;

CAPTURE : '$' ( DIGIT { text.erase(_begin, 1); } | { $setType(TEXT); } ) ;

CONDITION
  : ( "(?" DIGIT ':' )=> "(?"! DIGIT ':'! { ++in_condition; }
  | '(' { $setType(TEXT); }
  ;

OR : ':' { if (in_condition == 0) $setType(TEXT); } ;

RBRACKET : ')' { if (in_condition > 0) --in_condition; else $setType(TEXT); } ;

TEXT : ~( '\n' | '$' | '(' | ')' | ':' | '\\' ) ;

UPPERCASE
  : '\\'
    ( 'U'
    | 'L' { $setType(LOWERCASE); }
    | 'E' { $setType(NORMALCASE); }
    | 'n' { $setType(NEWLINE); }
    | 'u' { $setType(UPCASE_NEXT); }
    | 'l' { $setType(DOWNCASE_NEXT); }
    | 't' { $setText("\t"); $setType(TEXT); }
    | ( '$' | '(' | '\\' ) { text.erase(_begin, 1); $setType(TEXT); }
    | ( ')' | ':' )
      { if (in_condition > 0) text.erase(_begin, 1); $setType(TEXT); }
    | ~( 'U' | 'L' | 'E' | 'n' | 'u' | 'l' | 't' | '$' | '(' | '\\' | ')' | ':' )
      { $setType(TEXT); }
    )
  ;

protected DIGIT : ( '0'..'9' )+ ;
