#include "data_rows.h"
#include "marked_text.h"
#include "random_text.h"
#include "regex/format.h"
#include "text/views/view.h"

namespace {

using text::freehanded_t;
using text::view;

/// Copied text as a drawing.
std::string copied(view& v) {
  return marked_text::utf8(v.selection.units());
}

struct text_view {
  text::storage storage;
  text::view view{storage};
};

struct copy_case {
  char const* drawing;
  char const* copy;
  bool freehanded = false;
};

TEST(selection, copies) {
  for (copy_case const& row : std::vector<copy_case>{
           {"a|b", ""},
           {"a[bc\nd]e", "bc\nd"},
           {"a]bc\nd[e", "bc\nd"},
           {"a·[\tb]c", "  b"},  // tab from 1 to 4, cut at 2: the rest of a tab of its own size
           {"[a·]\tb", "a "},    // a column of the tab
           {"·[···]\tb", " "},   // both ends in one tab: one space, however far apart
           {"ab·[··]", " "},
           {"{ab\ncd}", "ab\ncd\n"},
           {"a{bcd\ne\nfgh}i", "bc\n\ngh\n"},
           {"a}bc\nd\nef{g", "b\n\nf\n"},
           {"a{b········}\nc\nd", "b\n"},
           {"a{b········}\nc\nd", "b\n", true}}) {
    text_view edited;
    edited.view.tab_size = 4;
    edited.view.freehanded_mode = row.freehanded;
    marked_text::set(edited.view, row.drawing);
    EXPECT_EQ(copied(edited.view), row.copy) << row.drawing;
  }
}

struct edit_case {
  char const* before;
  std::function<void(view&)> edit;
  char const* after;
};

void check(std::vector<edit_case> const& table) {
  for (edit_case const& row : table) {
    text_view edited;
    edited.view.tab_size = 4;
    marked_text::set(edited.view, row.before);
    row.edit(edited.view);
    EXPECT_EQ(marked_text::get(edited.view), row.after) << row.before;
  }
}

std::function<void(view&)> type(std::string const& text) {
  return [units = marked_text::units(text)](view& v) { v.insert(units.begin(), units.end()); };
}

void overwrite(view& v) {
  v.overwrite_mode = true;
  v.erase_selection();
}

// The edit that a row names after the drawings before and after it, with its arguments.
void edit(view& v, data_row const& row) {
  auto const number = [&](size_t field) { return std::stoul(row.at(field)); };
  std::string const& name = row.at(2);
  std::u16string const units = marked_text::units(row.size() > 3 ? row[3] : "");
  if (name == "erase") {
    v.erase_selection();
  } else if (name == "overwrite") {
    overwrite(v);
  } else if (name == "type") {
    v.insert(units.begin(), units.end());
  } else if (name == "replace") {
    v.replace_selection(units.begin(), units.end());
  } else if (name == "move") {
    v.move_selection_to({&v, text::iterator(number(3), number(4), v.storage)});
  } else {
    ASSERT_EQ(name, "columns");
    v.insert_column(units.begin(), units.end(), {number(4), number(5)}, row.at(6) == "true");
  }
}

TEST(editing, edits_as_the_file_says) {
  for (data_row const& row : data_rows("editing.txt", "edits"))
    check({{row[0].c_str(), [&](view& v) { edit(v, row); }, row[1].c_str()}});
}

TEST(editing, blanked_text_has_no_blanks_before_line_ends) {
  for (unsigned seed = 1; seed <= 100; ++seed) {
    random_source random(seed);
    std::u16string const text = random.text(1 + random.below(12), u"ab \n\n");
    std::u16string blanks = text, expected;
    for (char16_t& unit : blanks)
      if (unit != u'\n') unit = u' ';
    regex::replace(blanks.begin(), blanks.end(), " +\n", "\n", std::back_inserter(expected));

    text_view edited;
    edited.view.insert(text.begin(), text.end());
    edited.view.selection.select(edited.view.begin(0), edited.view.end(), false);
    overwrite(edited.view);
    EXPECT_EQ(marked_text::units_of(edited.storage), expected) << "seed " << seed;
  }
}

TEST(editing, typing_goes_on_in_all_lines_of_a_column_selection) {
  text_view edited;
  marked_text::set(edited.view, "ab}c\nx\nde{f");
  type("1")(edited.view);
  type("2")(edited.view);
  EXPECT_EQ(marked_text::get(edited.view), "ab12|c\nx 12\nde12f");
}

TEST(editing, line_append_mode_repeats_at_the_ends_of_lines) {
  text_view edited;
  marked_text::set(edited.view, "lo[ng\nab\n\nx]yz\nrest");
  ASSERT_TRUE(edited.view.can_enter_line_append_mode());
  edited.view.enter_line_append_mode();
  EXPECT_EQ(edited.view.mirror_observer.mirrors.size(), 3u);
  type(";")(edited.view);
  EXPECT_EQ(marked_text::get(edited.view), "long;|\nab;\n;\nxyz;\nrest");
}

TEST(editing, line_append_mode_needs_two_lines) {
  auto const can = [](char const* drawing) {
    text_view edited;
    marked_text::set(edited.view, drawing);
    return edited.view.can_enter_line_append_mode();
  };
  EXPECT_FALSE(can("a|b"));
  EXPECT_FALSE(can("a[b\n]c"));
  EXPECT_TRUE(can("a[b\nc]"));
  EXPECT_TRUE(can("a[b\n\n]c"));
  EXPECT_FALSE(can("a{b\nc}"));
}

TEST(editing, modes_keep_the_caret_in_its_place) {
  check({{"ab···|",
          [](view& v) {
            v.set_freehanded_mode(true);
            v.set_freehanded_mode(false);
          },
          "ab|"},
         {"[a\nbc]", [](view& v) { v.set_column_mode(true); }, "{a\nbc}"},
         {"{a\nb····}", [](view& v) { v.set_column_mode(false); }, "[a\nb]"},
         {"a|b", [](view& v) { v.set_column_mode(true); }, "a|b"}});
  text_view edited;
  marked_text::set(edited.view, "ab|");
  edited.view.selection.current_mark.desired_column = 6;
  edited.view.set_freehanded_mode(true);
  EXPECT_EQ(marked_text::get(edited.view), "ab····|");
  EXPECT_EQ(edited.view.selection.current_mark.desired_column, 6u);
}

TEST(editing, boxes_keep_the_direction) {
  text_view edited;
  marked_text::set(edited.view, "ab\nc}d\nef{g");
  text::box const rectangle(&edited.view);
  EXPECT_EQ(rectangle.first_line, 1u);
  EXPECT_EQ(rectangle.last_line, 3u);
  EXPECT_EQ(rectangle.first_column, 1u);
  EXPECT_EQ(rectangle.last_column, 2u);
  EXPECT_TRUE(rectangle.reversed_lines);
  EXPECT_TRUE(rectangle.reversed_columns);
  EXPECT_EQ(edited.view.selection.width(), 1u);

  marked_text::set(edited.view, "ab\nc]d\nef[g");
  text::box const stretch(&edited.view);
  EXPECT_EQ(stretch.last_line, 2u);
  EXPECT_FALSE(stretch.reversed_lines);
  EXPECT_TRUE(stretch.reversed_columns);
  EXPECT_EQ(edited.view.selection.width(), 78u);
}

/// Column edits on text without tabs, done on a list of strings.
class grid {
 public:
  std::vector<std::u16string> lines;

