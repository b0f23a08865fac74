#include "grammar/all_grammars.h"
#include "grammar/plain_parser.h"
#include "grammar/rule_filter.h"
#include "platform/utf.h"
#include "test.h"

namespace {

using namespace grammar;

// The line parser against the plain one, line by line.
void expect_like_plain(std::shared_ptr<catalogue const> const& all_rules, std::string const& text,
                       std::string const& what) {
  auto const paths = std::make_shared<path_tree>(*all_rules, 0);
  line_parser parser(all_rules, 0, paths);
  plain_parser plain(*all_rules, *paths);
  reference_stack references;
  std::atomic<bool> const stop = false;
  std::u16string const units = unicode::to_utf16(text);
  for (std::size_t begin = 0, number = 1; begin <= units.size(); ++number) {
    std::size_t const end = std::min(units.find(u'\n', begin), units.size());
    bool const is_last = end == units.size();
    std::u16string const line = units.substr(begin, end - begin + (is_last ? 0 : 1));
    line_tokens tokens;
    path_tree::id const before = parser.plain_path();
    bool const is_plain = !is_last && parser.is_plain(units.substr(begin, line.size() - 1));
    ASSERT_TRUE(parser.parse_line(line, is_last, tokens, references, stop));
    if (is_plain) {
      ASSERT_EQ(tokens, line_tokens(before)) << what << ", line " << number;
      ASSERT_EQ(parser.plain_path(), before) << what << ", line " << number;
    }
    std::vector<token> const expected = plain.parse_line(line, is_last);
    begin = end + 1;
    if (plain.gave_up()) return;
    if (tokens.list().tokens() == expected) continue;
    std::string difference;
    auto const print = [&](std::vector<token> const& list) {
      for (token const t : list) {
        difference += "\n" + std::to_string(t.column) + ":";
        for (auto const& name : paths->scopes(t.path)) difference += " " + name;
        rule const& owner = *paths->at(t.path).owner;
        difference += " of " + owner.begin.source() + owner.match.source() + " #" +
                      std::to_string(t.path) + " in " + std::to_string(paths->at(t.path).parent);
      }
    };
    print(tokens.list().tokens());
    difference += "\nexpected";
    print(expected);
    FAIL() << what << ", line " << number << ": " << unicode::to_utf8(line) << difference;
  }
}

// QUIRNOTE_CORPUS="source.c /usr/include/stdio.h ..." adds files.
TEST(line_parser_model, agrees_on_real_files) {
  std::vector<std::pair<std::string, std::string>> corpora = {
      {"source.c", "src/grammar/line_parser.h"},
      {"source.c++", "src/grammar/line_parser.cc"},
      {"source.c++", "tests/grammar/tokenize_filter_test.cc"},
      {"source.python", "bench/workload.py"}};
  if (char const* const more = std::getenv("QUIRNOTE_CORPUS")) {
    std::istringstream words(more);
    std::string scope;
    words >> scope;
    for (std::string file; words >> file;) corpora.emplace_back(scope, file);
  }
  for (auto const& [scope, file] : corpora) {
    expect_like_plain(shipped_catalogue(scope), content_of(file), file);
    if (HasFatalFailure()) return;
  }
}

// Random grammars and texts over few letters, so that everything meets everything.
class random_source {
 public:
  explicit random_source(unsigned seed) : random_(seed) {}

  unsigned below(unsigned count) { return static_cast<unsigned>(random_() % count); }

  // Without \Z and \z: Oniguruma's search finds them behind a look-behind where its match does not.
  std::string pattern(int depth = 0) {
    static char const* const atoms[] = {
        "a",         "b",       "ab",          "-",        "\\(",         "\\)",
        "[ab]",      "[^a]",    "\\w",         "\\s",      ".",           "\\b",
        "^",         "$",       "\\B",         "a+",       "b*",          "[a-c]{2,3}",
        "(?=a)",     "(?!b)",   "(?<=a)",      "(?<!b)",   "(?<!\\w)",    "\\d",
        "\\W",       "[\\w-]",  "[[:alpha:]]", "é",        "[é-ü]",       "(?i)A",
        "\\p{L}",    "[^\\s(]", "(?~ab)",      "\\h",      "\\A",         "\\x61",
        "a{,2}",     "c??",     "b++",         "(?>a|ab)", "(?x: a b )",  "\\u0062",
        "[a&&[^b]]", "(?i:k)",  "[]a]",        "\\z",      "(?=\\s*\\()", "\\R",
        "[(-]",      "(?!a|b)", "S",           "(?i)ſ",    "a(?#b)*",     "(?x:a (?#\\)) ?)"};
    switch (depth > 3 ? 0 : below(7)) {
      case 0:
      case 1:
      case 2:
        return atoms[below(std::size(atoms))];
      case 3:
        return pattern(depth + 1) + "|" + pattern(depth + 1);
      case 4:
        return "(" + pattern(depth + 1) + ")" + pattern(depth + 1);
      case 5:
        return "(?:" + pattern(depth + 1) + ")" + (below(2) ? "*" : "?") + pattern(depth + 1);
      default:
        return pattern(depth + 1) + pattern(depth + 1);
    }
  }

