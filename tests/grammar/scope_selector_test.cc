#include "grammar/scope_selector.h"

#include "grammar/selector_set.h"

#include "data_rows.h"

namespace {

std::vector<std::string> words(std::string const& text) {
  std::istringstream in(text);
  return {std::istream_iterator<std::string>(in), {}};
}

double score(std::string const& selector, std::string const& scopes) {
  return scope::new_score_for_selector(selector, words(scopes));
}

TEST(scope_selector, weighs_length_and_distance) {
  EXPECT_DOUBLE_EQ(score("source string", "source.ruby string.quoted"),
                   7.0 / 15 + 1.0 / 16 * 7.0 / 13);
  EXPECT_DOUBLE_EQ(score("a b", "a x b"), 2.0 / 3 + 1.0 / 4 / 4 * 2.0 / 3);
  EXPECT_GT(score("string.quoted", "string.quoted.double"),
            score("string", "string.quoted.double"));
  EXPECT_GT(score("string", "source.c string.quoted"), score("source", "source.c string.quoted"));
}

TEST(scope_selector, operators) {
  for (auto const& row : data_rows("scope_selectors.txt", "operators"))
    EXPECT_DOUBLE_EQ(score(row[0], row[1]), score(row[2], row[3])) << row[0];
  EXPECT_GT(score("a b", "a b"), score("a & b", "a b"));
}

TEST(scope_selector, applies_everywhere_with_the_least_score) {
  for (char const* selector : {"", " ", "-a", "()", "|", ",", "- x - y"}) {
    EXPECT_EQ(score(selector, "b"), 0.0) << selector;
    EXPECT_EQ(score(selector, ""), 0.0) << selector;
  }
}

TEST(scope_selector, does_not_apply) {
  testing::internal::CaptureStderr();
  for (auto const& row : data_rows("scope_selectors.txt", "others"))
    EXPECT_EQ(score(row[0], row[1]), -1.0) << row[0];
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Quirnote: invalid scope selector (a, b)\nQuirnote: invalid scope selector (a\n"
            "Quirnote: invalid scope selector \\x01\n"
            "Quirnote: invalid scope selector a \\x02\n");
}

TEST(scope_selector, takes_any_length_and_depth) {
  EXPECT_DOUBLE_EQ(score("b" + repeated("|a", 100000), "a"), score("a", "a"));
  errors_of([&] {
    EXPECT_EQ(score(std::string(100000, '(') + "a" + std::string(100000, ')'), "a"), -1.0);
  });
  EXPECT_DOUBLE_EQ(score(std::string(200, '(') + "a" + std::string(200, ')'), "a"),
                   score("a", "a"));
}

// Selectors and paths of few and similar names, so that they match often.
TEST(selector_set, scores_along_a_path_as_each_selector_by_itself) {
  std::mt19937 random(7);
  auto const any = [&](std::size_t n) {
    return std::uniform_int_distribution<std::size_t>(0, n - 1)(random);
  };
  auto const name = [&] {
    std::string result(1, "ab"[any(2)]);
    while (any(2) == 0) result += std::string(".") + "ab"[any(2)];
    return result;
  };
  std::vector<std::string> selectors{""};
  std::vector<std::shared_ptr<scope::selector_node const>> parsed;
  while (selectors.size() < 300) {
    std::string selector = name();
    for (std::size_t n = any(5); n > 0; --n) {
      char const* const operators[] = {" ", " ", " ", " - ", " & ", " | ", ", "};
      selector += operators[any(7)] + name();
    }
    selectors.push_back(selector);
  }
  for (std::string const& selector : selectors) parsed.push_back(scope::known_selector(selector));
  scope::selector_set set(parsed);
  for (int path = 0; path < 50; ++path) {
    std::vector<std::string> scopes;
    scope::selector_set::state at;
    while (any(20) != 0) {
      scopes.push_back(name());
      set.enter(scopes.back(), at);
      scope::selector_set::scores const scores(set, at);
      for (std::size_t i = 0; i < selectors.size(); ++i)
        ASSERT_EQ(scores.of(i), scope::new_score_for_selector(selectors[i], scopes))
            << selectors[i] << " for " << testing::PrintToString(scopes);
    }
  }
}

}  // namespace