  std::u16string text() const {
    std::u16string all;
    for (size_t i = 0; i < lines.size(); ++i) all += (i != 0 ? u"\n" : u"") + lines[i];
    return all;
  }
  std::u16string copy(text::box const& b) const {
    std::u16string all;
    for (size_t i = b.first_line; i < b.last_line; ++i) {
      std::u16string const& line = lines[i];
      size_t const first = std::min(b.first_column, line.size());
      all += line.substr(first, std::min(b.last_column, line.size()) - first) + u"\n";
    }
    return all;
  }
  void erase(text::box const& b) {
    for (size_t i = b.first_line; i < b.last_line; ++i) {
      lines[i].resize(std::max(lines[i].size(), b.first_column), u' ');
      lines[i].erase(b.first_column, b.last_column - b.first_column);
    }
  }
  void insert(size_t line, size_t column, std::vector<std::u16string> pieces, size_t height,
              size_t width) {
    pieces.resize(std::max(height, pieces.size()));
    lines.resize(std::max(lines.size(), line + pieces.size()));
    for (auto const& piece : pieces) width = std::max(width, piece.size());
    for (auto& piece : pieces) {
      std::u16string& row = lines[line++];
      row.resize(std::max(row.size(), column), u' ');
      if (row.size() > column) piece.resize(width, u' ');
      row.insert(column, piece);
    }
  }
};

class ColumnModel {
 public:
  explicit ColumnModel(unsigned seed) : random_(seed) {
    for (int i = 0; i < 6; ++i) grid_.lines.push_back(random_.text(random_.below(12), u"abc "));
    std::u16string const text = grid_.text();
    edited_.storage.insert(edited_.storage.end(-1), text.begin(), text.end());
  }

