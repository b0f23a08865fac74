#include "grammar/tokenize_filter.h"
#include "headless/recording_graphics.h"
#include "plist/text_reader.h"
#include "textview/shown_view.h"

// Text with a grammar and a theme as it is drawn.
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

class drawing : public shown_view_test, public shown_view {
 protected:
  drawing() : shown_view("|", document()) {
    tokenizer_ = dynamic_cast<grammar::tokenize_filter*>(view.view()->tokenize_filter.get());
    plist::value const rules = plist::convert(grammar_source);
    tokenizer_->set_rules(
        std::make_shared<grammar::catalogue const>(
            std::vector<grammar::catalogue::entry>{{"t", "T", "T", [rules] { return rules; }}}),
        0);
    view.setCurrentStyleSheet(plist::convert(theme_source));
    host.resize({84, 82});  // ten columns and five rows
  }
  /// One whose view has a tokenizer.
  static std::shared_ptr<WynDocument> document() {
    auto result = WynDocument::document();
    text::view* const released = result->obtainView();
    released->install_tokenize_filter(
        std::make_unique<grammar::tokenize_filter>(*released->storage));
    result->releaseView(released);
    return result;
  }
  /// One operation a line, without the background and the clips.
  std::string drawn() {
    EXPECT_TRUE(tokenizer_->wait_for(~std::size_t{0}, std::chrono::minutes(1)));
    headless::recording_graphics g;
    view.draw(g, host.visible_rect());
    std::string result = "\n";
    for (std::string const& operation : g.operations())
      if (operation.find("clip") == std::string::npos && operation.find("84x82") == operation.npos)
        result += operation + "\n";
    return result;
  }

  grammar::tokenize_filter* tokenizer_;
};

TEST_F(drawing, a_background_spans_the_scopes_inside_and_whole_lines) {
  settings::store().set("WynTextViewHighlightCurrentLine", true);
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
  settings::store().set("WynTextViewHighlightCurrentLine", true);
  set("a[b c]d");
  EXPECT_EQ(drawn(), R"(
blend 12,2 24x16 #0000ff80
text 4,14 "ab cd" #e0e0e0
fill 36,2 1x16 #ff0000
)");
  host.focused = false;
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
  settings::store().set("WynTextViewShowInvisiblesEnabled", true);
  set("|a\tb\n\u00a0\x01\u007f\u0085\n<");
  EXPECT_EQ(drawn(), R"(
fill 4,34 80x16 #003000
text 4,14 "a" #e0e0e0
cluster 12,14 in 8 "‣" #808080
text 36,14 "b" #e0e0e0
cluster 44,14 in 8 "¬" #808080
cluster 4,30 in 8 "•" #808080
cluster 12,30 in 8 "◆" #808080
cluster 20,30 in 8 "◆" #808080
cluster 28,30 in 8 "◆" #808080
cluster 36,30 in 8 "¬" #808080
text 4,46 "<" #e0e0e0
fill 4,2 1x16 #ff0000
)");
}

TEST_F(drawing, blanks_guides_brackets_and_the_ruler_stand_in_their_order) {
  view.setTabSize(2);
  settings::store().set("WynTextViewShowBlanks", true);
  settings::store().set("WynTextViewRulerColumn", 7);
  set("a (\n\n   b \n\n)|");
  EXPECT_EQ(drawn(), R"rows(
fill 60,0 1x82 #3a3a3a
fill 4,18 1x16 #2d2d2d
fill 4,34 1x16 #2d2d2d
fill 20,34 1x16 #2d2d2d
fill 4,50 1x16 #2d2d2d
fill 4,66 8x16 #313131
fill 4,66 8x1 #787878
fill 4,81 8x1 #787878
fill 4,66 1x16 #787878
fill 11,66 1x16 #787878
fill 20,2 8x16 #313131
fill 20,2 8x1 #787878
fill 20,17 8x1 #787878
fill 20,2 1x16 #787878
fill 27,2 1x16 #787878
text 4,14 "a (" #e0e0e0
text 4,14 " · " #808080
cluster 28,14 in 8 "¬" #808080
cluster 4,30 in 8 "¬" #808080
text 4,46 "   b " #e0e0e0
text 4,46 "··· ·" #808080
cluster 44,46 in 8 "¬" #808080
cluster 4,62 in 8 "¬" #808080
text 4,78 ")" #e0e0e0
fill 12,66 1x16 #ff0000
)rows");
}

