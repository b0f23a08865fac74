#include "actions/WynPasteboardManager.h"
#include "headless/headless_desktop.h"
#include "platform/own_defaults.h"
#include "platform/utf.h"
#include "test.h"

using namespace actions;

namespace {

class clip_history : public testing::Test {
 protected:
  clip_history() { history_.clear(); }

  void copy_elsewhere(std::string const& text, bool secret = false) {
    plist::dictionary types{{"text", text}};
    if (secret) types.emplace("secret", true);
    board_.set(std::move(types));
  }
  static std::string utf8(std::optional<text_clip> const& clip) {
    return clip ? unicode::to_utf8(clip->text) : "-";
  }
  static void copy(std::string const& text) {
    set_current_clip({unicode::to_utf16(text), false, std::nullopt});
  }
  std::string on_board() const { return board_.get("text").string_or("-"); }
  std::vector<std::string> stack() const {
    std::vector<std::string> texts;
    for (auto const& clip : history_.stack()) texts.push_back(unicode::to_utf8(clip->text));
    return texts;
  }

  own_defaults const defaults_;
  headless::headless_desktop desktop_;
  headless::memory_pasteboard& board_ = desktop_.general_pasteboard();
  WynPasteboardManager& history_ = WynPasteboardManager::sharedInstance();
};

using texts = std::vector<std::string>;

/// Steps are `c` for copying a letter here, `f` elsewhere, `s` there as a secret, `a` for becoming
/// active, `<` and `>` for the previous and the next clip, `=` for the current one.
struct walk {
  char const* steps;
  char const* pasted;
  texts stack;
  char const* on_board;
};

}  // namespace

TEST_F(clip_history, is_walked_through) {
  for (walk const& expected : {
           walk{"c1 f2 a a = < >", "212", {"2", "1"}, "2"},
           walk{"f1 c2 < ", "1", {"2", "1"}, "1"},
           walk{"c1 c2 < f3 = <", "132", {"3", "2", "1"}, "2"},
           walk{"c1 s2 = > = < =", "22211", {"1"}, "1"},
           walk{"s1 a =", "1", {}, "1"},
       }) {
    SCOPED_TRACE(expected.steps);
    history_.clear();
    board_.set({});
    std::string pasted;
    for (char const* step = expected.steps; *step != '\0'; ++step) {
      if (*step == 'c') copy(std::string(1, *++step));
      if (*step == 'f') copy_elsewhere(std::string(1, *++step));
      if (*step == 's') copy_elsewhere(std::string(1, *++step), true);
      if (*step == 'a') history_.checkClipboard();
      if (*step == '<') pasted += utf8(history_.previousClip());
      if (*step == '>') pasted += utf8(history_.nextClip());
      if (*step == '=') pasted += utf8(history_.currentClip());
    }
    EXPECT_EQ(pasted, expected.pasted);
    EXPECT_EQ(stack(), expected.stack);
    EXPECT_EQ(on_board(), expected.on_board);
  }
}

TEST_F(clip_history, leaves_what_others_have_copied_as_it_is) {
  copy_elsewhere("e\u0301");
  auto const count = board_.change_count();
  EXPECT_EQ(utf8(current_clip()), "\u00e9");
  EXPECT_EQ(board_.change_count(), count);
  platform::user_defaults::standard().set("DisableClipboardPrecomposing", 1);
  copy_elsewhere("a\u0301");
  EXPECT_EQ(utf8(current_clip()), "a\u0301");
  // Another process of this program, whose text is composed as its user wants it.
  platform::user_defaults::standard().remove("DisableClipboardPrecomposing");
  text_clip const other{u"o\u0301\nb\xd800\n", true, std::nullopt};
  board_.set(pasteboard_types_of(other));
  EXPECT_EQ(current_clip()->text, other.text);
  EXPECT_TRUE(history_.stack().front()->rectangular);
  board_.set(pasteboard_types_of({u"x\ny", false, clip_origin{4, 2, -1}}));
  history_.checkClipboard();
  EXPECT_EQ(history_.previousClip()->rectangular, true);
  EXPECT_EQ(history_.nextClip()->origin->excess, -1);
}

