#include "grammar/tokenize_filter.h"
#include "layout/bracket_marks.h"
#include "layout/word_marks.h"
#include "platform/graphics.h"
#include "plist/text_reader.h"
#include "text/random_text.h"
#include "textview/shown_view.h"

// What is marked besides the selection, and that what changes on the screen is drawn again.
namespace {

using platform::rect;

/// Keeps, for points of a grid over the view, what was drawn there.
class sampled_graphics : public platform::graphics {
 public:
  explicit sampled_graphics(rect const& area) : area_(area), samples_(columns() * rows()) {}

  void fill_rect(rect const& r, platform::color c, bool composite) override {
    auto const key = (c.red << 24) ^ (c.green << 16) ^ (c.blue << 8) ^ c.alpha;
    at(r, [&](std::size_t& sample) { sample = (composite ? sample * 31 : 0) + std::size_t(key); });
  }
  void draw_run(std::u16string_view run, platform::point baseline, double cell,
                platform::text_style const& style) override {
    for (char16_t const unit : run) {
      if (unit != u' ') draw_cluster({&unit, 1}, baseline, cell, style);
      baseline.x += cell;
    }
  }
  void draw_cluster(std::u16string_view cluster, platform::point baseline, double width,
                    platform::text_style const& style) override {
    std::size_t const key = std::hash<std::u16string_view>()(cluster) ^ style.foreground.red;
    at({baseline.x, baseline.y - 12, width, 16},
       [&](std::size_t& sample) { sample = sample * 31 + key; });
  }
  void draw_image(std::string_view, rect const& r) override {
    at(r, [](std::size_t& sample) { sample = sample * 31 + 7; });
  }
  void push_clip(rect const& r) override { clips_.push_back(r); }
  void pop_clip() override { clips_.pop_back(); }

  /// A point that differs from `other` and isn't in `drawn_again`.
  std::optional<platform::point> stale_point(sampled_graphics const& other,
                                             std::vector<rect> const& drawn_again) const {
    for (std::size_t i = 0; i < samples_.size(); ++i) {
      platform::point const p = point_of(i);
      auto const covers = [&](rect const& r) { return r.contains(p); };
      if (samples_[i] != other.samples_[i] &&
          std::none_of(drawn_again.begin(), drawn_again.end(), covers))
        return p;
    }
    return std::nullopt;
  }

 private:
  static constexpr double step_x = 1, step_y = 4;
  std::size_t columns() const { return static_cast<std::size_t>(area_.width / step_x); }
  std::size_t rows() const { return static_cast<std::size_t>(area_.height / step_y); }
  platform::point point_of(std::size_t sample) const {
    return {area_.x + step_x * (static_cast<double>(sample % columns()) + 0.5),
            area_.y + step_y * (static_cast<double>(sample / columns()) + 0.5)};
  }
  template <typename Draw>
  void at(rect r, Draw draw) {
    r = r.intersection(clips_.empty() ? area_ : clips_.back());
    auto const first = [](double from, double step) { return std::ceil(from / step - 0.5); };
    for (double y = first(r.y - area_.y, step_y); y < (r.bottom() - area_.y) / step_y - 0.5; ++y)
      for (double x = first(r.x - area_.x, step_x); x < (r.right() - area_.x) / step_x - 0.5; ++x)
        draw(samples_[static_cast<std::size_t>(y) * columns() + static_cast<std::size_t>(x)]);
  }

