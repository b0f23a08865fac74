#include "bundle_fixture.h"

#include "bundles/check_bundle.h"

// Each fault of a grammar is told with its key and line.
TEST_F(bundle_test, check_bundle_tells_every_fault) {
  put("Bad.qnbundle/info.plist", "{ uuid = B; name = ( ); }");
  put("Bad.qnbundle/Syntaxes/a.plist",
      "{ uuid = L; name = Lang; scopeName = 'source.x'; patterns = ( { match = '(a'; }, "
      "{ include = '#gone'; }, { begin = x; nmae = 1; }, { match = '(x+x+)+y|(a|aa)+$'; }, "
      "{ begin = '(x)'; end = '\\1'; patterns = ( { include = '$self'; }, "
      "{ include = 'source.x'; }, { include = 'source.other'; } ); } ); }");
  put("Bad.qnbundle/Snippets/s.plist", "{ uuid = L; name = x; scope = '(a'; content = x; }");
  std::string told;
  for (auto const& fault : bundles::check_bundle(folder / "Bad.qnbundle", {"source.other"})) {
    EXPECT_GT(fault.line, 0u);
    told += fault.key + ": " + fault.reason.substr(0, 13) + "\n";
  }
  EXPECT_EQ(told,
            "name: is missing\nname: is not a stri\nscope: invalid scope\nuuid: is that of /t\n"
            "patterns.0.match: invalid regul\npatterns.1.include: didn't find r\n"
            "patterns.2.nmae: unknown key\npatterns.2: begin/end-rul\n"
            "patterns.3.match: takes too lon\n");
}
