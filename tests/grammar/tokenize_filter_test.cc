#include "grammar/tokenize_filter.h"

#include "grammar/all_grammars.h"
#include "headless/headless_desktop.h"
#include "platform/utf.h"
#include "platform/without_threads.h"
#include "plist/text_reader.h"
#include "test.h"
#include "text/views/view.h"

namespace {

using namespace grammar;

// 0 is C, 1 has regions whose ends repeat their begins.
std::shared_ptr<catalogue const> languages() {
  auto entries = shipped_entries();
  auto const c = std::find_if(entries.begin(), entries.end(),
                              [](auto const& entry) { return entry.scope_name == "source.c"; });
  return std::make_shared<catalogue const>(std::vector<catalogue::entry>{
      *c, entry_of("{scopeName='text.h';patterns=({name=h;begin='(\\w)\\(';end='\\1\\)';"
                   "patterns=({include='$self';});},{name=f;begin='([ab])<';end='\\1>';"
                   "applyEndPatternFirst=1;patterns=({include='$self';});},"
                   "{name=s;begin='\"';end='\"';});}")});
}

void finish(tokenize_filter& filter) {
  ASSERT_TRUE(filter.wait_for(~std::size_t{0}, std::chrono::minutes(2)));
}

void expect_like_fresh(text::storage& storage, tokenize_filter& filter) {
  finish(filter);
  tokenize_filter fresh(storage);
  fresh.set_rules(filter.all_rules(), filter.start_rule());
  finish(fresh);
  std::lock_guard lock(storage.mutex);
  for (std::size_t line = 0; line < storage.lines(); ++line) {
    auto const names = [line](tokenize_filter const& f) {
      std::vector<std::pair<std::uint32_t, bit_stack::storage>> result;
      for (auto const& token : f.tokens(line))
        result.emplace_back(token.column, f.paths()->path(token.path));
      return result;
    };
    ASSERT_EQ(names(filter), names(fresh))
        << line << ": " << unicode::to_utf8(storage.line_units(line));
  }
}

class edited_text : public testing::Test {
 protected:
  edited_text() : view(storage) {
    auto added = std::make_unique<tokenize_filter>(storage);
    filter = added.get();
    view.install_tokenize_filter(std::move(added));
  }

  void fill(std::string const& text) {
    std::u16string const units = unicode::to_utf16(text);
    storage.insert(storage.end(-1), units.begin(), units.end());
  }

  text::iterator random_place() {
    auto const line = static_cast<std::uint32_t>(random() % storage.lines());
    return {line, static_cast<std::uint32_t>(random() % (storage.size(line) + 1)), &storage};
  }

  void edit() {
    static char16_t const* const pieces[] = {u"/*",    u"*/",   u"\"", u"{",    u"}\n",  u"\n",
                                             u"#if x", u"\\\n", u"a(", u"a)",   u"b(\n", u"b)",
                                             u"x",     u"//",   u"a<", u"b<\n", u"a>",   u"b>"};
    text::iterator first = random_place();
    switch (random() % 4) {
      case 0:
        if (storage.undo_index > 1) storage.undo();
        break;
      case 1: {
        text::iterator last = random_place();
        if (last < first) std::swap(first, last);
        if (last.line > first.line + 3) last = storage.end(first.line);
        storage.erase(first, last);
        break;
      }
      default: {
        std::u16string_view const piece = pieces[random() % std::size(pieces)];
        storage.insert(first, piece.begin(), piece.end());
      }
    }
  }

