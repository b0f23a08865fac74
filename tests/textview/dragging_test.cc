#include "path/temporary_folder.h"
#include "textview/mouse/dropped_content.h"
#include "textview/shown_view.h"

// Drag and drop on the desktop without windows, where cells are 8 pixels wide and rows 16 high.
namespace {

namespace operation = platform::drag_operation;
namespace modifier = platform::modifier;

platform::point at(double line, double column) {
  return {4 + column * 8 + 1, 2 + line * 16 + 5};
}

class dragging : public shown_view_test {
 protected:
  // Presses, holds, and begins to move: true if that is a drag.
  bool pull(shown_view& from, double line, double column, std::uint32_t modifiers = 0) {
    platform::mouse_event event{at(line, column), platform::mouse_button::left, 1, modifiers};
    from.view.mouse_down(event);
    desktop_.loop().run_for(0.2);
    event.position.x += 3;
    from.view.mouse_dragged(event);
    content_.set(from.host.dragged);
    return !from.host.dragged.empty();
  }
  bool drop(shown_view& to, double line, double column, bool own,
            std::uint32_t operations = operation::copy | operation::generic,
            std::uint32_t modifiers = 0) {
    platform::drag_info const info{at(line, column), operations, modifiers, own, content_};
    to.view.dragging_updated(info);
    bool const done = to.view.perform_drag_operation(info);
    desktop_.loop().run_for(0);
    return done;
  }
  void offer_files(plist::array paths) { content_.set({{"files", std::move(paths)}}); }