  rect area_;
  std::vector<std::size_t> samples_;
  std::vector<rect> clips_;
};

class marks : public shown_view_test, public shown_view {
 protected:
  /// Both places in the text, in order, or "".
  std::string brackets() {
    auto const found = view.bracketMarks().places();
    if (!found) return "";
    auto const [first, last] = std::minmax(found->first, found->second);
    auto const described = [](text::pos const& at) {
      return std::to_string(at.line) + ":" + std::to_string(at.column);
    };
    return described(first) + " " + described(last);
  }
  /// The same, of the plain text.
  std::string expected_brackets() {
    std::u16string const units = marked_text::units_of(*view.view()->storage);
    text::iterator const caret = view.view()->selection.current_mark.base;
    if (view.view()->has_selection()) return "";
    auto const offset =
        static_cast<std::size_t>(caret - text::iterator(0, 0, view.view()->storage));
    for (std::size_t const at : {offset, offset - 1}) {
      if (at >= units.size()) continue;
      std::size_t const kind = std::u16string_view(u"([{)]}").find(units[at]);
      if (kind == std::u16string_view::npos) continue;
      std::ptrdiff_t const step = kind < 3 ? 1 : -1;
      char16_t const other = std::u16string_view(u")]}([{")[kind];
      int depth = 0;
      for (std::size_t to = at; to < units.size(); to += static_cast<std::size_t>(step)) {
        depth += units[to] == units[at] ? 1 : units[to] == other ? -1 : 0;
        if (depth != 0) continue;
        auto const described = [&](std::size_t index) {
          auto const line = std::count(units.begin(), units.begin() + std::ptrdiff_t(index), u'\n');
          std::size_t const begin = index == 0 ? 0 : units.rfind(u'\n', index - 1) + 1;
          return std::to_string(line) + ":" + std::to_string(index - begin);
        };
        return described(std::min(at, to)) + " " + described(std::max(at, to));
      }
      return "";
    }
    return "";
  }
  /// The places of the selected word, each as its line and column.
  std::string words() {
    std::string result;
    for (auto const& [first, last] : view.wordMarks().places())
      result += std::to_string(first.line) + ":" + std::to_string(first.column) + " ";
    return result;
  }
  std::string expected_words() {
    text::view const& in = *view.view();
    std::u16string const word = marked_text::units(
        view.view()->has_selection() ? unicode_of(view.selected_text()) : std::string());
    auto const is_word = [](char16_t u) { return u == u'_' || (u < 128 && std::isalnum(u)); };
    auto const stands_alone = [&](text::unit_view line, std::size_t at) {
      return (at == 0 || !is_word(line[at - 1])) &&
             (at + word.size() == line.size() || !is_word(line[at + word.size()]));
    };
    text::iterator const own = in.selection.first().base;
    if (word.empty() || in.selection.column_mode ||
        !std::all_of(word.begin(), word.end(), is_word) ||
        !stands_alone(in.storage->line_units(own.line), own.column))
      return "";
    std::string result;
    for (std::size_t line = 0; line < in.storage->lines(); ++line) {
      text::unit_view const units = in.storage->line_units(line);
      for (std::size_t at = 0; (at = units.find(word, at)) != units.npos; ++at)
        if (stands_alone(units, at) && text::pos(line, at) != own.pos())
          result += std::to_string(line) + ":" + std::to_string(at) + " ";
    }
    return result;
  }
  static std::string unicode_of(std::u16string_view units) { return marked_text::utf8(units); }

