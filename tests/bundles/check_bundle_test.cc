#include "bundle_fixture.h"

#include "bundles/check/check_bundle.h"
#include "test.h"

namespace {

std::string told_about(std::string const& path) {
  std::string told;
  for (auto const& fault : bundles::check_bundle(path, {"source.other"})) {
    EXPECT_GT(fault.line, 0u);
    told += fault.key + ": " + fault.reason.substr(0, 13) + "\n";
  }
  return told;
}

}  // namespace

// Each fault is told with its key and line.
TEST_F(bundle_test, check_bundle_tells_every_fault) {
  put("Bad.qnbundle/info.plist",
      "{ uuid = B; name = ( ); ordering = ( L, gone ); mainMenu = { items = ( M ); submenus = { "
      "M = { items = ( L, N ); }; }; }; }");
  put("Bad.qnbundle/Commands/c.plist",
      "{ uuid = C; name = x; keyEquivalent = '@ab'; mouseGesture = DD; output = nowhere; cmd = x; "
      "}");
  put("Bad.qnbundle/Snippets/s.plist",
      "{ uuid = L; name = x; scope = '(a'; content = '${1:a${1:b}}'; }");
  put("Bad.qnbundle/Snippets/t.plist", "{ uuid = T; name = x; content = 'a $ b'; }");
  put("Bad.qnbundle/Syntaxes/a.plist",
      "{ uuid = L; name = Lang; scopeName = 'source.x'; fileTypes = ( x, ( ) ); foldingStartMarker "
      "= '['; foldingStopMarker = x; patterns = ( { match = '(a'; captures = { a = { }; }; }, "
      "{ include = '#gone'; }, { begin = x; nmae = 1; }, { match = '(x+x+)+y|(a|aa)+$'; }, "
      "{ begin = '(x)'; end = '\\1'; patterns = ( { include = '$self'; }, "
      "{ include = 'source.x'; }, { include = 'source.other'; }, { include = 'source.none'; } ); "
      "} ); repository = { g = { patterns = ( { include = '#h'; } ); }; "
      "h = { patterns = ( { include = '#g'; } ); }; }; }");
  put("Bad.qnbundle/Preferences/p.plist",
      "{ uuid = P; name = x; settings = { completions = x; foreground = red; increaseIndentPattern "
      "= '('; shellVariables = ( { name = x; } ); smartTypingPairs = ( ( a ) ); "
      "symbolTransformation = 's/(/x/; s/a'; indent = 1; showInSymbolList = ( ); }; }");
  put("Bad.qnbundle/Preferences/q.plist",
      "{ uuid = Q; isDelta = 1; changed = { settings = { bold = x; }; }; deleted = x; }");
  EXPECT_EQ(told_about(folder / "Bad.qnbundle"),
            "name: is missing\nname: is not a stri\n"
            "cmd: unknown key\nkeyEquivalent: is no key\nmouseGesture: is no sequenc\noutput: "
            "cannot be \"no\n"
            "command: is missing\nscope: invalid scope\ncontent: tab stop #1 c\n"
            "content: line 1:3: une\nuuid: is that of s.\n"
            "settings.completions: is not an arr\nsettings.foreground: is no colour \n"
            "settings.increaseIndentPattern: invalid regul\nsettings.indent: unknown key\n"
            "settings.shellVariables.0: is no name wi\nsettings.showInSymbolList: is no number\n"
            "settings.smartTypingPairs.0: is not a pair\n"
            "settings.symbolTransformation: invalid regul\n"
            "deleted: is not an arr\nchanged.settings.bold: is no number\n"
            "fileTypes.1: is not a stri\nfoldingStartMarker: invalid regul\n"
            "patterns.0.captures.a: is no group\npatterns.0.captures.a: has no name\n"
            "patterns.0.match: invalid regul\npatterns.1.include: didn't find r\n"
            "patterns.2.nmae: unknown key\npatterns.2: begin/end-rul\n"
            "patterns.3.match: takes too lon\npatterns.4.patterns.3.include: didn't find r\n"
            "repository.h.patterns.0.include: #g includes i\n"
            "ordering.1: names no item\nmainMenu.submenus.M.items.1: names no item\n");
}

TEST_F(bundle_test, check_bundle_tells_the_faults_of_a_theme) {
  std::string const theme =
      put("x.qnTheme",
          "{ uuid = T; name = x; settings = ( { scope = '('; settings = { background "
          "= '#12345'; fontstyle = bold; }; }, x, { settings = x; } ); }");
  EXPECT_EQ(told_about(theme),
            "settings.0.scope: invalid scope\nsettings.0.settings.background: is no colour \n"
            "settings.0.settings.fontstyle: unknown key\nsettings.1: is no diction\n"
            "settings.2.settings: is not a dict\n");
}
