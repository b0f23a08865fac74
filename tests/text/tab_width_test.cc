#include "text/tab_width.h"

#include "random_text.h"
#include "test.h"
#include "text/cell_width.h"
#include "text/convert_tabs.h"
#include "text/storage.h"
#include "text/unit_search.h"
#include "text/views/column_cache.h"
#include "text/views/view.h"

namespace {

/// The walk, cluster by cluster, that everything faster must agree with.
size_t walked_width(text::unit_view units, size_t start, size_t tab_size) {
  size_t column = start;
  for (size_t at = 0; at < units.size();) {
    auto const cluster = text::measure_cluster(units, at);
    column += units[at] == u'\t' ? tab_size - column % tab_size : cluster.cells;
    at = cluster.end;
  }
  return column - start;
}

text::unit_column walked_unit(text::unit_view units, size_t start, size_t column, size_t tab_size) {
  size_t here = start, i = 0;
  while (i < units.size() && here < column) {
    auto const cluster = text::measure_cluster(units, i);
    size_t const width = units[i] == u'\t' ? tab_size - here % tab_size : cluster.cells;
    if (column < here + width) return {i, here, units[i] == u'\t' ? column - here : 0};
    here += width;
    i = cluster.end;
  }
  return {i, here, column > here ? column - here : 0};
}

TEST(unit_search, equals_the_loop_at_every_length_and_place) {
  std::u16string units(40, u'\u0A00');
  std::u16string const plain(40, u'\u02FF');
  for (size_t first = 0; first < 10; ++first)
    for (size_t last = first; last <= units.size(); ++last)
      for (size_t place = 0; place < units.size(); ++place) {
        units[place] = u'\n';
        bool const within = first <= place && place < last;
        char16_t const* const begin = units.data();
        ASSERT_EQ(text::find_unit(begin + first, begin + last, u'\n'),
                  begin + (within ? place : last));
        ASSERT_EQ(text::count_unit({begin + first, last - first}, u'\n'), within ? 1u : 0u);
        units[place] = u'\u0A00';
        for (char16_t const stop : {u'\t', u'\u0300', u'\uFFFF'}) {
          std::u16string other = plain;
          other[place] = stop;
          char16_t const* const start = other.data();
          ASSERT_EQ(text::find_unit_or_above(start + first, start + last, u'\t', u'\u0300'),
                    start + (within ? place : last));
        }
      }
  // More than the lanes of a vector count at once.
  EXPECT_EQ(text::count_unit(std::u16string(1'100'003, u'\n'), u'\n'), 1'100'003u);
}

TEST(tab_width, equals_the_walk_on_short_runs) {
  // All runs of up to seven units of two kinds.
  for (size_t bits = 0; bits < 128; ++bits)
    for (size_t length = 0; length <= 7; ++length) {
      std::u16string units;
      for (size_t i = 0; i < length; ++i) units += (bits >> i & 1) != 0 ? u'\t' : u'a';
      for (size_t start = 0; start < 5; ++start)
        for (size_t tab_size = 1; tab_size <= 4; ++tab_size) {
          ASSERT_EQ(text::expanded_width(units, start, text::tab_stops(tab_size)),
                    walked_width(units, start, tab_size));
          for (size_t column = 0; column < 30; ++column) {
            auto const found =
                text::unit_at_column(units, start, column, text::tab_stops(tab_size));
            auto const expected = walked_unit(units, start, column, tab_size);
            ASSERT_EQ(found.unit, expected.unit);
            ASSERT_EQ(found.column, expected.column);
            ASSERT_EQ(found.rest, expected.rest);
          }
        }
    }
}

TEST(tab_width, equals_the_walk_on_characters_of_any_kind) {
  for (unsigned seed = 1; seed <= 300; ++seed) {
    random_source random(seed);
    std::u16string const units = random.characters(random.up_to(30));
    SCOPED_TRACE("seed " + std::to_string(seed));
    text::set_counts_units_as_cells(seed % 4 == 0);
    for (size_t start = 0; start < 3; ++start) {
      size_t const width = text::expanded_width(units, start, text::tab_stops(4));
      ASSERT_EQ(width, walked_width(units, start, 4));
      for (size_t column = 0; column < start + width + 3; ++column) {
        auto const found = text::unit_at_column(units, start, column, text::tab_stops(4));
        auto const expected = walked_unit(units, start, column, 4);
        ASSERT_EQ(found.unit, expected.unit);
        ASSERT_EQ(found.column, expected.column);
        ASSERT_EQ(found.rest, expected.rest);
        ASSERT_TRUE(text::is_cluster_start(units, found.unit));
      }
    }
    if (text::counts_units_as_cells() && units.find(u'\t') == units.npos) {
      ASSERT_EQ(text::expanded_width(units, 0, text::tab_stops(4)), units.size());
    }
  }
  text::set_counts_units_as_cells(false);
}

TEST(tab_width, converted_tabs_have_the_width_of_the_original) {
  std::u16string const units = u"\ta\t\nbc\td";
  auto const spaces = text::convert_tabs_to_spaces(units, 2, text::tab_stops(4));
  EXPECT_EQ(std::u16string(spaces.begin(), spaces.end()), u"  a   \nbc    d");
}

/// A view on a storage holding lines around one that the cache takes care of.
class column_cache_test : public testing::TestWithParam<char16_t const*> {
 protected:
  void check(random_source& random) {
    for (size_t line = 0; line < storage_.lines(); ++line) {
      text::unit_view const units = storage_.line_units(line);
      for (int i = 0; i < 3; ++i) {
        size_t const tab_size = 1 + random.below(2) * 3;
        size_t const unit = text::cluster_start_from(units, random.up_to(units.size()));
        size_t const column = walked_width(units.substr(0, unit), 0, tab_size);
        ASSERT_EQ(view_.long_lines().column({line, unit}, text::tab_stops(tab_size)), column);

        size_t const sought = column + random.below(3);
        auto const found = view_.long_lines().unit_at({line, sought}, text::tab_stops(tab_size));
        auto const expected = walked_unit(units, 0, sought, tab_size);
        ASSERT_EQ(found.unit, expected.unit);
        ASSERT_EQ(found.column, expected.column);
      }
    }
  }