  headless::memory_pasteboard content_;
  temporary_folder folder_;
};

TEST_F(dragging, moves_text_within_a_view_in_one_step_and_copies_it_to_others) {
  shown_view one("a[bc]d\nef"), two("|xyz");
  ASSERT_TRUE(pull(one, 0, 2));
  EXPECT_EQ(one.host.dragged_shape, (std::vector<platform::rect>{{12, 2, 16, 16}}));
  EXPECT_EQ(content_.get("text").string_or(""), "bc");
  EXPECT_FALSE(drop(one, 0, 2, true));  // onto itself
  EXPECT_TRUE(drop(two, 0, 1, false));
  EXPECT_EQ(two.get(), "x[bc]yz");
  EXPECT_EQ(one.get(), "a[bc]d\nef");
  EXPECT_TRUE(drop(one, 1, 1, true));
  EXPECT_EQ(one.get(), "ad\ne[bc]f");
  one.view.performSelectorWithObject("undo:", {});
  EXPECT_EQ(one.get(), "a[bc]d\nef");
  EXPECT_TRUE(drop(one, 1, 1, true, operation::copy));
  EXPECT_EQ(one.get(), "abcd\ne[bc]f");
}

TEST_F(dragging, keeps_columns) {
  shown_view one("a{bc\nde}f"), two("|123\n45");
  ASSERT_TRUE(pull(one, 0, 1.3));
  EXPECT_TRUE(drop(two, 0, 1, false));
  EXPECT_EQ(two.get(), "1{b23\n4e}5");
  EXPECT_TRUE(drop(one, 0, 3, true));
  EXPECT_EQ(one.get(), "ac{b\ndfe}");
}

TEST_F(dragging, begins_only_when_the_selection_is_held) {
  shown_view one("a[bcd]e fgh");
  EXPECT_FALSE(pull(one, 0, 5));
  one.view.mouse_up({});
  one.set("a[bcd]e fgh");
  EXPECT_FALSE(pull(one, 0, 2, modifier::option));
  one.view.mouse_up({});
  one.set("a[bcd]e fgh");
  one.view.mouse_down({at(0, 2), platform::mouse_button::left, 1, 0});
  EXPECT_EQ(one.get(), "a[bcd]e fgh");
  one.view.mouse_dragged({at(0, 8), platform::mouse_button::left, 1, 0});
  EXPECT_EQ(one.get(), "ab[cde fg]h");
  one.view.mouse_up({});
  one.view.mouse_down({at(0, 4), platform::mouse_button::left, 1, 0});
  desktop_.loop().run_for(0.2);
  EXPECT_EQ(one.view.cursor_at(at(0, 4), 0), platform::cursor::arrow);
  one.view.mouse_up({at(0, 4), platform::mouse_button::left, 1, 0});
  EXPECT_EQ(one.get(), "abcd|e fgh");
  EXPECT_TRUE(one.host.dragged.empty());
}

TEST_F(dragging, copies_what_it_moves_no_more_once_the_text_has_changed) {
  shown_view one("a[bc]d\nef");
  ASSERT_TRUE(pull(one, 0, 2));
  one.set("[12]34\nef");
  EXPECT_TRUE(drop(one, 1, 2, true));
  EXPECT_EQ(one.get(), "1234\nef[bc]");
}

TEST_F(dragging, shows_where_the_drop_goes_and_scrolls_at_the_edges) {
  shown_view one("|" + repeated("line\n", 200));
  content_.set({{"text", "x"}});
  platform::drag_info info{at(1, 2), operation::copy, 0, false, content_};
  one.host.dirty.clear();
  EXPECT_EQ(one.view.dragging_updated(info), operation::copy);
  EXPECT_EQ(one.view.dropCaret(), (platform::rect{20, 18, 1, 16}));
  EXPECT_EQ(one.host.dirty, std::vector{*one.view.dropCaret()});
  desktop_.loop().run_for(1);
  EXPECT_EQ(one.host.visible_rect().y, 0);
  info.position.y = one.host.visible_rect().bottom() - 2;
  one.view.dragging_updated(info);
  desktop_.loop().run_for(1);
  double const y = one.host.visible_rect().y;
  EXPECT_GT(y, 100);
  EXPECT_GT(one.view.dropCaret()->y, y);
  one.view.dragging_exited();
  desktop_.loop().run_for(1);
  EXPECT_EQ(one.host.visible_rect().y, y);
  EXPECT_FALSE(one.view.dropCaret());
}

TEST_F(dragging, inserts_files_or_their_paths) {
  std::string const a = folder_.write("a", "A\r\nB"), b = folder_.write("b", "C");
  struct {
    plist::array paths;
    std::uint32_t modifiers;
    std::string result;
  } const cases[] = {{{a}, 0, "A\nB|"},
                     {{folder_.path()}, 0, folder_.path() + "|"},
                     {{a, b}, modifier::shift, a + "\n" + b + "|"},
                     {{a}, modifier::control, a + "|"}};
  for (auto const& [paths, modifiers, result] : cases) {
    shown_view one("|");
    offer_files(paths);
    EXPECT_TRUE(drop(one, 0, 0, false, operation::copy, modifiers));
    EXPECT_EQ(one.get(), result);
  }
  shown_view several("|");
  offer_files({a, b});
  drop(several, 0, 0, false);
  std::string const text = several.get();
  EXPECT_LT(text.find("Filename:     " + a), text.find("A\nB"));
  EXPECT_LT(text.find("A\nB"), text.find("Filename:     " + b));
  several.view.performSelectorWithObject("undo:", {});
  EXPECT_EQ(several.get(), "|");
  offer_files({folder_ / "missing"});
  drop(several, 0, 0, false);
  ASSERT_EQ(desktop_.alerts().shown.size(), 1U);
  EXPECT_EQ(desktop_.alerts().shown[0].title, "Couldn't Open");
}

TEST_F(dragging, asks_before_it_inserts_a_large_file) {
  auto const size = static_cast<std::size_t>(dropped_content::large_file);
  std::string const fits = folder_.write("fits", std::string(size, 'x'));
  std::string const large = folder_.write("large", std::string(size + 1, 'x'));
  shown_view one("|");
  offer_files({fits});
  drop(one, 0, 0, false);
  EXPECT_TRUE(desktop_.alerts().shown.empty());
  EXPECT_EQ(one.view.view()->storage->size(0), size);
  shown_view two("|");
  offer_files({large});
  drop(two, 0, 0, false);
  EXPECT_EQ(two.get(), "|");
  ASSERT_EQ(desktop_.alerts().shown.size(), 1U);
  EXPECT_EQ(
      desktop_.alerts().shown[0].text,
      "The file \u201c" + large +
          "\u201d has a size of 1.0 MB. Are you sure you want to insert this as a text file?");
  desktop_.alerts().answer("Inserting Large File", "Insert File");
  drop(two, 0, 0, false);
  EXPECT_EQ(two.view.view()->storage->size(0), size + 1);
}

TEST_F(dragging, takes_columns_before_files_before_colours_before_text) {
  shown_view one("|");
  plist::dictionary types{{"text", "t\r\nu"}};
  auto const dropped = [&] {
    one.set("|");
    content_.set(types);
    drop(one, 0, 0, false);
    return one.text();
  };
  EXPECT_EQ(dropped(), "t\nu");
  types["color"] = plist::array{1.0, 0.5, 0.0};
  EXPECT_EQ(dropped(), "#ff7f00");
  types["files"] = plist::array{folder_.write("f", "file")};
  EXPECT_EQ(dropped(), "file");
  types["WynQuirnotePboardType"] = plist::dictionary{{"Content", "1\n2\n"}, {"Rectangular", "YES"}};
  EXPECT_EQ(dropped(), "1\n2");
}

}  // namespace
