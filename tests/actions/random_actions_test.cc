#include "actions/WynPasteboardManager.h"
#include "actions/action_fixture.h"
#include "headless/headless_desktop.h"
#include "test.h"
#include "text/cluster.h"
#include "text/marked_text.h"
#include "text/random_text.h"

namespace {

bool is_in_text(text::view_iterator const& it, text::storage const& storage) {
  return it.base.line < storage.lines() && it.base.column <= storage.size(it.base.line);
}

/// What is put in may join what stands around, and undo brings back where that was done.
bool may_stand_in_a_character(std::string_view name) {
  for (std::string_view start : {"insert", "paste", "yank", "undo", "enterLine"})
    if (name.starts_with(start)) return true;
  return false;
}

bool has_lone_surrogate(text::unit_view units) {
  for (size_t i = 0; i < units.size(); ++i) {
    bool const is_pair = unicode::splits_pair(units, i + 1);
    if (!is_pair && (units[i] & 0xF800) == 0xD800) return true;
    if (is_pair) ++i;
  }
  return false;
}

bool may_change_text(std::string_view name) {
  for (std::string_view start : {"move", "select", "can", "copy", "toggle", "enter"})
    if (name.starts_with(start))
      return name.starts_with("moveLines") || name.starts_with("moveSelection");
  return true;
}

/// One random text on which random actions are performed, each as a step that can be undone.
class random_walk {
 public:
  explicit random_walk(unsigned seed) : random_(seed), names_(fixture_.actions.names()) {
    auto text = random_.text(random_.up_to(60), u"abCD_1  \t\n\n-\u00e9");
    for (size_t n = seed % 2 == 0 ? random_.up_to(30) : 0; n > 0; --n) {
      // Not into a pair that was put in before.
      size_t at = random_.up_to(text.size());
      if (unicode::splits_pair(text, at)) --at;
      text.insert(at, random_.characters(1));
    }
    text::undo_group const group(fixture_.storage.undo_manager);
    fixture_.storage.insert(fixture_.storage.end(-1), text.begin(), text.end());
  }

  void run(int steps) {
    auto const start = fixture_.storage.current_memento;
    auto const text = marked_text::units_of(fixture_.storage);
    for (int n = 0; n < steps && !testing::Test::HasFailure(); ++n)
      perform(names_[random_.below(names_.size())]);
    while (fixture_.storage.current_memento != start) {
      ASSERT_TRUE(fixture_.view.can_undo());
      fixture_.storage.undo_manager.undo();
      check("undo");
    }
    EXPECT_EQ(marked_text::units_of(fixture_.storage), text);
  }

 private:
  void perform(std::string const& name) {
    auto const before = marked_text::get(fixture_.view);
    auto const memento = fixture_.storage.current_memento;
    {
      text::undo_group const group(fixture_.storage.undo_manager);
      fixture_.actions.perform_action(name, &fixture_.view);
    }
    if (may_stand_in_a_character(name) && !is_at_character(fixture_.view.selection.current_mark))
      fixture_.view.selection.set_caret(fixture_.view.begin(0));
    check(name + " (" + modes_ + ") on\n" + before);
    if (!may_change_text(name)) EXPECT_EQ(fixture_.storage.current_memento, memento) << name;
  }

  void check(std::string const& what) const {
    auto const& selection = fixture_.view.selection;
    for (auto const& mark : {selection.first_mark, selection.last_mark, selection.current_mark})
      ASSERT_TRUE(is_in_text(mark, fixture_.storage))
          << what << "\nleads to " << mark.base.line << ":" << mark.base.column;
    for (auto const& mark : {selection.first_mark, selection.last_mark, selection.current_mark})
      ASSERT_TRUE(may_stand_in_a_character(what) || is_at_character(mark))
          << what << "\nleads into a character at " << mark.base.line << ":" << mark.base.column;
    ASSERT_FALSE(has_lone_surrogate(marked_text::units_of(fixture_.storage))) << what;
  }

  bool is_at_character(text::view_iterator const& it) const {
    return text::is_cluster_start(fixture_.storage.line_units(it.base.line), it.base.column);
  }

  static std::string random_modes(random_source& random) {
    std::string modes;
    for (char mode : {'f', 's', 'w', 'o'})
      if (random.one_in(4)) modes += mode;
    return modes;
  }

  random_source random_;
  std::string const modes_ = random_modes(random_);
  action_fixture fixture_{modes_};
  std::vector<std::string> const names_;
};

}  // namespace

TEST(random_actions, keep_the_selection_in_the_text_and_can_be_undone) {
  headless::headless_desktop desktop;
  WynPasteboardManager::sharedInstance().clear();
  for (unsigned seed = 0; seed < 300 && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    random_walk(seed).run(40);
  }
}
