#include "grammar/line_parser.h"

#include <gtest/gtest.h>

#include "grammar/all_grammars.h"
#include "platform/utf.h"

namespace {

using namespace grammar;

std::shared_ptr<catalogue const> catalogue_of(std::vector<char const*> const& texts) {
  std::vector<catalogue::entry> entries;
  for (char const* text : texts) entries.push_back(entry_of(text));
  return std::make_shared<catalogue const>(std::move(entries));
}

// "column:scope scope" for each token, those of a line joined by " | ". Also proves that the path
// and the references at a line's end are all that the next line needs.
std::string scopes_of(std::vector<char const*> const& grammars, std::string const& text) {
  auto const all_rules = catalogue_of(grammars);
  auto const paths = std::make_shared<path_tree>(*all_rules, 0);
  line_parser parser(all_rules, 0, paths);
  reference_stack references;
  std::atomic<bool> const stop = false;
  std::u16string rest = unicode::to_utf16(text);
  std::string out;
  path_tree::id state = 0;
  for (bool is_last = false; !is_last;) {
    std::size_t const end = rest.find(u'\n');
    is_last = end == std::u16string::npos;
    std::u16string const line = rest.substr(0, is_last ? end : end + 1);
    rest.erase(0, line.size());
    line_tokens tokens, again;
    reference_stack old_references = references;
    line_parser resumed(all_rules, 0, paths);
    resumed.setup_stack(state);
    parser.parse_line(line, is_last, tokens, references, stop);
    resumed.parse_line(line, is_last, again, old_references, stop);
    EXPECT_EQ(tokens, again) << out;
    EXPECT_EQ(references, old_references);
    for (auto const& token : tokens) {
      out += (out.empty() || out.ends_with("\n") ? "" : " | ") + std::to_string(token.column) + ":";
      auto const names = paths->scopes(token.path);
      EXPECT_EQ(names, expand_bit_stack(paths->path(token.path), *all_rules, 0));
      for (auto const& name : names) out += (out.ends_with(":") ? "" : " ") + name;
    }
    out += "\n";
    state = tokens.back().path;
  }
  return out;
}

struct parse_case {
  char const* grammar;
  char const* text;
  char const* tokens;
};

TEST(line_parser, finds_tokens) {
  parse_case const table[] = {
      // The first match wins, and of those at one place the first rule.
      {"{scopeName=r;patterns=({name=one;match='ab';},{name=two;match='a.|b';});}", "abaxb",
       "0:r one | 2:r two | 4:r two | 5:r\n"},
      // A region over lines, with content and captures for both of its ends.
      {"{scopeName=r;patterns=({name=q;contentName=c;begin='<';end='>';"
       "captures={0={name=p;};};});}",
       "a<b\nc>", "0:r | 1:r q p | 2:r q c\n0:r q c | 1:r q p | 2:r\n"},
      // Groups within groups; the numbers sort as numbers.
      {"{scopeName=r;patterns=({name=m;match='(a(b)(x)?)(c)';"
       "captures={1={name=ga;};02={name=gb;};3={name=gc;};4={name=gd;};};});}",
       "abc", "0:r m ga | 1:r m ga gb | 2:r m gd | 3:r\n"},
      // An end that repeats what the begin matched, literally.
      {"{scopeName=r;patterns=({name=h;begin='<<(.+?);';end='^\\1$';});}", "<<a.b;\naxb\na.b\nx",
       "0:r h\n0:r h\n0:r h | 3:r\n0:r\n"},
      {"{scopeName=r;patterns=({name=s;begin='\"';end='\"';swallow='\\\\.';});}", "\"a\\\"b\"c",
       "0:r s | 5:r s | 6:r\n"},
      // The end last: what is inside goes first.
      {"{scopeName=r;patterns=({name=s;begin='<';end='>';applyEndPatternLast=1;"
       "patterns=({name=t;match='>>';});});}",
       "<a>>b>", "0:r s | 2:r s t | 4:r s | 5:r s | 6:r\n"},
      // Groups add no name; a disabled rule is skipped; $self goes round.
      {"{scopeName=r;patterns=({include='#g';},{name=off;match='x';disabled=1;});"
       "repository={g={name=hidden;patterns=({name=b;begin='\\(';end='\\)';"
       "patterns=({include='$self';});},{name=n;match='n';});};};}",
       "(xn(n))", "0:r b | 2:r b n | 3:r b b | 4:r b b n | 5:r b b | 6:r b | 7:r\n"},
      // Only the last line has no line end.
      {"{scopeName=r;patterns=({name=z;match='\\Z';},{name=e;match='a$';});}", "a\na",
       "0:r e | 1:r\n0:r e | 1:r\n"},
      {"{scopeName=r;}", "", "0:r\n"},
  };
  for (auto const& row : table) {
    EXPECT_EQ(scopes_of({row.grammar}, row.text), row.tokens) << row.grammar;
  }
}

TEST(line_parser, includes_other_grammars) {
  char const* const outer =
      "{scopeName=o;patterns=({name=e;begin='<';end='>';patterns=({include='i';});},"
      "{name=x;match='x';});}";
  char const* const inner =
      "{scopeName=i;patterns=({name=p;begin='\\(';end='\\)';patterns=({include='$self';},"
      "{name=b;begin='\\[';end=']';patterns=({include='$base';});});},{name=n;match='n';});}";
  EXPECT_EQ(scopes_of({outer, inner}, "<nx(n[x])>"),
            "0:o e | 1:o e n | 2:o e | 3:o e p | 4:o e p n | 5:o e p b | 6:o e p b x | "
            "7:o e p b | 8:o e p | 9:o e | 10:o\n");
}

// Each is told, costs itself alone and comes to an end.
TEST(line_parser, bad_grammars) {
  char const* const good = "{name=n;match='n';}";
  std::string const bad[] = {"{include='$self';}",
                             "{include='#g';}",
                             "{include='nowhere';}",
                             "{include='#nowhere';}",
                             "{match='(';}",
                             "{begin='(?=n)';end='(?=n)';}",
                             "{begin='';end='';}",
                             "{match='';}",
                             "{begin='';end='x';patterns=({include='$self';});}",
                             "{match=(1);}",
                             "'text'",
                             "7",
                             "{patterns={};captures=1;repository=();name={};}",
                             "{begin='x';}",
                             "{swallow='n';}",
                             "{begin='y';end='\\1(';}",
                             "{match='\\G';}",
                             "{match='(x+x+)+y';}",
                             "{include='r';}",
                             "{match='x';captures={a=1;9999999999={name=q;};'-1'={};};}"};
  for (std::string const& rule : bad) {
    testing::internal::CaptureStderr();
    std::string const grammar = "{scopeName=r;patterns=(" + rule + "," + good +
                                ");repository={g={patterns=({include='#g';},{include='#h';});};"
                                "h={patterns=({include='#g';});};};}";
    std::string const tokens = scopes_of({grammar.c_str()}, "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxn\nn");
    testing::internal::GetCapturedStderr();
    EXPECT_NE(tokens.find(" n"), std::string::npos) << rule << tokens;
  }
}

}  // namespace
