#include "text/iterator_observer.h"

#include "marked_text.h"
#include "random_text.h"
#include "test.h"
#include "text/storage.h"

namespace text {

void PrintTo(iterator_observer::subset const& range, std::ostream* out) {
  *out << range.first_line << "," << range.first_column << "-" << range.last_line << ","
       << range.last_column;
}

}  // namespace text

namespace {

using subset = text::iterator_observer::subset;
using text::pos;

struct adjustment {
  char const* what;
  subset before;
  pos first, last;
  subset after;
};

using adjust = void (*)(pos, pos, subset&);

void check(adjust function, std::vector<adjustment> const& table) {
  for (adjustment const& row : table) {
    subset range = row.before;
    function(row.first, row.last, range);
    EXPECT_EQ(range, row.after) << row.what;
  }
}

subset one_line(uint32_t line, uint32_t first, uint32_t last) {
  return {pos(line, first), pos(line, last)};
}

TEST(adjust_range, insertion) {
  check(text::adjust_for_insert,
        {{"at the end", one_line(0, 2, 5), {0, 5}, {0, 7}, one_line(0, 2, 7)},
         {"at the start", one_line(0, 2, 5), {0, 2}, {0, 3}, one_line(0, 2, 6)},
         {"on the last of many", {pos(1, 4), pos(3, 2)}, {3, 2}, {3, 6}, {pos(1, 4), pos(3, 6)}},
         {"an empty one grows", one_line(0, 2, 2), {0, 2}, {0, 3}, one_line(0, 2, 3)}});
}

TEST(adjust_range, insertion_next_to_a_mirror) {
  check(text::adjust_mirror_for_insert,
        {{"at the end", one_line(0, 2, 5), {0, 5}, {0, 7}, one_line(0, 2, 5)},
         {"at the start", one_line(0, 2, 5), {0, 2}, {0, 3}, one_line(0, 3, 6)},
         {"inside", one_line(0, 2, 5), {0, 3}, {0, 4}, one_line(0, 2, 6)},
         {"an empty one is pushed", one_line(0, 2, 2), {0, 2}, {0, 3}, one_line(0, 3, 3)},
         {"after an empty one", one_line(0, 2, 2), {0, 4}, {1, 1}, one_line(0, 2, 2)},
         {"below an empty one", one_line(0, 2, 2), {1, 0}, {2, 0}, one_line(0, 2, 2)}});
}

TEST(adjust_range, ends_of_a_range_follow_their_units_under_random_edits) {
  // The model knows each unit by a number, so a range can be found again by its outermost units.
  for (unsigned seed = 1; seed <= 40; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    random_source random(seed);
    text::storage storage;
    text::iterator_observer observer(storage, false);
    storage.add_observer(&observer);
    std::u16string const start = random.text(60, u"abc\n");
    storage.insert(storage.end(-1), start.begin(), start.end());
    std::vector<int> ids(start.size());
    for (size_t i = 0; i < ids.size(); ++i) ids[i] = static_cast<int>(i);
    auto const at = [&](size_t index) {
      return storage.begin_of_line(0) + static_cast<std::ptrdiff_t>(index);
    };
    auto const range = observer.add_notify({at(20), at(40)});

    for (int step = 0; step < 30; ++step) {
      size_t const index = random.up_to(ids.size());
      if (random.one_in(2)) {
        size_t const length = std::min(random.below(4), ids.size() - index);
        storage.erase(at(index), at(index + length));
        ids.erase(ids.begin() + static_cast<long>(index),
                  ids.begin() + static_cast<long>(index + length));
      } else {
        std::u16string const text = random.text(random.below(4), u"xy\n");
        storage.insert(at(index), text.begin(), text.end());
        ids.insert(ids.begin() + static_cast<long>(index), text.size(), -1);
      }
      auto const first = static_cast<size_t>(text::iterator(range->first(), &storage) - at(0));
      auto const last = static_cast<size_t>(text::iterator(range->last(), &storage) - at(0));
      for (size_t i = 0; i < ids.size(); ++i) {
        if (ids[i] < 0) continue;
        bool const belongs = 20 <= ids[i] && ids[i] < 40;
        ASSERT_EQ(belongs, first <= i && i < last) << "unit " << ids[i] << " step " << step;
      }
    }
    storage.remove_observer(&observer);
  }
}

class mirrors : public testing::Test {
 protected:
  mirrors() { storage.add_observer(&observer); }
  ~mirrors() override { storage.remove_observer(&observer); }