  void random_step(random_source& random) {
    static constexpr char const* actions[] = {"moveLeft:",
                                              "moveRight:",
                                              "moveUp:",
                                              "moveDown:",
                                              "moveRightAndModifySelection:",
                                              "moveDownAndModifySelection:",
                                              "moveWordLeftAndModifySelection:",
                                              "selectWord:",
                                              "insertNewline:",
                                              "deleteBackward:",
                                              "deleteForward:",
                                              "moveToTextOrBeginningOfLine:",
                                              "moveToEndOfLine:",
                                              "toggleColumnSelection:",
                                              "undo:",
                                              "redo:",
                                              "insertTab:",
                                              "toggleCurrentBookmark:"};
    if (random.one_in(3)) {
      std::u16string const typed = random.text(1, u"((([{)]}ab ab  \t");
      return view.insertText(std::u16string_view(typed));
    }
    perform(actions[random.below(std::size(actions))]);
  }
};

TEST_F(marks, follow_random_edits_and_all_that_changes_is_drawn_again) {
  host.resize({8 * 24, 16 * 14});
  for (unsigned seed = 1; seed <= 24; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    random_source random(seed);
    settings::store().set("WynTextViewLineNumbersEnabled", seed % 2 == 0);
    settings::store().set("WynTextViewHighlightCurrentLine", seed % 3 != 0);
    settings::store().set("WynTextViewShowBlanks", seed % 4 == 0);
    view.setSoftWrap(seed % 2 == 1);
    set("|" + marked_text::utf8(random.text(60, u"(){}[] \n\nab_ ab  \t")));
    for (int step = 0; step < 60; ++step) {
      desktop_.loop().run_for(0.1);
      rect const visible = host.visible_rect();
      sampled_graphics before(visible), after(visible);
      view.draw(before, visible);
      host.dirty.clear();
      random_step(random);
      desktop_.loop().run_for(0.1);
      ASSERT_EQ(brackets(), expected_brackets()) << "step " << step << "\n" << get();
      if (host.visible_rect() != visible) continue;
      ASSERT_EQ(words(), expected_words()) << "step " << step << "\n" << get();
      view.draw(after, visible);
      auto const stale = after.stale_point(before, host.dirty);
      ASSERT_FALSE(stale) << "step " << step << " at " << stale->x << "," << stale->y << "\n"
                          << get();
    }
  }
}

// A key looks at some thousand units; the rest of the way is gone when nothing else happens.
TEST_F(marks, a_partner_far_away_is_found_in_slices) {
  std::string const far(1'000'000, 'x');
  for (char const* gap : {"", "\n"}) {
    set("(|" + std::string(gap) + far + ")");
    EXPECT_EQ(brackets(), "");
    EXPECT_TRUE(view.bracketMarks().is_searching());
    desktop_.loop().run_for(1);
    EXPECT_FALSE(view.bracketMarks().is_searching());
    EXPECT_EQ(brackets(), *gap == 0 ? "0:0 0:1000001" : "0:0 1:1000000");
    // Typing on begins anew, and a movement away from the bracket ends it.
    view.insertText(std::u16string_view(u"a"));
    EXPECT_EQ(brackets(), "");
    perform("moveLeft:");
    EXPECT_TRUE(view.bracketMarks().is_searching());
    perform("moveToEndOfLine:");
    perform("moveLeft:");
    desktop_.loop().run_for(1);
  }
  settings::store().set("WynTextViewMatchingBrackets", false);
  set("(|)");
  EXPECT_EQ(brackets(), "");
}

TEST_F(marks, brackets_of_strings_and_comments_only_go_with_their_like) {
  auto document = WynDocument::document();
  text::view* const released = document->obtainView();
  released->install_tokenize_filter(std::make_unique<grammar::tokenize_filter>(*released->storage));
  document->releaseView(released);
  view.setDocument(document);
  plist::value const rules = plist::convert(
      "{scopeName='source.t';patterns=({name='string.quoted';begin='\"';end='\"';"
      "patterns=({name='source.inner';begin='<';end='>';});},{name='comment.line';match='#.*$';});"
      "}");
  view.tokenizer()->set_rules(
      std::make_shared<grammar::catalogue const>(std::vector<grammar::catalogue::entry>{
          {"t", "T", "source.t", [rules] { return rules; }}}),
      0);
  auto const marked = [&](char const* drawing) {
    set(drawing);
    EXPECT_TRUE(view.tokenizer()->wait_for(~std::size_t{0}, std::chrono::minutes(1)));
    desktop_.loop().run_for(1);
    return brackets();
  };
  EXPECT_EQ(marked("|(\")\" #)\n)"), "0:0 1:0");
  EXPECT_EQ(marked("(\"|(\" \")\" )"), "0:2 0:6");
  EXPECT_EQ(marked("(\"<|(>\" )"), "0:3 0:7");
  EXPECT_EQ(marked("(\"<(>\" |))"), "0:3 0:7");
}

// Of a long line no more is looked at than what shows.
TEST_F(marks, words_of_long_lines_are_marked_where_they_show) {
  std::string line;
  for (int i = 0; i < 100'000; ++i) line += " word";
  set("[word]" + line);
  EXPECT_EQ(view.wordMarks().places().size(), 25u);
  settings::store().set("WynTextViewSelectedWord", false);
  EXPECT_TRUE(view.wordMarks().places().empty());
}

}  // namespace