TEST_F(clip_history, keeps_a_clip_in_its_shape) {
  std::u16string const odd = std::u16string(u"\0\xdc00\r", 3) + u"\u0344";
  set_current_clip({odd, false, clip_origin{8, 3, 2}});
  copy("b");
  auto const clip = history_.previousClip();
  EXPECT_EQ(clip->text, odd);
  EXPECT_EQ(clip->origin->indent, 8u);
}

// Random steps against a list. The bound on bytes is 2 * 100 units, so a clip has up to 25.
TEST_F(clip_history, is_a_bounded_list) {
  constexpr std::size_t most = 6, most_units = 100;
  platform::user_defaults::standard().set("WynClipboardHistoryCount", static_cast<int>(most));
  platform::user_defaults::standard().set("WynClipboardHistoryBytes", 200);
  struct state {
    texts stack;
    std::size_t at = 0;
    std::string current = "-";
    bool in_stack = false;
  };
  for (unsigned seed = 0; seed < 300 && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    history_.clear();
    board_.set({});
    state model;
    std::vector<state> outer;
    std::vector<std::unique_ptr<private_clipboard>> macros;
    auto const store = [&](std::string const& text) {
      model.current = text;
      model.in_stack = text.size() <= most_units / 4;
      if (!model.in_stack) return;
      model.stack.insert(model.stack.begin(), text);
      std::size_t units = 0, kept = 0;
      for (auto const& clip : model.stack)
        if ((units += clip.size()) <= most_units && kept < most) ++kept;
      model.stack.resize(kept);
      model.at = 0;
    };
    for (unsigned step = 0; step < 60 && !HasFailure(); ++step) {
      std::string const text(1 + random() % 30, static_cast<char>('a' + step % 26));
      unsigned const kind = random() % 8;
      std::string const board = on_board();
      if (kind < 2) {
        copy(text);
        store(text);
      } else if (kind == 2 && macros.empty()) {
        copy_elsewhere(text);
        history_.checkClipboard();
        store(text);
      } else if (kind == 3 && macros.size() < 3) {
        outer.push_back(model);
        macros.push_back(std::make_unique<private_clipboard>());
      } else if (kind == 4 && !macros.empty()) {
        macros.pop_back();
        model = outer.back();
        outer.pop_back();
      } else if (kind > 4) {
        bool const older = kind > 5;
        bool const selects = !model.stack.empty() && (model.in_stack || older);
        if (selects && !model.in_stack)
          model.at = 0;
        else if (selects && older)
          model.at = std::min(model.at + 1, model.stack.size() - 1);
        else if (selects && model.at > 0)
          --model.at;
        if (selects) {
          model.current = model.stack[model.at];
          model.in_stack = true;
        }
        EXPECT_EQ(utf8(older ? history_.previousClip() : history_.nextClip()), model.current);
      }
      EXPECT_EQ(stack(), model.stack);
      EXPECT_EQ(utf8(history_.currentClip()), model.current);
      EXPECT_EQ(on_board(), macros.empty() ? model.current : board);
    }
    while (!macros.empty()) macros.pop_back();
  }
}

// In units, however many bytes they have where they come from.
TEST_F(clip_history, measures_clips_by_their_units) {
  platform::user_defaults::standard().set("WynClipboardHistoryBytes", 80);
  for (char const* unit : {"x", "\u00e9", "\u20ac"}) {
    for (std::size_t const units : {10, 11, 31}) {
      std::string const text = repeated(unit, units);
      history_.clear();
      copy_elsewhere(text);
      EXPECT_EQ(utf8(current_clip()), text);
      EXPECT_EQ(stack(), units == 10 ? texts{text} : texts()) << text;
    }
  }
}

TEST_F(clip_history, does_without_a_stack) {
  auto& defaults = platform::user_defaults::standard();
  for (char const* key : {"WynClipboardHistoryCount", "WynClipboardHistoryBytes"}) {
    defaults.set(key, 0);
    copy("a");
    copy_elsewhere("b");
    EXPECT_EQ(utf8(history_.previousClip()), "b") << key;
    EXPECT_EQ(stack(), texts()) << key;
    defaults.remove(key);
  }
}
