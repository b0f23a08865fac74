#include "documents/WynDocument.h"
#include "grammar/tokenize_filter.h"
#include "headless/headless_desktop.h"
#include "headless/recording_graphics.h"
#include "platform/user_defaults.h"
#include "plist/text_reader.h"
#include "text/marked_text.h"
#include "textview/WynTextView.h"
#include "textview/view_will_change.h"

#include <gtest/gtest.h>

// Text with a grammar and a theme as it is drawn: cells are 8 by 16 pixels, the text begins at x =
// 4 and y = 2.
namespace {

constexpr char const* grammar_source =
    "{scopeName='t';patterns=("
    "{name=block;begin='<';end='>';patterns=({name=word;match='!\\w+';});},"
    "{name=word;match='!\\w+';},{name=note;match='#.*$';});}";
constexpr char const* theme_source =
    "({settings={background='#101010';foreground='#e0e0e0';caret='#ff0000';"
    "selection='#0000ff80';lineHighlight='#ffffff20';invisibles='#808080';};},"
    "{scope=block;settings={background='#003000';};},"
    "{scope='block word';settings={foreground='#ffff00';fontStyle='bold underline';};},"
    "{scope=note;settings={background='#ff000080';fontStyle=italic;};})";

class drawing : public testing::Test {
 protected:
  drawing()
      : former_(
            platform::user_defaults::set_standard(std::make_unique<platform::user_defaults>(""))) {
    auto const document = WynDocument::document();
    document->openDocument();
    text::view* const view = document->obtainView();
    auto added = std::make_unique<grammar::tokenize_filter>(*view->storage);
    tokenizer_ = added.get();
    view->install_tokenize_filter(std::move(added));
    document->releaseView(view);
    view_ = std::make_unique<WynTextView>();
    host_ = std::make_unique<headless::headless_view_host>(*view_);
    view_->setDocument(document);
    document->closeDocument();
    plist::value const rules = plist::convert(grammar_source);
    tokenizer_->set_rules(
        std::make_shared<grammar::catalogue const>(
            std::vector<grammar::catalogue::entry>{{"t", "T", "T", [rules] { return rules; }}}),
        0);
    view_->setCurrentStyleSheet(plist::convert(theme_source));
    host_->resize({84, 82});  // ten columns and five rows
  }
  ~drawing() override {
    host_.reset();
    view_.reset();
    platform::user_defaults::set_standard(std::move(former_));
  }

  void set(std::string_view text) {
    view_will_change const scope(*view_);
    marked_text::set(*view_->view(), text);
  }
  /// One operation a line, without the background and the clips.
  std::string drawn() {
    EXPECT_TRUE(tokenizer_->wait_for(~std::size_t{0}, std::chrono::minutes(1)));
    headless::recording_graphics g;
    view_->draw(g, host_->visible_rect());
    std::string result = "\n";
    for (std::string const& operation : g.operations())
      if (operation.find("clip") == std::string::npos && operation.find("84x82") == operation.npos)
        result += operation + "\n";
    return result;
  }

  headless::headless_desktop desktop_;
  std::unique_ptr<platform::user_defaults> former_;
  grammar::tokenize_filter* tokenizer_;
  std::unique_ptr<WynTextView> view_;
  std::unique_ptr<headless::headless_view_host> host_;
};

TEST_F(drawing, a_background_spans_the_scopes_inside_and_whole_lines) {
  view_->setHighlightCurrentLine(true);
  set("a <b !c d\n\n!e> f !g\n#no|te");
  EXPECT_EQ(drawn(), R"(
fill 20,2 64x16 #003000
fill 4,18 80x16 #003000
fill 4,34 24x16 #003000
fill 4,50 40x16 #870707
blend 0,50 84x16 #ffffff20
text 4,14 "a " #e0e0e0
text 20,14 "<b " #e0e0e0
text 44,14 "!c" #ffff00 bold underline
text 60,14 " d" #e0e0e0
text 4,46 "!e" #ffff00 bold underline
text 20,46 ">" #e0e0e0
text 28,46 " f !g" #e0e0e0
text 4,62 "#note" #e0e0e0 italic
fill 28,50 1x16 #ff0000
)");
}

TEST_F(drawing, dims_selection_and_line_while_the_keys_go_elsewhere) {
  view_->setHighlightCurrentLine(true);
  set("a[b c]d");
  EXPECT_EQ(drawn(), R"(
blend 12,2 24x16 #0000ff80
text 4,14 "ab cd" #e0e0e0
fill 36,2 1x16 #ff0000
)");
  host_->focused = false;
  EXPECT_EQ(drawn(), R"(
blend 12,2 24x16 #0000ff40
text 4,14 "ab cd" #e0e0e0
)");
  set("abc|");
  EXPECT_EQ(drawn(), R"(
blend 0,2 84x16 #ffffff10
text 4,14 "abc" #e0e0e0
)");
}

TEST_F(drawing, invisibles_stand_in_place_of_what_they_mark) {
  view_->setShowInvisibles(true);
  set("|a\tb\n\u00a0\x01\u007f\u0085\n<");
  EXPECT_EQ(drawn(), R"(
fill 4,34 80x16 #003000
text 4,14 "a" #e0e0e0
cluster 12,14 in 8 "‣" #808080
text 36,14 "b" #e0e0e0
cluster 44,14 in 8 "·" #808080
cluster 4,30 in 8 "•" #808080
cluster 12,30 in 8 "◆" #808080
cluster 20,30 in 8 "◆" #808080
cluster 28,30 in 8 "◆" #808080
cluster 36,30 in 8 "·" #808080
text 4,46 "<" #e0e0e0
fill 4,2 1x16 #ff0000
)");
}

TEST_F(drawing, wrapped_rows_keep_style_and_background) {
  view_->setLineNumbers(true);
  view_->setSoftWrap(true);
  host_->resize({200, 82});
  set("<abcdefg hijklmn opqrst> uvw\n|x");
  EXPECT_EQ(drawn(), R"(
fill 0,0 200x82 #101010
fill 0,0 50x82 #1a1a1a
text 38,14 "1" #888888
cluster 38,30 in 8 "↪" #888888
text 38,46 "2" #888888
fill 54,2 146x16 #003000
fill 54,18 56x16 #003000
text 54,14 "<abcdefg hijklmn " #e0e0e0
text 54,30 "opqrst>" #e0e0e0
text 110,30 " uvw" #e0e0e0
text 54,46 "x" #e0e0e0
fill 54,34 1x16 #ff0000
)");
}

}  // namespace
