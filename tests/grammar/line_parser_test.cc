#include "grammar/line_parser.h"

#include "data_rows.h"
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

TEST(line_parser, finds_tokens) {
  for (auto const& row : data_rows("grammars.txt", "tokens"))
    EXPECT_EQ(scopes_of({row[0].c_str()}, row[1]), row[2]) << row[0];
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
  for (auto const& row : data_rows("grammars.txt", "bad rules")) {
    std::string const &rule = row.at(0), &told = row.at(1);  // in exactly one line
    testing::internal::CaptureStderr();
    std::string const grammar = "{scopeName=r;patterns=(" + rule + "," + good +
                                ");repository={g={patterns=({include='#g';},{include='#h';});};"
                                "h={patterns=({include='#g';});};};}";
    std::string const tokens = scopes_of({grammar.c_str()}, "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxn\nn");
    std::string const said = testing::internal::GetCapturedStderr();
    EXPECT_NE(tokens.find(" n"), std::string::npos) << rule << tokens;
    std::size_t const first = said.find(told);
    EXPECT_NE(first, std::string::npos) << rule << said;
    if (!told.empty()) EXPECT_EQ(said.find(told, first + 1), std::string::npos) << rule << said;
  }
}

// After its share of time, or at once when nobody waits for it any more: a thousand such searches
// would take a quarter of an hour otherwise.
TEST(line_parser, gives_up_a_search) {
  std::string reason;
  auto const slow = pattern::compile(u"x{1,900}x{1,900}y", reason);
  line_text line;
  line.set(std::u16string(4000, u'x'), true);
  match_groups found;
  std::atomic<bool> stop = false;
  EXPECT_EQ(slow->search(line, 0, found, &stop), pattern::result::gave_up);
  stop = true;
  for (int n = 0; n < 1000; ++n)
    ASSERT_EQ(slow->search(line, 0, found, &stop), pattern::result::gave_up);
}

// However deep groups lie in one another, and however many rules a place has.
TEST(line_parser, includes_of_any_depth) {
  std::string groups;
  for (int i = 0; i < 30'000; ++i)
    groups += "'g" + std::to_string(i) + "'={patterns=({include='#g" + std::to_string(i + 1) +
              "';},"
              "{name=n;match='n';});};";
  testing::internal::CaptureStderr();
  std::string const tokens = scopes_of(
      {("{scopeName=r;patterns=({include='#g0';});repository={" + groups + "};}").c_str()}, "n");
  EXPECT_NE(testing::internal::GetCapturedStderr().find("include each other too deeply"),
            std::string::npos);
  EXPECT_EQ(tokens, "0:r n | 1:r\n");
}

}  // namespace