  void insert(size_t line, size_t column, std::string const& text) {
    text::undo_group group(storage.undo_manager);
    std::u16string const units = marked_text::units(text);
    storage.insert(text::iterator(line, column, &storage), units.begin(), units.end());
  }
  void erase(pos first, pos last) {
    text::undo_group group(storage.undo_manager);
    storage.erase({first, &storage}, {last, &storage});
  }
  std::string text() { return marked_text::text_of(storage); }

  text::storage storage;
  text::iterator_observer observer{storage, true};
};

TEST_F(mirrors, typing_in_a_source_is_repeated_in_each_mirror_as_one_step) {
  insert(0, 0, "one\ntwo\nthree");
  observer.add_mirror(one_line(0, 1, 1), one_line(1, 2, 2));
  observer.add_mirror(one_line(0, 1, 1), one_line(2, 0, 0));
  insert(0, 1, "x");
  EXPECT_EQ(text(), "oxne\ntwxo\nxthree");
  insert(0, 2, "yz");
  EXPECT_EQ(text(), "oxyzne\ntwxyzo\nxyzthree");
  erase({0, 2}, {0, 3});
  EXPECT_EQ(text(), "oxzne\ntwxzo\nxzthree");
  EXPECT_EQ(storage.undo_records.size(), 1 + 3 * 2u);
  EXPECT_FALSE(observer.updating_mirror);

  storage.undo_manager.undo();
  EXPECT_EQ(text(), "oxyzne\ntwxyzo\nxyzthree");
  storage.undo_manager.undo();
  storage.undo_manager.undo();
  EXPECT_EQ(text(), "one\ntwo\nthree");
  EXPECT_EQ(observer.mirrors.front().second, one_line(1, 2, 2));
  storage.undo_manager.redo();
  EXPECT_EQ(text(), "oxne\ntwxo\nxthree");
  EXPECT_EQ(observer.mirrors.back().second, one_line(2, 0, 1));
}

TEST_F(mirrors, only_what_is_erased_inside_the_source_is_erased_in_the_mirror) {
  insert(0, 0, "abcdef|ABCDEF|AB");
  observer.add_mirror(one_line(0, 1, 5), one_line(0, 8, 12));
  observer.add_mirror(one_line(0, 1, 5), one_line(0, 14, 16));
  erase({0, 3}, {0, 6});
  EXPECT_EQ(text(), "abc|ABCF|AB");
  erase({0, 0}, {0, 2});
  EXPECT_EQ(text(), "c|ACF|B");
}

TEST_F(mirrors, repeated_text_is_not_repeated_again) {
  insert(0, 0, "a\nb\nc");
  observer.add_mirror(one_line(0, 0, 1), one_line(1, 0, 1));
  observer.add_mirror(one_line(1, 0, 1), one_line(0, 0, 1));
  observer.add_mirror(one_line(1, 0, 1), one_line(2, 0, 1));
  observer.add_mirror(one_line(0, 0, 1), one_line(2, 0, 1));
  insert(0, 1, "x");
  EXPECT_EQ(text(), "ax\nbx\ncx");
}

// Lists added, dropped and changed at a state before it is left: undo brings back how it was left,
// redo how it was arrived at, and at the end of each way stands what stood there at first.
TEST_F(mirrors, lists_dropped_between_changes_stay_dropped_by_redo) {
  insert(0, 0, "a\nb\nc\nd");
  observer.add_mirrors(
      {{one_line(0, 1, 1), one_line(1, 1, 1)}, {one_line(0, 1, 1), one_line(2, 1, 1)}});
  insert(0, 1, "x");
  observer.remove_all_mirrors();
  erase({1, 1}, {2, 1});
  auto const at_the_end = text();
  for (int n = 0; n < 3; ++n) storage.undo_manager.undo();
  for (int n = 0; n < 3; ++n) storage.undo_manager.redo();
  EXPECT_EQ(text(), at_the_end);
  EXPECT_TRUE(observer.mirrors.empty());
  storage.undo_manager.undo();
  EXPECT_TRUE(observer.mirrors.empty());
  storage.undo_manager.undo();
  EXPECT_EQ(observer.mirrors.size(), 2u);
  storage.undo_manager.redo();
  EXPECT_EQ(observer.mirrors.size(), 2u);
  insert(0, 2, "y");
  EXPECT_EQ(text(), "axy\nbxy\ncxy\nd");
}

TEST_F(mirrors, nobody_hears_of_a_repetition_before_the_change_that_it_repeats) {
  struct : text::storage_observer {
    void did_change_memento(unsigned long, unsigned long to) override { heard.push_back(to); }
    std::vector<unsigned long> heard;
  } after;
  storage.add_observer(&after);
  text::iterator_observer other(storage, true);
  storage.add_observer(&other);
  insert(0, 0, "a\nb");
  observer.add_mirror(one_line(0, 0, 1), one_line(1, 0, 1));
  other.add_notify(one_line(1, 0, 1));
  insert(0, 1, "x");
  EXPECT_EQ(after.heard, (std::vector<unsigned long>{1, 2, 3}));
  storage.undo_manager.undo();
  EXPECT_EQ(other.notifications.front(), one_line(1, 0, 1));
  storage.undo_manager.redo();
  EXPECT_EQ(other.notifications.front(), one_line(1, 0, 2));
  storage.remove_observer(&other);
  storage.remove_observer(&after);
}

// A view outside its actions doesn't repeat what another one does.
TEST_F(mirrors, only_own_actions_are_repeated) {
  insert(0, 0, "a\nb");
  observer.will_begin_action();
  observer.add_mirror(one_line(0, 0, 1), one_line(1, 0, 1));
  observer.did_end_action();
  insert(0, 1, "x");
  EXPECT_EQ(text(), "ax\nb");
  EXPECT_EQ(observer.mirrors.front().first, one_line(0, 0, 2));
}

// What is kept of each key typed doesn't grow with the lines in which it is typed.
TEST(mirror_memory, of_a_typed_unit_does_not_grow_with_the_lines) {
  auto const words_of_keys = [](uint32_t lines) {
    text::storage storage;
    text::iterator_observer observer(storage, true);
    storage.add_observer(&observer);
    random_source random(1);
    std::u16string before;
    for (uint32_t line = 0; line < lines; ++line)
      before += random.text(random.below(9), u"ab") + u"\n";
    storage.insert(storage.end(-1), before.begin(), before.end());
    std::vector<text::iterator_observer::mirror> added;
    for (uint32_t line = 1; line < lines; ++line) {
      auto const end = static_cast<uint32_t>(storage.size(line));
      added.push_back({one_line(0, 0, 0), one_line(line, end, end)});
    }
    observer.add_mirrors(added);
    auto const words = [&] {
      size_t records = 0;
      for (auto const& record : storage.undo_records)
        if (record.edits) records += std::get<text::repetition>(*record.edits).words();
      return records + observer.mirror_history.kept_words();
    };
    size_t before_keys = words();
    for (uint32_t n = 0; n < 20; ++n) storage.insert(text::iterator(0, n, &storage), 1, u'x');
    storage.remove_observer(&observer);
    return words() - before_keys;
  };
  size_t const few = words_of_keys(100), many = words_of_keys(800);
  EXPECT_LT(many, 20u * 8 * 800);
  EXPECT_LT(many, 9 * few);
}

TEST(range_history, keeps_the_newest_within_its_bound) {
  text::range_history history(4);
  random_source random(1);
  auto const list = [&](size_t count) {
    text::range_history::words made(4 * count);
    for (uint32_t& word : made) word = static_cast<uint32_t>(random.below(1000));
    return made;
  };
  text::range_history::words last;
  for (uint32_t state = 1; state < 60; ++state) {
    history.arrive(state, last = list(100'000));
    EXPECT_EQ(history.after_redo(state), last);
    EXPECT_LE(history.kept_words(), history.max_words);
    history.leave(state, state + 1, list(state));
  }
  EXPECT_TRUE(history.after_redo(1).empty());
  EXPECT_EQ(history.after_redo(59), last);
  history.leave(0, 60, {});
  EXPECT_TRUE(history.empty());
  EXPECT_EQ(history.kept_words(), 0u);
}

TEST_F(mirrors, without_ranges_nothing_is_kept) {
  insert(0, 0, "abc");
  erase({0, 0}, {0, 1});
  storage.undo();
  EXPECT_TRUE(observer.mirror_history.empty());
  EXPECT_TRUE(observer.notify_history.empty());
}

TEST_F(mirrors, without_tracking_undo_adjusts_nothing) {
  text::iterator_observer plain(storage, false);
  storage.add_observer(&plain);
  insert(0, 0, "abc");
  plain.add_notify(one_line(0, 1, 2));
  insert(0, 0, "x");
  storage.undo();
  EXPECT_EQ(plain.notifications.front(), one_line(0, 2, 3));
  EXPECT_TRUE(plain.notify_history.empty());
  storage.remove_observer(&plain);
}

}  // namespace
