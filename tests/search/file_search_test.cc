#include "search/file_search.h"

#include "documents/file_text.h"
#include "path/temporary_folder.h"
#include "platform/own_defaults.h"
#include "platform/utf.h"
#include "search/project_results.h"
#include "search/project_search.h"
#include "test.h"

// Files searched by their bytes against the same files searched as documents.
namespace {

namespace fs = std::filesystem;
using outcome = search::file_result::outcome;

std::atomic<bool> const never = false;

strings printed(search::file_result const& result) {
  strings lines;
  for (auto const& m : result.matches) {
    std::string line = std::to_string(m.first.line) + ":" + std::to_string(m.first.column) + "-" +
                       std::to_string(m.last.line) + ":" + std::to_string(m.last.column) + " @" +
                       std::to_string(m.offset) + "+" + std::to_string(m.length) + " " + m.line;
    for (auto const& [group, range] : m.captures)
      line += " $" + std::to_string(group) + "=" + std::to_string(range.first) + "-" +
              std::to_string(range.second);
    lines.push_back(line);
  }
  return lines;
}

search::file_query query_of(std::string const& sought, bool is_pattern, bool ignore_case,
                            bool whole_words = false) {
  return {.sought = unicode::to_utf16(sought),
          .regular_expression = is_pattern,
          .ignore_case = ignore_case,
          .rules = {.text = {"t"}, .binary = {"b"}, .languages = {}},
          .whole_words = whole_words};
}

struct sought {
  char const* text;
  bool is_pattern;
};
constexpr sought all_sought[] = {
    {"a", false},     {"ab", false},          {"kS", false},    {"\u00e9", false},
    {"b\n", false},   {"\U0001F600a", false}, {"aaa", false},   {"ab", true},
    {"a+b", true},    {"^a", true},           {"b$", true},     {"(a)(b)?", true},
    {"a(?=b)", true}, {"(?<=a)b", true},      {"a.b", true},    {"ab|k", true},
    {"\\Aab", true},  {"b\\z", true},         {"a\\s*b", true}, {"[^a]b", true},
    {"x*", true},     {"\u00e9b?", true},     {"(?i)ab", true}, {"\\bk", true},
    {"ab{2}", true},  {"a\\.b", true},        {"a[]b]", true},  {"(?m:a.b)", true},
    {"k\\b", true},   {"b\\Z", true}};

TEST(file_search, by_bytes_finds_what_a_document_holds) {
  temporary_folder folder;
  strings const pieces = {"a",      "b",      "ab",         "\n", "\r\n", "k",   "S",  "A",
                          "B\n",    "a.b",    "\t",         " ",  "aaa",  "abb", "\n", "\u00e9",
                          "\u212a", "\u017f", "\U0001F600", "\r", "\xff", "]"};
  std::mt19937 random(10);
  for (int n = 0; n < 60; ++n) {
    // Few kinds of pieces, so that all ways of writing a file come.
    std::size_t const kinds = 16 + (n % 4 == 0 ? random() % (pieces.size() - 15) : n % 2 * 4);
    std::string bytes = n % 17 == 0 ? "\xEF\xBB\xBF" : n % 19 == 0 ? "\xFF\xFE" : "";
    for (auto count = random() % 60; count > 0; --count)
      bytes += pieces[random() % std::min(kinds, pieces.size())];
    std::string const path = folder.write("f.t", bytes);
    documents::file_text text;
    ASSERT_FALSE(documents::read_file_text(path, std::nullopt, true, text));
    for (auto const& [sought, is_pattern] : all_sought)
      for (int const options : {0, 1, 2, 3}) {
        bool const ignore_case = options & 1;
        auto query = query_of(sought, is_pattern, ignore_case, options & 2);
        auto const by_bytes = search::file_searcher(query, never).search(path);
        auto const in_text = search::file_searcher(query, never).search(path, text.units.view());
        ASSERT_EQ(printed(by_bytes), printed(in_text))
            << sought << (ignore_case ? " (i) in " : " in ") << testing::PrintToString(bytes);
        query.excerpt = 1 + n % 3;
        std::u16string const units(text.units.view());
        for (auto const& path_or_text : {search::file_searcher(query, never).search(path),
                                         search::file_searcher(query, never).search(path, units)})
          for (auto const& m : path_or_text.matches) {
            std::size_t const from = m.offset - m.first.column + m.line_from;
            ASSERT_EQ(units.substr(from, unicode::to_utf16(m.line).size()),
                      unicode::to_utf16(m.line));
            ASSERT_LE(from, m.offset);
          }
        query.only_count = true;
        ASSERT_EQ(search::file_searcher(query, never).search(path).count, in_text.matches.size())
            << sought;
      }
  }
}

TEST(required_text, stands_in_every_match) {
  struct row {
    char16_t const* pattern;
    char const* text;
  };
  for (auto const& [pattern, text] : {row{u"abc", "abc"},
                                      {u"ab*c", "a"},
                                      {u"ab+c", "ab"},
                                      {u"a|b", ""},
                                      {u"(a|b)cd", "cd"},
                                      {u"x\\(yz", "x(yz"},
                                      {u"\\w+foo", "foo"},
                                      {u"[abc]de", "de"},
                                      {u"[a[bc]]de", "de"},
                                      {u"[]a]de", "de"},
                                      {u"ab{0,2}", "a"},
                                      {u"a{x}", "x}"},
                                      {u"(?i)ab", ""},
                                      {u"(?:ab)?c", "c"},
                                      {u"(?#ab)", ""},
                                      {u"\\x41b", ""},
                                      {u"caf\u00e9s", "caf"},
                                      {u"a)", ""},
                                      {u"ab\\", ""},
                                      {u"[a\\]b]c", "c"},
                                      {u"[^]a]c", "c"},
                                      {u"a?", ""},
                                      {u"", ""}})
    EXPECT_EQ(search::required_text(pattern), text) << unicode::to_utf8(pattern);
  // Random patterns: where one matches, the text is there.
  strings const pieces = {
      "a",   "b",     "ab", "*",   "+",   "?", "|", "(",    ")",   "[", "]",   "^",
      "{1}", "{0,1}", "\\", "(?:", "(?=", ".", "$", "(?i)", "\\w", "-", "\\]", "(?x)"};
  std::mt19937 random(11);
  int tried = 0;
  for (int n = 0; n < 20000; ++n) {
    std::string pattern;
    for (auto count = 1 + random() % 6; count > 0; --count)
      pattern += pieces[random() % pieces.size()];
    std::u16string const source = unicode::to_utf16(pattern);
    std::string const needed = search::required_text(source);
    if (needed.empty()) continue;
    try {
      oniguruma::ptrn_t const ptrn(source.data(), source.data() + source.size(), 0);
      for (char16_t const* text : {u"", u"a", u"b", u"ab", u"ba", u"abab", u"aabb", u"]", u"^a-b",
                                   u"AB", u"{1}", u"bb]", u"a]b"}) {
        std::u16string_view const units = text;
        if (!oniguruma::find(text, 0, static_cast<std::ptrdiff_t>(units.size()), &ptrn)) continue;
        ++tried;
        ASSERT_NE(unicode::to_utf8(units).find(needed), std::string::npos)
            << pattern << " needs " << needed << " in " << unicode::to_utf8(units);
      }
    } catch (std::invalid_argument const&) {
      // No pattern.
    }
  }
  EXPECT_GT(tried, 1000);
}

TEST(byte_search, finds_each_place) {
  std::mt19937 random(12);
  for (int n = 0; n < 3000; ++n) {
    std::string text, sought;
    for (auto count = random() % 300; count > 0; --count) text += "aAbBz"[random() % 5];
    for (auto count = 1 + random() % 5; count > 0; --count) sought += "aAb"[random() % 3];
    for (bool const ignore_case : {false, true}) {
      auto const lower = [&](std::string s) {
        if (ignore_case) std::transform(s.begin(), s.end(), s.begin(), ::tolower);
        return s;
      };
      search::byte_search const search(sought, ignore_case);
      char const *const first = text.data(), *const last = first + text.size();
      auto const at = static_cast<std::size_t>(search.find(first, last) - first);
      ASSERT_EQ(at, std::min(lower(text).find(lower(sought)), text.size())) << text << sought;
    }
  }
}

class project_search : public testing::Test {
 protected:
  strings run(search::project_search_request request) {
    strings result;
    errors = search::search_project(
        request,
        [&](search::file_result found) {
          outcomes.push_back(found.what);
          if (found.count != 0)
            result.push_back(fs::path(found.path).filename().string() + ":" +
                             std::to_string(found.count));
          if (result.size() == stop_after) cancelled = true;
        },
        cancelled);
    return result;
  }
  search::project_search_request request_for(char const* sought) {
    return {.query = query_of(sought, false, false),
            .roots = {{folder.path(), true, {}}},
            .files = {},
            .open = {}};
  }