  void step() {
    text::undo_group group(edited_.storage.undo_manager);
    select();
    text::box const extent(&view_);
    ASSERT_EQ(std::u16string(view_.selection.units()),
              view_.selection.empty() ? u"" : grid_.copy(extent));
    size_t const height = extent.last_line - extent.first_line;
    size_t const width = extent.last_column - extent.first_column;
    auto const [pieces, text] = pieces_and_text();
    bool const empty = view_.selection.empty();
    switch (random_.below(4)) {
      case 0: {
        view_.erase_selection();
        if (!empty) grid_.erase(extent);
        break;
      }
      case 1: {
        if (!empty) grid_.erase(extent);
        view_.insert_column(text.begin(), text.end(), {height, width}, random_.one_in(2));
        grid_.insert(extent.first_line, extent.first_column, pieces, height, width);
        break;
      }
      case 2: {
        if (!empty) grid_.erase(extent);
        view_.replace_selection(text.begin(), text.end());
        grid_.insert(extent.first_line, extent.first_column, pieces, height, width);
        break;
      }
      default: {
        if (!empty) grid_.erase(extent);
        view_.insert(text.begin(), text.begin() + 1);
        for (size_t i = extent.first_line; i < extent.last_line; ++i) {
          std::u16string& row = grid_.lines[i];
          if (i == extent.first_line) row.resize(std::max(row.size(), extent.first_column), u' ');
          row.insert(std::min(extent.first_column, row.size()), 1, text[0]);
        }
      }
    }
    forget_mirrors();
    ASSERT_EQ(marked_text::units_of(edited_.storage), grid_.text());
  }

  void undo_and_redo_all() {
    auto& manager = edited_.storage.undo_manager;
    std::u16string const last = marked_text::units_of(edited_.storage);
    while (manager.can_undo()) manager.undo();
    while (manager.can_redo()) manager.redo();
    ASSERT_EQ(marked_text::units_of(edited_.storage), last);
  }

 private:
  void select() {
    auto const anywhere = [&] {
      return iter_from_hybrid_pos(
          &view_, {random_.below(edited_.storage.lines()), random_.below(15)}, freehanded_t::on);
    };
    view_.selection.set_caret(anywhere());
    view_.selection.select_to(anywhere(), true);
  }
  std::pair<std::vector<std::u16string>, std::u16string> pieces_and_text() {
    std::vector<std::u16string> pieces;
    std::u16string text;
    for (size_t i = 0; i <= random_.below(3); ++i) {
      pieces.push_back(random_.text(1 + random_.below(4), u"xyz"));
      text += (i != 0 ? u"\n" : u"") + pieces.back();
    }
    if (random_.one_in(2)) text += u"\n";
    return {pieces, text};
  }
  void forget_mirrors() {
    auto& mirrors = view_.mirror_observer.mirrors;
    while (!mirrors.empty()) view_.mirror_observer.remove_mirror(mirrors.begin());
  }

  random_source random_;
  grid grid_;
  text_view edited_;
  text::view& view_ = edited_.view;
};

TEST(editing, random_column_edits_equal_those_of_a_grid) {
  for (unsigned seed = 1; seed <= 60; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    ColumnModel model(seed);
    for (int step = 0; step < 25; ++step) {
      SCOPED_TRACE("step " + std::to_string(step));
      model.step();
      if (testing::Test::HasFatalFailure()) return;
    }
    model.undo_and_redo_all();
  }
}

}  // namespace
