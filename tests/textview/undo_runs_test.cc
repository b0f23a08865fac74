#include "actions/word_units.h"
#include "platform/utf.h"
#include "text/random_text.h"
#include "textview/shown_view.h"

// Which keys Ctrl+Z takes back at once.
namespace {

/// The states of a text and the steps between them, with where runs go on by the rule as it reads.
class reference {
 public:
  struct step {
    std::string before, after;  // texts with the caret drawn in
    bool goes_on;
  };

  void add(step made) {
    steps_.resize(at_);
    steps_.push_back(std::move(made));
    ++at_;
  }
  bool can_undo() const { return at_ > 0; }
  bool can_redo() const { return at_ < steps_.size(); }
  /// What shows after undo or redo of a step, or of the whole run.
  std::string undo(bool run) {
    do --at_;
    while (run && at_ > 0 && steps_[at_].goes_on);
    return steps_[at_].before;
  }
  std::string redo(bool run) {
    do ++at_;
    while (run && at_ < steps_.size() && steps_[at_].goes_on);
    return steps_[at_ - 1].after;
  }

 private:
  std::vector<step> steps_;
  std::size_t at_ = 0;
};

bool is_word_at_end(std::string const& drawn) {
  std::u16string const units = unicode::to_utf16(drawn);
  return !units.empty() && actions::is_word_char(units.back());
}

class undo_runs : public shown_view_test {
 protected:
  void by_key(char const* selector) { shown_.view.tryToPerformWith(selector, {}); }
  void type(std::u16string_view keys) {
    for (char16_t const key : keys) shown_.view.insert_text({&key, 1});
  }
  void wait(double seconds) { platform::desktop::current().loop().run_for(seconds); }

  shown_view shown_{"|"};
};

TEST_F(undo_runs, end_at_words_pauses_movements_and_other_keys) {
  type(u"hello big wor");
  wait(0.8);
  type(u"ld");
  wait(1.2);
  type(u"ly");
  by_key("moveLeft:");
  by_key("moveRight:");
  type(u"x");
  by_key("deleteBackward:");
  by_key("deleteBackward:");
  std::vector<std::string> seen;
  for (int i = 0; i < 6; ++i) {
    seen.push_back(shown_.get());
    by_key("undoTyping:");
  }
  EXPECT_EQ(seen, (std::vector<std::string>{"hello big worldl|", "hello big worldlyx|",
                                            "hello big worldly|", "hello big world|", "hello big |",
                                            "hello |"}));
}

TEST_F(undo_runs, are_recorded_as_single_steps) {
  by_key("toggleMacroRecording:");
  type(u"abc");
  by_key("undoTyping:");
  by_key("redoTyping:");
  by_key("undo:");
  by_key("toggleMacroRecording:");
  EXPECT_EQ(shown_.get(), "ab|");
  plist::array const steps = settings::store().array("WynMacroManagerScratchMacro");
  std::size_t undos = 0;
  for (plist::value const& step : steps) undos += step["command"].string_or("") == "undo:";
  EXPECT_EQ(undos, 4U);
  wait(5);
  by_key("playScratchMacro:");
  EXPECT_EQ(shown_.text(), "abab");
  by_key("undoTyping:");
  EXPECT_EQ(shown_.get(), "ab|");
}

TEST_F(undo_runs, equal_a_slow_reference) {
  enum { typed = 4, backward, forward, others };
  constexpr unsigned seeds = 60;
  for (unsigned seed = 1; seed <= seeds; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    random_source random(seed);
    shown_.set("|");
    shown_.view.view()->storage->forget_history();
    reference expected;
    int last = others;  // the kind of key before, if nothing was done since
    double pause = 0;
    for (int i = 0; i < 150 && !HasFailure(); ++i) {
      std::string const before = shown_.get();
      std::uint32_t const memento = shown_.view.view()->storage->current_memento;
      std::size_t const what = random.below(20);
      if (what == 0) {
        double const seconds = 0.125 * static_cast<double>(random.up_to(12));
        wait(seconds);
        pause += seconds;
        continue;
      }
      if (what <= 3) {  // undo and redo
        bool const undo = what != 3, run = random.one_in(2);
        if (!(undo ? expected.can_undo() : expected.can_redo())) continue;
        std::string const shows = undo ? expected.undo(run) : expected.redo(run);
        by_key(undo ? (run ? "undoTyping:" : "undo:") : (run ? "redoTyping:" : "redo:"));
        EXPECT_EQ(shown_.get(), shows);
        if (run && undo && random.one_in(2)) {
          std::string const again = expected.redo(true);
          by_key("redoTyping:");
          EXPECT_EQ(shown_.get(), again);
        }
        last = others;
        continue;
      }
      if (what == 4) {
        static char const* const moves[] = {"moveLeft:",
                                            "moveRight:",
                                            "moveUp:",
                                            "moveWordLeft:",
                                            "moveRightAndModifySelection:",
                                            "selectWord:",
                                            "toggleColumnSelection:"};
        by_key(moves[random.below(std::size(moves))]);
        last = others;
        continue;
      }
      int kind = others;
      bool starts_word = false;
      if (what < 14) {
        kind = typed;
        std::u16string const key(1, random.pick(u"aab1_ .-(\"é中"));
        std::string const line = before.substr(0, before.find_first_of("|]}"));
        starts_word = is_word_at_end(unicode::to_utf8(key)) && !is_word_at_end(line);
        type(key);
      } else if (what < 18) {
        kind = what < 16 ? backward : forward;
        by_key(kind == backward ? "deleteBackward:" : "deleteForward:");
      } else {
        by_key(what == 18 ? "insertNewline:" : "insertTab:");
      }
      std::string const after = shown_.get();
      bool const changed = memento != shown_.view.view()->storage->current_memento;
      bool const goes_on = kind != others && kind == last && pause <= 1 && !starts_word;
      if (changed) expected.add({before, after, goes_on});
      last = changed ? kind : others;
      pause = 0;
    }
    while (expected.can_undo()) {
      std::string const shows = expected.undo(true);
      by_key("undoTyping:");
      EXPECT_EQ(shown_.get(), shows);
    }
    EXPECT_FALSE(shown_.view.view()->can_undo());
  }
}

}  // namespace