  temporary_folder folder;
  std::atomic<bool> cancelled = false;
  std::size_t stop_after = ~std::size_t{0};
  std::vector<outcome> outcomes;
  std::vector<path::file_error> errors;
};

TEST_F(project_search, gives_the_same_with_any_number_of_threads) {
  strings expected;
  for (int n = 0; n < 500; ++n) {
    folder.write("f" + std::to_string(n), repeated("x y\n", n % 7) + std::string(n % 50, ' '));
    if (n % 7) expected.push_back("f" + std::to_string(n) + ":" + std::to_string(n % 7));
  }
  for (unsigned const threads : {1u, 2u, 8u}) {
    auto request = request_for("x");
    request.threads = threads;
    EXPECT_EQ(run(request), expected) << threads;
  }
  auto request = request_for("x");
  request.open[folder / "f0"] = u"xx";
  request.open[folder / "f1"] = u"none";
  expected[0] = "f0:2";
  EXPECT_EQ(run(request), expected);
  stop_after = 3;
  EXPECT_EQ(run(request).size(), 3u);
  cancelled = false;
  EXPECT_THROW(run({.query = query_of("(", true, false), .roots = {}, .files = {}, .open = {}}),
               std::invalid_argument);
}

TEST_F(project_search, leaves_out_what_is_no_text) {
  folder.write("a", "x");
  folder.write("b.b", "x");
  folder.write("c", std::string("x\0", 2));
  folder.write("d.t", std::string("x\0x", 3));
  folder.write("e.t", std::string("\xFF\xFEx\0", 4));
  fs::create_directory(folder / "f");
  fs::permissions(folder / "f", fs::perms::none);
  EXPECT_EQ(run(request_for("x")), strings({"a:1", "d.t:2", "e.t:1"}));
  EXPECT_EQ(outcomes, std::vector({outcome::searched, outcome::binary, outcome::binary,
                                   outcome::searched, outcome::searched}));
  EXPECT_EQ(errors.size(), geteuid() == 0 ? 0u : 1u);
}

TEST(with_replacements, exchanges_each_match) {
  std::u16string const text = u"ab\nxay";
  auto const found =
      search::file_searcher(query_of("(a)(b)?", true, false), never).search("", text);
  struct row {
    char const* replacement;
    bool is_format;
    char16_t const* result;
  };
  for (auto const& [replacement, is_format, result] :
       {row{"<$1$2\\U$0>", true, u"<abAB>\nx<aA>y"}, row{"$1", false, u"$1\nx$1y"}}) {
    search::match_replacement made(replacement, is_format);
    EXPECT_EQ(search::with_replacements(text, found.matches, made), result);
    EXPECT_EQ(made.preview(found.matches[1]), made.expand(text, found.matches[1]));
  }
  EXPECT_TRUE(search::match_replacement("(?1:", true).has_failed());
}

}  // namespace
