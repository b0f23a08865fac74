// The text dialect of property lists: strings, integers, arrays and dictionaries. Characters are
// the bytes of UTF-8. The parser builds a tree with the opening brackets as roots, a dictionary's
// children alternate key and value; the walker makes values of it.
header "post_include_hpp" {
#include "plist/utf8.h"
#include "plist/value.h"
#include "plist/xml_reader.h"
}

options {
  language = "Cpp";
  namespace = "plist";
  namespaceStd = "std";
  namespaceAntlr = "antlr";
  genHashLines = false;
}

class text_parser extends Parser;
options {
  k = 2;  // a comma in an array is the trailing one unless an item follows
  buildAST = true;
  defaultErrorHandler = false;
  exportVocab = text_dialect;
}

{
 public:
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

startRule : item EOF! ;

item : string | integer | array | dict ;

string : STRING ;

integer : INTEGER ;

array : { enter(); } LPAREN^ ( item ( COMMA! item )* ( COMMA! )? )? RPAREN! { leave(); } ;

dict : { enter(); } LBRACKET^
       ( ( STRING | INTEGER ) EQUAL! item SEMICOLON! )*
       RBRACKET! { leave(); } ;

class text_lexer extends Lexer;
options {
  k = 2;
  charVocabulary = '\0'..'\377';
  defaultErrorHandler = false;
  testLiterals = false;
  importVocab = text_dialect;
}

{
 private:
  // What can't be written as XML must not get into a value.
  void require_utf8(std::string const& string) {
    if (!is_utf8(string))
      throw antlr::RecognitionException("a string is not UTF-8", getFilename(),
                                        inputState->tokenStartLine, inputState->tokenStartColumn);
  }
}

STRING
options { paraphrase = "a string"; }
  : ( ID
    | '\''! ( '\'' '\''! | '\n' { newline(); } | ~( '\'' | '\n' ) )* '\''!
    | '"'! ( ESCAPE | '\n' { newline(); } | ~( '"' | '\\' | '\n' ) )* '"'!
    )
    { require_utf8($getText); }
  ;

INTEGER : ( '0'..'9' )+ ;

LPAREN
options { paraphrase = "'('"; }
  : '(' ;

COMMA
options { paraphrase = "','"; }
  : ',' ;

RPAREN
options { paraphrase = "')'"; }
  : ')' ;

LBRACKET
options { paraphrase = "'{'"; }
  : '{' ;

EQUAL
options { paraphrase = "'='"; }
  : '=' ;

SEMICOLON
options { paraphrase = "';'"; }
  : ';' ;

RBRACKET
options { paraphrase = "'}'"; }
  : '}' ;

protected NEWLINE : '\n' { newline(); } ;

WS : ( ' ' | '\t' | NEWLINE ) { $setType(antlr::Token::SKIP); } ;

CMT_1 : "//" ( ~'\n' )* { $setType(antlr::Token::SKIP); } ;

CMT_2
  : "/*" ( options { greedy = false; } : NEWLINE | ~'\n' )* "*/"
    { $setType(antlr::Token::SKIP); }
  ;

protected ID : ( '-' | '.' | 'A'..'Z' | '_' | 'a'..'z' | '\200'..'\377' )+ ;

// Before any other byte the backslash stands for itself, and that byte is read on its own. As an
// alternative this would look one byte too far: a text that ends in \" would count as closed.
protected ESCAPE
  : '\\'
    {
      if (LA(1) == '"' || LA(1) == '\\') {
        text.erase(_begin);
        consume();
      }
    }
  ;

class text_walker extends TreeParser;
options {
  defaultErrorHandler = false;
  importVocab = text_dialect;
}

{
 private:
  // Saturates: a run of digits that is too long for a number is no error.
  static long long number(std::string const& digits) {
    return std::strtoll(digits.c_str(), nullptr, 10);
  }
}

item returns [plist::value result]
  : s:STRING { result = plist::value(s->getText()); }
  | i:INTEGER { result = plist::value(number(i->getText())); }
  | { plist::array elements; plist::value element; }
    #( LPAREN ( element = item { elements.push_back(std::move(element)); } )* )
    { result = plist::value(std::move(elements)); }
  | { plist::dictionary entries; plist::value content; std::string name; }
    #( LBRACKET
       ( name = key content = item
         { entries.insert_or_assign(std::move(name), std::move(content)); } )* )
    { result = plist::value(std::move(entries)); }
  ;

key returns [std::string name]
  : s:STRING { name = s->getText(); }
  | i:INTEGER { name = i->getText(); }
  ;
