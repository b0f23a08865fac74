#include "snippets/session.h"

#include "platform/utf.h"
#include "snippets/parse_snippet.h"
#include "test.h"
#include "text/marked_text.h"
#include "text/random_text.h"

namespace {

/// A text "before\n", a snippet and "\nafter", filled in through the view.
class filled_snippet {
 public:
  explicit filled_snippet(std::string const& source, bool soft_tabs = false) {
    view.set_tab_size(4);
    view.set_treats_spaces_as_tabs(soft_tabs);
    std::u16string const around = u"before\n\nafter";
    storage.insert(storage.end(-1), around.begin(), around.end());
    std::string fault;
    std::vector<std::string> warnings;
    auto const made = snippet::parse(source, {.soft_tabs = soft_tabs}, fault, warnings);
    EXPECT_NE(made, nullptr) << fault;
    text::undo_group const group(storage.undo_manager);
    text::iterator const at = storage.begin_of_line(1);
    storage.insert(at, made->text().begin(), made->text().end());
    auto session = std::make_unique<snippet::session>(view, at, *made);
    live = session.get();
    view.set_snippet_observer(std::move(session));
    select_field();
  }

  void select_field() {
    auto const field = live->active_tab_stop();
    view.selection.set_caret({&view, {field.first(), &storage}});
    view.selection.select_to({&view, {field.last(), &storage}}, false);
  }
  void type(std::u16string_view text) {
    text::undo_group const group(storage.undo_manager);
    view.insert(text.begin(), text.end());
  }
  void erase_backward() {
    text::undo_group const group(storage.undo_manager);
    auto const caret = view.selection.current_mark;
    if (view.selection.empty() && caret.base.column > 0)
      view.selection.select_to({&view, caret.base - 1}, false);
    view.erase_selection();
  }
  void go(bool forward) {
    if (!live->is_running()) return;
    forward ? live->next() : live->previous();
    select_field();
  }
  void insert_at(std::size_t line, std::size_t column) {
    view.selection.set_caret({&view, text::iterator(line, column, &storage)});
    type(u"#");
  }
  /// The text with the current field in brackets while the snippet runs.
  std::string drawn() {
    std::string text = marked_text::text_of(storage);
    if (!live->is_running()) return text + " (ended)";
    auto const field = live->active_tab_stop();
    view.selection.set_caret({&view, {field.first(), &storage}});
    view.selection.select_to({&view, {field.last(), &storage}}, false);
    return marked_text::get(view);
  }

  text::storage storage;
  text::view view{storage};
  snippet::session* live = nullptr;
};

void perform(filled_snippet& on, random_source& random) {
  switch (random.below(7)) {
    case 0:
    case 1:
      return on.type(random.one_in(4) ? u"a\n" : u"b");
    case 2:
      return on.erase_backward();
    case 3:
    case 4:
      return on.go(!random.one_in(4));
    case 5:
      if (on.live->is_running()) on.select_field();
      return on.type(u"\u00e9");
    default:
      if (random.one_in(4)) on.insert_at(random.one_in(2) ? 0 : 1, 0);
  }
}

}  // namespace

TEST(snippet_session, fields_are_filled_and_mirrors_follow) {
  filled_snippet on("f(${1:a}, ${2:b$1}) $1${1/./\\U$0/g}$0;");
  EXPECT_EQ(on.drawn(), "before\nf([a], ba) aA;\nafter");
  on.type(u"x");
  on.type(u"y");
  EXPECT_EQ(on.drawn(), "before\nf([xy], bxy) xyXY;\nafter");
  on.go(true);
  EXPECT_EQ(on.drawn(), "before\nf(xy, [bxy]) xyXY;\nafter");
  on.type(u"q");
  on.go(false);
  on.type(u"z");
  EXPECT_EQ(on.drawn(), "before\nf([z], q) zZ;\nafter");
  on.insert_at(0, 0);
  EXPECT_EQ(on.drawn(), "#before\nf(z, q) zZ;\nafter (ended)");
}

TEST(snippet_session, is_as_it_was_after_undo_and_redo) {
  filled_snippet on("${1:a} $1 ${2:b}");
  on.type(u"x");
  on.go(true);
  on.type(u"y");
  auto& undo = on.storage.undo_manager;
  undo.undo();
  undo.undo();
  EXPECT_EQ(on.drawn(), "before\n[a] a b\nafter");
  undo.undo();
  EXPECT_EQ(on.drawn(), "before\n\nafter (ended)");
  undo.redo();
  undo.redo();
  EXPECT_EQ(on.drawn(), "before\nx x [b]\nafter");
  undo.redo();
  on.select_field();
  on.type(u"z");
  EXPECT_EQ(on.drawn(), "before\nx x [z]\nafter");
  while (on.view.can_undo()) undo.undo();
  on.insert_at(0, 0);
  undo.undo();
  EXPECT_FALSE(on.live->is_running());
}

TEST(snippet_session, soft_tabs_reach_mirrors_at_their_columns) {
  filled_snippet on("${1}|x $1|", true);
  on.type(u"a\tb");
  EXPECT_EQ(on.drawn(), "before\n[a\tb]|x a   b|\nafter");
}

TEST(snippet_session, histories_of_undo_and_redo_change_nothing) {
  for (unsigned seed = 0; seed < 400; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    random_source random(seed);
    static constexpr char const* sources[] = {"${1:a} $1 ${2:b} $0.",
                                              "${2:x${1:y}z}\n$2 ${1/./-/g}",
                                              "${1:a}${2:$1}${3:$2$1} $3", "$1-${1:a} $2${2:b}"};
    char const* const source = sources[random.below(std::size(sources))];
    filled_snippet straight(source), detour(source);
    auto const head = random.below(1'000'000), tail = random.below(1'000'000);
    for (auto* on : {&straight, &detour}) {
      random_source steps(static_cast<unsigned>(head));
      for (int n = 0; n < 12; ++n) perform(*on, steps);
    }
    std::size_t undone = 0;
    for (std::size_t n = random.up_to(8); n != 0 && detour.view.can_undo(); --n, ++undone)
      detour.storage.undo_manager.undo();
    for (; undone != 0; --undone) detour.storage.undo_manager.redo();
    detour.view.selection = straight.view.selection;
    for (auto* mark : {&detour.view.selection.first_mark, &detour.view.selection.last_mark,
                       &detour.view.selection.current_mark}) {
      mark->view = &detour.view;
      mark->base.storage = &detour.storage;
    }
    for (auto* on : {&straight, &detour}) {
      random_source steps(static_cast<unsigned>(tail));
      for (int n = 0; n < 8; ++n) perform(*on, steps);
    }
    ASSERT_EQ(detour.drawn(), straight.drawn());
  }
}
