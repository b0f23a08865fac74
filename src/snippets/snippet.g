// The text of snippets. Characters are the bytes of UTF-8. The parser builds a list of nodes, with
// the content of placeholders and the parts of substitutions as subtrees.
header "post_include_hpp" {
#include <cstddef>
}

options {
  language = "Cpp";
  namespace = "snippet";
  namespaceStd = "std";
  namespaceAntlr = "antlr";
  genHashLines = false;
}

class snippet_parser extends Parser;
options {
  buildAST = true;
  defaultErrorHandler = false;
  exportVocab = snippet;
}

// In the order of their numbers, from 4 on.
tokens {
  TAB; LF; TEXT; CODE; VARIABLE; VARIABLE_COMPLEX; RBRACE = "'}'"; VARIABLE_REPLACE;
  REGEXP = "regexp"; REGEXP_OPTIONS = "regexp options"; TAB_STOP; PLACEHOLDER; REPLACE;
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

// All of the text: what stops the rule below at the end of a placeholder must not stop here.
snippet : startRule EOF! ;

startRule : ( code | variable | placeholder | text | tab | newline )* ;

code : CODE ;

variable
  : VARIABLE
  | { enter(); } VARIABLE_COMPLEX^ no_placeholder RBRACE! { leave(); }
  | VARIABLE_REPLACE^ REGEXP REGEXP REGEXP_OPTIONS RBRACE!
  ;

placeholder
  : TAB_STOP
  | { enter(); } PLACEHOLDER^ startRule RBRACE! { leave(); }
  | REPLACE^ REGEXP REGEXP REGEXP_OPTIONS RBRACE!
  ;

no_placeholder : ( variable | text | tab | newline )* ;

text : TEXT ;

tab : TAB ;

newline : LF ;

class snippet_lexer extends Lexer;
options {
  k = 3;
  charVocabulary = '\0'..'\377';
  defaultErrorHandler = false;
  testLiterals = false;
  importVocab = snippet;
}

{
 private:
  // The "${..." that are open: within one '}' means something.
  std::size_t match_brace = 0;
  // The parts between slashes that are still to come.
  std::size_t match_regexp = 0;

  // What a number or name in braces turns out to be by what follows it.
  int braced(int alone, int with_content, int with_regexp, int next) {
    if (next == '}') return alone;
    ++match_brace;
    if (next == ':') return with_content;
    match_regexp += 3;
    return with_regexp;
  }
}

TAB : '\t' ;

// Before another line feed it is text: empty lines get no indentation.
LF : '\n' { if (LA(1) == '\n') $setType(TEXT); } ;

CODE : '`'! ( CODE_CHAR )* '`'! ;

protected CODE_CHAR
  : ( '\\' ( '`' | '\\' ) )=> '\\'! ( '`' | '\\' )
  | ~( '`' )
  ;

TAB_STOP
  : '$'! DIGIT
  | '$'! ID { $setType(VARIABLE); }
  | '$'! '{'! DIGIT
    { $setType(braced(TAB_STOP, PLACEHOLDER, REPLACE, LA(1))); }
    ( '}'! | ':'! | ( '/' )=> )
  | '$'! '{'! ID
    { $setType(braced(VARIABLE, VARIABLE_COMPLEX, VARIABLE_REPLACE, LA(1))); }
    ( '}'! | ':'! | ( '/' )=> )
  ;

RBRACE
  : '}'
    {
      if (match_brace > 0)
        --match_brace;
      else
        $setType(TEXT);
    }
  ;

REGEXP
  : '/'
    ( { match_regexp > 1 }? { --match_regexp; text.erase(_begin, 1); } ( REGEXP_CHAR )*
    | { match_regexp == 1 }?
      { --match_regexp; text.erase(_begin, 1); $setType(REGEXP_OPTIONS); } ( ~( '}' ) )*
    | { $setType(TEXT); }
    )
  ;

protected REGEXP_CHAR
  : ( '\\' '/' )=> '\\'! '/'
  | ( '\\' '\\' )=> '\\' '\\'
  | ~( '/' )
  ;

TEXT : ( ~( '\t' | '\n' | '$' | '`' | '\\' | '}' | '/' ) )+ ;

ESCAPE
  : '\\'
    ( ( '\t' | '\n' | '$' | '\\' | '`' ) { text.erase(_begin, 1); }
    | '}' { if (match_brace > 0) text.erase(_begin, 1); }
    | '/'
    |
    )
    { $setType(TEXT); }
  ;

protected ID : ( 'a'..'z' | 'A'..'Z' | '_' ) ( 'a'..'z' | 'A'..'Z' | '0'..'9' | '_' )* ;

protected DIGIT : ( '0'..'9' )+ ;