TEST_F(drawing, characters_that_hide_are_always_marked) {
  set("|a\u200bb\u202ec\nd\u200de \U0001F469\u200D\U0001F467");
  EXPECT_EQ(drawn(), R"(
text 4,14 "a" #e0e0e0
fill 11,2 2x16 #ff6b6b
fill 8,2 8x2 #ff6b6b
fill 8,16 8x2 #ff6b6b
text 12,14 "b" #e0e0e0
fill 19,2 2x16 #ff6b6b
fill 16,2 8x2 #ff6b6b
fill 16,16 8x2 #ff6b6b
text 20,14 "c" #e0e0e0
cluster 4,30 in 8 "d‍" #e0e0e0
fill 11,18 2x16 #ff6b6b
fill 8,18 8x2 #ff6b6b
fill 8,32 8x2 #ff6b6b
text 12,30 "e " #e0e0e0
cluster 28,30 in 16 "👩‍👧" #e0e0e0
fill 4,2 1x16 #ff0000
)");
}

TEST_F(drawing, a_rectangle_has_a_caret_in_each_line) {
  set("a{bc\nabc\nab}c");
  EXPECT_EQ(drawn(), R"(
blend 12,2 8x16 #0000ff80
blend 12,18 8x16 #0000ff80
blend 12,34 8x16 #0000ff80
text 4,14 "abc" #e0e0e0
text 4,30 "abc" #e0e0e0
text 4,46 "abc" #e0e0e0
fill 20,34 1x16 #ff0000
fill 20,2 1x16 #ff0000
fill 20,18 1x16 #ff0000
)");
}

TEST_F(drawing, the_field_that_is_filled_in_is_marked) {
  settings::store().set("WynTextViewMatchingBrackets", false);
  set("a|\nb");
  auto const marks = [this] {
    std::string result;
    std::istringstream operations(drawn());
    for (std::string line; std::getline(operations, line);)
      if (line.starts_with("fill") || line.starts_with("blend")) result += "\n" + line;
    return result;
  };
  perform("insertSnippet:", plist::dictionary{{"content", "[${1:xy\nz} $2]$0."}});
  EXPECT_EQ(marks(), R"(
fill 20,2 16x16 #1e364e
fill 4,18 8x16 #1e364e
blend 20,2 64x16 #0000ff80
blend 4,18 8x16 #0000ff80
fill 12,18 1x16 #ff0000)");
  view.insertText(std::u16string_view(u"q"));
  EXPECT_EQ(marks(), R"(
fill 20,2 8x16 #1e364e
fill 28,2 1x16 #ff0000)");
  // An empty one, and then the last, with which the snippet ends.
  perform("nextSnippetField:");
  EXPECT_EQ(marks(), R"(
fill 35,2 3x16 #1e364e
fill 36,2 1x16 #ff0000)");
  perform("nextSnippetField:");
  EXPECT_EQ(marks().find("#1e364e"), std::string::npos);
}

TEST_F(drawing, wrapped_rows_keep_style_and_background) {
  settings::store().set("WynTextViewLineNumbersEnabled", true);
  view.setSoftWrap(true);
  host.resize({200, 82});
  set("<abcdefg hijklmn opqrst> uvw\n|x");
  EXPECT_EQ(drawn(), R"(
fill 0,0 200x82 #101010
fill 0,0 28x82 #1a1a1a
text 14,14 "1" #878787
cluster 14,30 in 8 "↪" #878787
text 14,46 "2" #cfcfcf
fill 32,2 168x16 #003000
fill 32,18 56x16 #003000
text 32,14 "<abcdefg hijklmn " #e0e0e0
text 32,30 "opqrst>" #e0e0e0
text 88,30 " uvw" #e0e0e0
text 32,46 "x" #e0e0e0
fill 32,34 1x16 #ff0000
)");
}

}  // namespace
