#include "actions/action_fixture.h"
#include "headless/headless_desktop.h"
#include "source_tree.h"
#include "test.h"
#include "text/marked_text.h"

namespace {

/// A case of data/actions.txt. A walk has the drawing of its stops in `before` and no `after`.
struct drawn_case {
  std::string actions, before, after, modes;
  bool is_walk = true;
};

std::string unescaped(std::string text) {
  for (auto const& [escape, c] : {std::pair("\\n", '\n'), std::pair("\\t", '\t')})
    for (size_t at; (at = text.find(escape)) != text.npos;) text.replace(at, 2, 1, c);
  return text;
}

drawn_case read_case(std::string const& line) {
  constexpr char no_escape = '\0';
  drawn_case row;
  size_t const quote = line.find('"');
  row.actions = line.substr(0, quote - 1);
  std::istringstream rest(line.substr(quote));
  rest >> std::quoted(row.before, '"', no_escape) >> std::ws;
  row.is_walk = rest.peek() != '"';
  if (!row.is_walk) rest >> std::quoted(row.after, '"', no_escape);
  rest >> row.modes;
  row.before = unescaped(row.before);
  row.after = unescaped(row.after);
  return row;
}

/// The text with `|` wherever the caret stops.
std::string walk(action_fixture& fixture, std::string text, std::string const& action) {
  std::erase(text, '|');
  bool const backwards = fixture.run("|" + text, action).starts_with('!');
  text::view& view = fixture.view;
  view.selection.set_caret(backwards ? view.end() : view.begin(0));
  std::vector<text::iterator> stops;
  do stops.push_back(view.selection.current_mark.base);
  while (fixture.actions.perform_action(action + ":", &view) && stops.size() <= text.size());

  std::u16string drawn;
  for (text::iterator at = view.begin(0).base;; ++at) {
    if (std::ranges::count(stops, at) != 0) drawn += u'|';
    if (at == view.end().base) return marked_text::utf8(drawn);
    drawn += *at;
  }
}

}  // namespace

TEST(drawn_actions, have_the_outcomes_of_the_file) {
  headless::headless_desktop desktop;
  std::ifstream file(test_data("actions.txt"));
  int count = 0;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    auto const row = read_case(line);
    action_fixture fixture(row.modes);
    ++count;
    if (row.is_walk)
      EXPECT_EQ(walk(fixture, row.before, row.actions), row.before) << line;
    else
      EXPECT_EQ(fixture.run(row.before, row.actions), row.after) << line;
  }
  EXPECT_GT(count, 100);
}