  text::storage storage_;
  text::view view_{storage_};
};

TEST_P(column_cache_test, equals_the_walk_while_the_line_is_edited) {
  for (unsigned seed = 1; seed <= 3; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    random_source random(seed);
    storage_.clear();
    std::u16string const start = u"x\n" + random.text(90000, GetParam()) + u"\ny";
    storage_.insert(storage_.end(-1), start.begin(), start.end());
    for (int step = 0; step < 40; ++step) {
      size_t const line = random.below(storage_.lines());
      size_t const size = storage_.size(line);
      text::iterator const at(line, random.up_to(size), &storage_);
      if (random.one_in(10) && storage_.undo_index > 2) {
        storage_.undo();
      } else if (random.one_in(2)) {
        size_t const length = random.below(random.one_in(4) ? 50000 : 30);
        auto const left = static_cast<size_t>(storage_.end(-1) - at);
        storage_.erase(at, at + static_cast<std::ptrdiff_t>(std::min(length, left)));
      } else {
        size_t const length = random.one_in(4) ? 40000 : random.below(30);
        std::u16string text = random.text(length, GetParam());
        if (random.one_in(8)) text += u"\n";
        storage_.insert(at, text.begin(), text.end());
      }
      ASSERT_NO_FATAL_FAILURE(check(random));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(alphabets, column_cache_test,
                         testing::Values(u"abc", u"abcdefgh\t", u"\t", u"中文a", u"a\u0301\t",
                                         u"\xD83C\xDDE9\xDDEA\u200D",
                                         u"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa\t"));

}  // namespace