  headless::headless_desktop desktop;
  text::storage storage;
  text::view view;
  tokenize_filter* filter;
  std::mt19937 random{7};
};

TEST_F(edited_text, is_parsed_as_if_it_were_fresh) {
  auto const all = languages();
  fill(content_of("src/grammar/line_parser.cc") + "a(b(\na(a)\nb)\"a)\n\"a)\n");
  for (unsigned language = 0; language < 2; ++language) {
    EXPECT_TRUE(filter->set_rules(all, language));
    EXPECT_FALSE(filter->set_rules(all, language));
    for (int round = 0; round < 60; ++round) {
      for (std::size_t edits = random() % 4; edits-- > 0;) edit();
      if (random() % 2 == 0) finish(*filter);
      edit();
      expect_like_fresh(storage, *filter);
      if (HasFatalFailure()) FAIL() << "language " << language << ", round " << round;
    }
  }
}

TEST_F(edited_text, may_change_while_the_worker_runs) {
  auto const all = languages();
  fill(content_of("src/grammar/line_parser.cc"));
  for (int round = 0; round < 300; ++round) {
    edit();
    if (round % 20 == 0) filter->set_rules(all, static_cast<unsigned>(random() % 3));
    if (round % 7 == 0) filter->graph_path_for_selection(view.selection, round % 2 == 0);
    if (round % 50 == 0) {
      text::view other(storage);
      auto added = std::make_unique<tokenize_filter>(storage);
      added->set_rules(all, 0);
      other.install_tokenize_filter(std::move(added));
      edit();
    }
    desktop.loop().run_for(0);
  }
  filter->set_rules(all, 0);
  expect_like_fresh(storage, *filter);
}

TEST_F(edited_text, is_parsed_while_somebody_waits_when_there_is_no_thread) {
  fill(content_of("src/grammar/line_parser.cc"));
  filter->set_rules(languages(), 0);
  {
    without_threads const none;
    filter->start();
    EXPECT_FALSE(filter->wait_for(storage.lines(), std::chrono::milliseconds(0)));
    EXPECT_TRUE(filter->wait_for(storage.lines(), std::chrono::minutes(1)));
    expect_like_fresh(storage, *filter);
    edit();
  }
  expect_like_fresh(storage, *filter);
}

TEST_F(edited_text, asks_for_what_changed_to_be_drawn) {
  fill("int a;\nint b;\nint c;\n");
  int calls = 0;
  filter->set_reset_display([&] { ++calls; });
  filter->set_rules(languages(), 0);
  finish(*filter);
  desktop.loop().run_for(0);
  EXPECT_GE(calls, 1);
  ASSERT_TRUE(filter->take_redraw_range());
  EXPECT_FALSE(filter->take_redraw_range());
  text::iterator const second(1, 0, &storage);
  std::u16string_view const opening = u"/*";
  storage.insert(second, opening.begin(), opening.end());
  finish(*filter);
  auto const range = filter->take_redraw_range();
  ASSERT_TRUE(range);
  EXPECT_EQ(range->first, 1u);
  EXPECT_EQ(range->second, storage.lines());
}

TEST_F(edited_text, scope_of_a_selection_is_what_its_ends_share) {
  fill("=(\"ab\", 1)");
  filter->set_rules(languages(), 0);
  finish(*filter);
  auto const scope = [&](std::uint32_t first, std::uint32_t last) {
    view.selection.set_caret({&view, {0, first, &storage}});
    view.selection.last_mark = {&view, {0, last, &storage}};
    return filter->scopes(filter->graph_path_for_selection(view.selection, true));
  };
  using names = std::vector<std::string>;
  EXPECT_EQ(scope(4, 4), (names{"source.c", "string.quoted.double.c"}));
  EXPECT_EQ(scope(2, 5), (names{"source.c"}));
  EXPECT_EQ(scope(8, 8), (names{"source.c", "constant.numeric.integer.decimal.c"}));
  EXPECT_EQ(scope(10, 10), (names{"source.c"}));
}

TEST_F(edited_text, main_thread_goes_on_before_slow_text_is_parsed) {
  auto const slow = plist::convert("{patterns=({match='(x+x+)+y';},{match='x*x*x*x*x*x*z';});}");
  std::vector<catalogue::entry> const entries = {{"", "", "slow", [slow] { return slow; }}};
  fill(std::string(3000, 'x') + "\n" + std::string(3000, 'x') + "\n");
  testing::internal::CaptureStderr();
  filter->set_rules(std::make_shared<catalogue const>(entries), 0);
  filter->graph_path_for_selection(view.selection, true);
  // The worker takes seconds for the line, and is still at it.
  EXPECT_FALSE(filter->wait_for(storage.lines(), std::chrono::milliseconds(0)));
  finish(*filter);
  EXPECT_NE(testing::internal::GetCapturedStderr().find("takes too long"), std::string::npos);
}

}  // namespace