  std::string quoted() {
    std::string made = "'";
    for (char const c : pattern()) made += c == '\'' ? std::string("''") : std::string(1, c);
    return made + "'";
  }

  std::string captures() {
    return below(2) ? "" : "captures={0={name=c;};1={name=d;};2={name=e;};};";
  }

  std::string rules(int depth) {
    std::string made = "(";
    for (unsigned i = 1 + below(4); i-- > 0;) {
      static char const* const includes[] = {"{include='#g';}", "{include='$self';}",
                                             "{include='#h';}", "{include='$base';}"};
      std::string rule;
      if (below(4) == 0)
        rule = includes[below(std::size(includes))];
      else if (below(2) || depth > 2)
        rule = "{match=" + quoted() + ";" + captures() + "}";
      else
        rule =
            "{begin=" + quoted() + ";end=" + (below(5) ? quoted() : "'\\1a'") + ";" + captures() +
            (below(3) ? "" : "contentName=n;") + (below(4) ? "" : "applyEndPatternLast=1;") +
            (below(4) ? "" : "applyEndPatternFirst=1;") +
            (below(4) ? "" : "swallow=" + quoted() + ";") + "patterns=" + rules(depth + 1) + ";}";
      made += (made.size() > 1 ? "," : "") + rule;
    }
    return made + ")";
  }

  std::string grammar() {
    return "{scopeName=r;patterns=" + rules(0) + ";repository={g={patterns=" + rules(1) +
           ";};h={match=" + quoted() + ";};};}";
  }

  std::string text(unsigned size) {
    static char const* const pieces[] = {"a", "b",  "c", "-", "(", ")",          " ", "\n", "é",
                                         "7", "ab", "K", "s", "K", "\U0001F600", "A", "_"};
    std::string made;
    while (size-- > 0) made += pieces[below(std::size(pieces))];
    return made;
  }

 private:
  std::mt19937 random_;
};

// QUIRNOTE_SEED sets the first seed, QUIRNOTE_ROUNDS how many.
unsigned from_environment(char const* name, unsigned otherwise) {
  char const* const value = std::getenv(name);
  return value ? static_cast<unsigned>(std::strtoul(value, nullptr, 10)) : otherwise;
}

TEST(line_parser_model, agrees_on_random_grammars) {
  unsigned const first = from_environment("QUIRNOTE_SEED", 1);
  unsigned const rounds = from_environment("QUIRNOTE_ROUNDS", 300);
  testing::internal::CaptureStderr();
  for (unsigned seed = first; seed < first + rounds; ++seed) {
    random_source source(seed);
    std::string const grammar = source.grammar();
    auto const all_rules =
        std::make_shared<catalogue const>(std::vector<catalogue::entry>{entry_of(grammar)});
    expect_like_plain(all_rules, source.text(150), "seed " + std::to_string(seed) + " " + grammar);
    if (HasFatalFailure()) break;
  }
  testing::internal::GetCapturedStderr();
}

// Wherever a pattern matches, the filter says that it may; and fixed forms match as the library.
TEST(line_parser_model, filter_lets_all_matches_through) {
  unsigned const first = from_environment("QUIRNOTE_SEED", 1);
  unsigned const rounds = from_environment("QUIRNOTE_ROUNDS", 600);
  for (unsigned seed = first; seed < first + rounds; ++seed) {
    random_source source(seed);
    std::u16string const text = unicode::to_utf16(source.pattern());
    std::string reason;
    auto const compiled = pattern::compile(text, reason);
    if (!compiled || compiled->depends_on_start()) continue;
    rule_filter filter({compiled->source()});
    line_text line;
    std::string subject = source.text(40);
    std::erase(subject, '\n');
    line.set(unicode::to_utf16(subject + "\n"), false);
    for (unsigned at = 0; at <= line.units().size(); ++at) {
      match_groups found;
      auto const result = compiled->match(line, at, false, found);
      if (result == pattern::result::gave_up) break;
      unsigned const end = result == pattern::result::found ? found.end() : 0;
      // With groups it is always the library that answers.
      ASSERT_EQ(compiled->match(line, at, true, found), result)
          << "seed " << seed << " " << unicode::to_utf8(text) << " at " << at << " in " << subject;
      if (result == pattern::result::found)
        ASSERT_EQ(found.end(), end) << "seed " << seed << " " << unicode::to_utf8(text) << " at "
                                    << at << " in " << subject;
      if (result != pattern::result::found) continue;
      ASSERT_EQ(filter.skip(line.units(), at, line.units().size()), at)
          << "seed " << seed << " " << unicode::to_utf8(text) << " in " << subject;
      ASSERT_TRUE(filter.may_match_in(unicode::to_utf16(subject)))
          << "seed " << seed << " " << unicode::to_utf8(text) << " in " << subject;
      ASSERT_FALSE(filter.candidates(line.units(), at).empty())
          << "seed " << seed << " " << unicode::to_utf8(text) << " at " << at << " in " << subject;
    }
  }
}

}  // namespace
