#include "actions/word_units.h"
#include "data_rows.h"
#include "platform/utf.h"
#include "plist/text_reader.h"
#include "textview/shown_view.h"
#include "typing/nearest_words.h"

namespace {

class completion : public shown_view_test {
 protected:
  // Where nobody looks, all is known at once; in a window, slices follow while the user rests.
  std::string after(plist::value const& settings, std::string const& drawing,
                    std::string const& steps, bool seen, bool rests) {
    shown_view view;
    view.host.seen = seen;
    if (settings)
      view.view.setCurrentStyleSheet(plist::array{plist::dictionary{{"settings", settings}}});
    view.set(drawing);
    std::map<char, char const*> const actions = {
        {'n', "nextCompletion:"}, {'p', "previousCompletion:"}, {'u', "undo:"},
        {'y', "redo:"},           {'<', "moveLeft:"},           {'>', "moveRight:"}};
    for (char const step : steps) {
      auto const action = actions.find(step);
      if (action != actions.end())
        view.perform(action->second);
      else
        view.view.insertText(std::u16string(1, static_cast<char16_t>(step)));
      if (rests) desktop_.loop().run_for(1);
    }
    return view.get();
  }

  void expect(plist::value const& settings, data_row const& r) {
    for (bool const seen : {true, false})
      for (bool const rests : {true, false})
        EXPECT_EQ(after(settings, r[0], r[1], seen, rests), r[2])
            << r[0] << ": " << r[1] << (seen ? "" : ", unseen") << (rests ? ", resting" : "");
  }
};

TEST_F(completion, of_words_of_the_text) {
  for (auto const& r : data_rows("completion.txt", "cycling")) expect({}, r);
}

TEST_F(completion, by_what_scopes_say) {
  for (auto const& r : data_rows("completion.txt", "scopes"))
    expect(plist::convert(r[0]), {r[1], r[2], r[3]});
}

TEST_F(completion, ends_a_command_that_never_ends) {
  desktop_.busy().cancel_after = 2;
  EXPECT_EQ(after(plist::convert("{ completionCommand = \"while :; do :; done\"; }"), "foo fo|",
                  "n", true, false),
            "foo fo|");
}

// The words in order, by sorting all of them.
std::vector<std::u16string> words_by_distance(text::storage const& text, text::pos start,
                                              std::u16string const& prefix) {
  std::map<std::u16string, std::pair<std::size_t, std::size_t>> keys;
  for (std::size_t line = 0; line < text.lines(); ++line) {
    std::u16string const units(text.line_units(line));
    for (std::size_t at = 0; at < units.size(); ++at) {
      if (!actions::is_word_char(units[at])) continue;
      std::size_t const first = at;
      while (at < units.size() && actions::is_word_char(units[at])) ++at;
      std::u16string const word = units.substr(first, at - first);
      if (text::pos(line, first) == start || word.size() <= prefix.size() ||
          !word.starts_with(prefix))
        continue;
      bool const is_after = text::pos(line, first) >= start;
      std::pair const key(is_after ? (line - start.line) * 2 + 1 : (start.line - line) * 2,
                          is_after ? first : units.size() - first);
      auto const [known, is_new] = keys.emplace(word, key);
      if (!is_new) known->second = std::min(known->second, key);
    }
  }
  std::vector<std::u16string> words;
  for (auto const& [word, key] : keys) words.push_back(word);
  std::sort(words.begin(), words.end(),
            [&](auto const& a, auto const& b) { return keys.at(a) < keys.at(b); });
  return words;
}

// Own sources, line by line and as one long line, looked at in parts.
TEST_F(completion, finds_words_in_the_order_of_their_distance) {
  unsigned const seed = 25;
  std::mt19937 random(seed);
  for (char const* const name :
       {"src/text/views/view.h", "src/regex/parser.cc", "docs/editing.md"}) {
    for (bool const is_long_line : {false, true}) {
      std::u16string units = unicode::to_utf16(content_of_file(source_file(name)));
      if (is_long_line) std::replace(units.begin(), units.end(), u'\n', u' ');
      text::storage text;
      text.insert(text.end(-1), units.begin(), units.end());
      std::vector<text::pos> starts;
      for (text::iterator it = text.begin_of_line(0), end = text.end(-1); it != end; ++it)
        if (actions::is_word_char(*it) && (it.column == 0 || !actions::is_word_char(*(it - 1))))
          starts.push_back(it.pos());
      for (int round = 0; round < 30; ++round) {
        text::pos const start = starts[random() % starts.size()];
        text::unit_view const line = text.line_units(start.line);
        std::size_t const end = typing::end_of_word(line, start.column);
        std::u16string const prefix(
            line.substr(start.column, 1 + random() % std::min<std::size_t>(3, end - start.column)));
        typing::nearest_words found(text, start, end, {prefix});
        while (!found.is_complete()) found.look_further(1 + random() % 1000);
        EXPECT_EQ(std::vector<std::u16string>(found.words().begin(), found.words().end()),
                  words_by_distance(text, start, prefix))
            << name << ", seed " << seed << ", round " << round << ": " << unicode::to_utf8(prefix);
      }
    }
  }
}

// The first candidate costs a look at the lines around, however long the text is, and words that
// come later are those of the text as it was.
TEST_F(completion, looks_no_further_than_it_has_to) {
  std::u16string const unlike = u"no words that begin like it\n";
  std::u16string const text = u"fo_near " + repeated(unlike, 300000) + u"fo_far";
  text::storage storage;
  storage.insert(storage.end(-1), text.begin(), text.end());
  typing::nearest_words words(storage, {0, 8}, 10, {u"fo"});
  words.look_further(1);
  EXPECT_EQ(words.words().size(), 1u);
  EXPECT_FALSE(words.is_complete());
  words.look_further(std::size_t{1} << 40);
  EXPECT_EQ(words.words().size(), 2u);
}

// A search that has stopped survives whatever becomes of the text.
TEST_F(completion, survives_changes_under_it) {
  unsigned const seed = 7;
  std::mt19937 random(seed);
  for (int round = 0; round < 200; ++round) {
    text::storage text;
    std::u16string units;
    for (int i = 0; i < 200; ++i) units += u"fo a\n\u0301\U0001D49C1"[random() % 9];
    text.insert(text.end(-1), units.begin(), units.end());
    std::size_t const line = random() % text.lines(), last = random() % (text.size(line) + 1);
    typing::nearest_words words(text, {line, last - std::min<std::size_t>(last, 1)}, last,
                                {u"fo", u"f"});
    for (int step = 0; !words.is_complete(); ++step) {
      words.look_further(1 + random() % 40);
      auto const at = [&] {
        std::size_t const l = random() % text.lines();
        return text::iterator(l, random() % (text.size(l) + 1), &text);
      };
      auto const a = at(), b = at();
      if (step % 3 == 0) text.erase(std::min(a, b), std::max(a, b));
    }
  }
}

// The pop-up list

class completion_list : public shown_view_test {
 protected:
  static std::string rows(shown_view& view) {
    std::string result;
    for (auto const& row : view.host.completion_list.rows) {
      std::u16string marked;
      for (std::size_t at = 0; at < row.text.size(); ++at) {
        bool const is_bold = std::count(row.matched.begin(), row.matched.end(), at) != 0;
        marked += is_bold ? std::u16string{u'*', row.text[at]} : std::u16string{row.text[at]};
      }
      result += (result.empty() ? "" : " ") + unicode::to_utf8(marked);
    }
    return result;
  }
};

TEST_F(completion_list, offers_what_begins_so_and_what_is_so_abbreviated) {
  shown_view view("fooBar xfb FirstByte\nf| fast_bus foo");
  view.perform("showCompletionList:");
  EXPECT_EQ(rows(view), "*fast_bus *foo *fooBar *FirstByte");
  EXPECT_EQ(view.host.completion_list.word.x, 4);
  EXPECT_EQ(view.host.completion_list.word.y, 18);
  view.press(u"b");
  EXPECT_EQ(rows(view), "*fast_*bus *First*Byte *foo*Bar");
  view.perform("deleteBackward:");
  view.press(u"o");
  EXPECT_EQ(rows(view), "*f*oo *f*ooBar");
  view.press(u"oooo");
  EXPECT_EQ(rows(view), "");
  EXPECT_EQ(view.get(), "fooBar xfb FirstByte\nfooooo| fast_bus foo");
  EXPECT_EQ(desktop_.beeps, 0);
  EXPECT_EQ(view.view.performSelectorWithObject("matchesForString:", "fo"),
            (plist::array{"foo", "fooBar"}));
}

TEST_F(completion_list, has_its_own_keys_and_leaves_all_others) {
  using namespace platform::function_key;
  struct {
    std::u16string keys;
    char const* text;
    bool stays;
  } const cases[] = {
      {{return_key}, "fo1 fo2 fo3\nfo3|", false},
      {{down, enter}, "fo1 fo2 fo3\nfo2|", false},
      {{down, down, down, down, tab}, "fo1 fo2 fo3\nfo1|", false},
      {{down, down, up, tab}, "fo1 fo2 fo3\nfo2|", false},
      {{up, tab}, "fo1 fo2 fo3\nfo3|", false},
      {{escape}, "fo1 fo2 fo3\nfo|", false},
      {{down, u'1', return_key}, "fo1 fo2 fo3\nfo1\n|", false},
      {{left}, "fo1 fo2 fo3\nf|o", true},
      {{left, left}, "fo1 fo2 fo3\n|fo", false},
      {{u' '}, "fo1 fo2 fo3\nfo |", false},
      {{u'x', backspace}, "fo1 fo2 fo3\nfo|", false},
  };
  for (auto const& c : cases) {
    shown_view view("fo1 fo2 fo3\nfo|");
    view.perform("showCompletionList:");
    view.press(c.keys);
    EXPECT_EQ(view.get(), c.text);
    EXPECT_EQ(!view.host.completion_list.rows.empty(), c.stays) << c.text;
  }
}

TEST_F(completion_list, takes_a_click_as_one_step_of_undo) {
  shown_view view("a$b fo1 fo2\nfo|");
  view.perform("showCompletionList:");
  view.host.completion_list.clicked(1);
  EXPECT_EQ(view.get(), "a$b fo1 fo2\nfo1|");
  view.perform("undo:");
  EXPECT_EQ(view.get(), "a$b fo1 fo2\nfo|");
  view.perform("acceptCompletion:", "f$1 `x` \\");
  EXPECT_EQ(view.get(), "a$b fo1 fo2\nf$1 `x` \\|");
}

TEST_F(completion_list, closes_with_what_it_stands_at) {
  shown_view other("");
  for (int way = 0; way < 6; ++way) {
    shown_view view("fo1 fo2\nfo|\nmore");
    view.perform("showCompletionList:");
    ASSERT_EQ(view.host.completion_list.rows.size(), 2u);
    if (way == 0) view.click({4, 40});
    if (way == 1) {
      view.host.focused = false;
      view.view.focus_changed();
    }
    if (way == 2) view.view.setDocument(nullptr);
    if (way == 3) {
      other.set("ab a|");
      other.perform("showCompletionList:");
    }
    if (way == 4) view.perform("undo:");
    if (way == 5) view.perform("nextCompletion:");
    EXPECT_TRUE(view.host.completion_list.rows.empty()) << way;
  }
  desktop_.beeps = 0;
  shown_view none("foo\nbar|");
  none.perform("showCompletionList:");
  EXPECT_EQ(desktop_.beeps, 1);
}

// Words far away come later, while the list is open.
TEST_F(completion_list, grows_while_a_large_text_is_looked_through) {
  shown_view view("fo|\nfo_near\n" + repeated("no words that begin like it\n", 200000) + "fo_far");
  view.perform("showCompletionList:");
  EXPECT_EQ(rows(view), "*f*o_near");
  view.press(u"_");
  EXPECT_EQ(rows(view), "*f*o*_near");
  desktop_.loop().run_for(1);
  EXPECT_EQ(rows(view), "*f*o*_near *f*o*_far");
}

}  // namespace
