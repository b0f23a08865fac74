#include "text/undo_manager.h"

#include "marked_text.h"
#include "test.h"
#include "text/storage.h"

namespace {

class undo_manager_test : public testing::Test {
 protected:
  void type(std::string const& text) {
    std::u16string const units = marked_text::units(text);
    storage.insert(storage.end(-1), units.begin(), units.end());
  }
  void step(std::string const& text) {
    text::undo_group group(manager);
    for (char const c : text) type(std::string(1, c));
  }
  std::string text() { return marked_text::text_of(storage); }

  text::storage storage;
  text::undo_manager& manager = storage.undo_manager;
};

TEST_F(undo_manager_test, group_is_one_step) {
  EXPECT_FALSE(manager.can_undo());
  manager.undo();
  manager.redo();
  step("abc");
  step("de");
  EXPECT_TRUE(manager.can_undo());
  EXPECT_FALSE(manager.can_redo());
  uint32_t const memento = storage.current_memento;

  manager.undo();
  EXPECT_EQ(text(), "abc");
  manager.undo();
  EXPECT_EQ(text(), "");
  EXPECT_EQ(storage.current_memento, 0u);
  EXPECT_FALSE(manager.can_undo());
  manager.redo();
  manager.redo();
  EXPECT_EQ(text(), "abcde");
  EXPECT_EQ(storage.current_memento, memento);
  EXPECT_EQ(storage.undo_records.size(), 5u);
  EXPECT_FALSE(manager.can_redo());
}

TEST_F(undo_manager_test, empty_group_keeps_the_redo_list) {
  step("a");
  manager.undo();
  step("");
  EXPECT_TRUE(manager.can_redo());
  EXPECT_FALSE(manager.can_undo());
  step("b");
  EXPECT_FALSE(manager.can_redo());
}

TEST_F(undo_manager_test, open_group_has_lists_of_its_own) {
  step("a");
  manager.begin_group();
  EXPECT_FALSE(manager.can_undo());
  step("b");
  step("c");
  manager.undo();
  EXPECT_EQ(text(), "ab");
  manager.end_group();
  manager.undo();
  EXPECT_EQ(text(), "a");
  manager.redo();
  EXPECT_EQ(text(), "ab");
}

TEST_F(undo_manager_test, group_whose_changes_were_all_undone_clears_the_redo_list_around) {
  step("a");
  step("b");
  manager.undo();
  manager.begin_group();
  step("c");
  manager.undo();
  EXPECT_EQ(text(), "a");
  manager.end_group();
  EXPECT_FALSE(manager.can_redo());
  manager.undo();
  EXPECT_EQ(text(), "");
}

}  // namespace
