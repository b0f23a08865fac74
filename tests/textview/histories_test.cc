#include "actions/WynPasteboardManager.h"
#include "bundles/BundleManager.h"
#include "search/WynFindManager.h"
#include "text/random_text.h"
#include "text/views/bookmark_filter.h"
#include "text/views/folding_filter.h"
#include "textview/shown_view.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <map>
#include <sstream>
#include <vector>

using namespace textview;

// Random histories of two views of one document. A sequence, k undos, k redos and a tail must equal
// the sequence and the tail: in text, selections, marks, the widest row, and in what each further
// step does. HISTORY_SEEDS=FIRST-LAST runs others than the usual ones,
// and HISTORY_LOG shows all states of one that fails.
namespace {

struct step {
  enum kind { action, go_to, select, select_columns, move, compose };

  std::size_t view = 0;
  kind what = action;
  std::string selector;
  plist::value argument;
  // Where, as shares of the lines and columns that there are: random numbers, so that steps don't
  // depend on the text.
  std::size_t line = 0, column = 0, lines = 0, columns = 0;
};

std::string described(step const& made) {
  std::ostringstream out;
  out << "view " << made.view << " ";
  if (made.what == step::action) {
    std::string const text = made.argument.string_or("");
    out << made.selector << " " << (text.size() < 40 ? text : std::to_string(text.size()));
    if (made.argument.as_dictionary() != nullptr)
      for (auto const& [key, value] : made.argument.entries())
        out << key << " " << value.string_or("") << " ";
    for (plist::value const& part : made.argument.elements())
      out << part["command"].string_or("") << " ";
  } else if (made.what == step::compose) {
    out << made.selector;
  } else {
    out << (made.what == step::go_to    ? "go to"
            : made.what == step::select ? "select"
            : made.what == step::move   ? "move"
                                        : "columns")
        << " " << made.line << "," << made.column << " +" << made.lines << "," << made.columns;
  }
  return out.str();
}

using folding_filter = class text::view::folding_filter;

folding_filter::pattern pattern(std::u16string_view source) {
  return std::make_unique<oniguruma::ptrn_t>(source.data(), source.data() + source.size(), 0u);
}

/// A document with two views.
class world {
 public:
  explicit world(std::string const& text, bool wraps) {
    for (std::size_t view = 0; view < 2; ++view) {
      text::view& at = *views_[view].view.view();
      at.folding_filter->set_patterns(pattern(u"\\{\\s*$"), pattern(u"^\\s*\\}"));
      views_[view].view.setOverwriteMode(false);
      views_[view].view.setRightMargin(wraps ? 9 : -1);
      views_[view].view.setSoftWrap(wraps);
    }
    settings::store().set("WynTextViewFreehandedModeEnabled", false);
    std::u16string const units = marked_text::units(text);
    document_->storage().insert(document_->storage().end(-1), units.begin(), units.end());
    document_->storage().forget_history();
  }

  void perform(step const& made) {
    run(made);
    expect_known_text();
  }
  void undo_or_redo(std::size_t view, bool undo) {
    views_[view].perform(undo ? "undo:" : "redo:");
    expect_known_text();
  }

  /// Other views show what a change of one has done to them; equal mementos mean equal text; and
  /// marks stand at characters.
  void expect_known_text() {
    platform::desktop::current().loop().run_for(0);
    EXPECT_EQ(texts_.try_emplace(memento(), text()).first->second, text());
    for (shown_view& shown : views_) {
      text::selection const& s = shown.view.view()->selection;
      for (auto const* mark : {&s.first_mark, &s.last_mark, &s.current_mark}) {
        EXPECT_TRUE(shown.view.view()->is_visible(mark->base));
        text::unit_view const line = document_->storage().line_units(mark->base.line);
        EXPECT_FALSE(unicode::splits_pair(line, mark->base.column));
      }
    }
  }

  std::uint32_t memento() { return document_->storage().current_memento; }
  std::size_t undo_steps() { return document_->storage().undo_manager.stack.top().undo.size(); }
  std::u16string text() { return marked_text::units_of(document_->storage()); }
  /// All that can be seen but the text.
  std::string seen() {
    std::ostringstream out;
    out << seen_in(0) << seen_in(1) << "edited " << document_->isDocumentEdited() << " undo "
        << views_[0].view.view()->can_undo() << " redo " << views_[0].view.view()->can_redo();
    return out.str();
  }
  std::string seen_in(std::size_t number) {
    std::ostringstream out;
    text::view& view = *views_[number].view.view();
    text::selection const& s = view.selection;
    for (auto const* mark : {&s.first_mark, &s.last_mark, &s.current_mark})
      out << mark->base.line << ":" << mark->base.column << "+" << mark->offset << " ";
    out << (s.column_mode ? "columns" : "") << " bookmarks";
    for (auto const& [line, column] : view.bookmark_filter->marks.list())
      out << " " << line << ":" << column;
    out << " folds";
    for (auto const& fold : view.folding_filter->foldings)
      out << " " << fold.first << "-" << fold.last;
    out << " rows " << view.lines() << " widest " << view.columns() << ";";
    if (view.snippet_observer && view.snippet_observer->is_running()) {
      auto const field = view.snippet_observer->active_tab_stop();
      out << " field " << field.first_line << ":" << field.first_column << "-" << field.last_line
          << ":" << field.last_column;
    }
    out << "\n";
    return out.str();
  }
  /// How rows are broken, before and after all lines are laid out anew.
  void expect_rows_as_laid_out_anew() {
    for (shown_view& shown : views_) {
      text::view& view = *shown.view.view();
      auto const rows = [&view] {
        std::vector<std::pair<std::size_t, std::size_t>> result;
        for (std::size_t row = 0; row < view.lines(); ++row)
          result.emplace_back(view.begin(row).base.line, view.begin(row).base.column);
        return result;
      };
      auto const before = rows();
      bool const wraps = shown.view.softWrap();
      shown.view.setSoftWrap(!wraps);
      shown.view.setSoftWrap(wraps);
      EXPECT_EQ(rows(), before);
    }
  }
  /// What is kept up with the changes, against what it is when made anew.
  void expect_up_to_date() {
    for (shown_view& shown : views_) {
      text::view& view = *shown.view.view();
      if (!view.soft_wrap) EXPECT_EQ(view.columns(), view.max_columns_for_range(0, view.lines()));
      for (auto const& range : view.notify_observer.notifications) expect_inside(range);
      for (auto const& [source, target] : view.mirror_observer.mirrors) {
        expect_inside(source);
        expect_inside(target);
      }
    }
  }

 private:
  void run(step const& made) {
    shown_view& at = views_[made.view];
    if (made.what == step::action) {
      if (made.argument["findString"])
        WynFindManager::sharedInstance().setOptions(made.argument.entries());
      return at.perform(made.selector, made.argument);
    }
    if (made.what == step::compose) {
      std::u16string const text = marked_text::units(made.selector);
      at.view.set_marked_text(text, 0, text.size());
      return made.lines % 3 == 0 ? at.view.unmark_text() : at.view.insert_text(text + u"x");
    }
    text::storage& storage = document_->storage();
    std::size_t const line = made.line % storage.lines();
    std::size_t const column = made.column % (storage.size(line) + 1);
    if (made.what == step::move) return move_selection(at, {line, column, &storage});
    at.view.goToLineAndColumn({line + 1, column + 1});
    if (made.what == step::go_to) return;
    std::size_t const last = std::min(line + made.lines, storage.lines() - 1);
    bool const columns = made.what == step::select_columns;
    std::size_t const to =
        columns ? column + made.columns : made.columns % (storage.size(last) + 1);
    at.view.selectToLineAndColumn({last + 1, to + 1}, columns);
  }
  /// As by drag and drop, which doesn't drop on the selection.
  static void move_selection(shown_view& shown, text::iterator const& to) {
    text::view& view = *shown.view.view();
    text::selection const& from = view.selection;
    if (from.empty() || (from.first().base.line <= to.line && to.line <= from.last().base.line))
      return;
    view_will_change const scope(shown.view, true);
    view.move_selection_to({&view, to});
  }
  void expect_inside(text::iterator_observer::subset const& range) {
    text::storage const& storage = document_->storage();
    EXPECT_LE(range.first(), range.last());
    for (text::pos const at : {range.first(), range.last()}) {
      ASSERT_LT(at.line, storage.lines());
      EXPECT_LE(at.column, storage.size(at.line));
    }
  }

  own_defaults const defaults_;
  std::map<std::uint32_t, std::u16string> texts_;  // by memento
  std::shared_ptr<WynDocument> document_ = WynDocument::document();
  shown_view views_[2] = {shown_view("|", document_), shown_view("|", document_)};
};

class step_maker {
 public:
  step_maker(random_source& random, bool large, bool wide)
      : random_(random), large_(large), wide_(wide) {}

  step any() {
    step made;
    made.view = random_.one_in(6) ? 1 : 0;
    std::size_t const choice = random_.below(100);
    if (choice < 30) return type(made);
    if (choice < 48) return place(made);
    if (choice < 58) return action(made, pick(edits));
    if (choice < 64) return action(made, pick(clipboard));
    if (choice < 76) return action(made, pick(movements));
    if (choice < 82) return action(made, pick(marks));
    if (choice < 88) return action(made, pick(known_));
    if (choice < 92) return search(made);
    if (choice < 95) return random_.one_in(3) ? compose(made) : item(made);
    if (choice < 98) return action(made, pick(rest));
    return action(made, pick({"undo:", "redo:", "undoTyping:", "redoTyping:"}));
  }
  /// One that changes the text as a rule.
  step edit() {
    step made;
    if (random_.one_in(2)) return type(made);
    return action(made, random_.one_in(4) ? pick(known_) : pick(edits));
  }
  step typed(std::u16string const& text) {
    step made;
    return action(made, "insertText:", marked_text::utf8(text));
  }

 private:
  using names = std::vector<std::string>;

  /// All that a view knows by name and that acts on its text without a window.
  static names actions_of_views() {
    own_defaults const defaults;
    names result;
    for (std::string const& name : shown_view().view.selectors()) {
      bool const is_query =
          !name.ends_with(":") || name.ends_with("IsChecked:") || name.starts_with("can");
      auto const is_about = [&name](char const* what) { return name.find(what) != name.npos; };
      if (is_query ||
          std::ranges::any_of(
              std::initializer_list<char const*>{
                  "orderFront", "pboard", "changeLanguage", "ISIM_", "makeText", "undo", "redo",
                  "replaceAndFind:", "showScope", "print", "abortShowing", "Pboard", "xecute"},
              is_about))
        continue;
      result.push_back(name);
    }
    return result;
  }

  step type(step& made) {
    if (random_.one_in(large_ ? 8 : 60))
      return action(
          made, "insertText:",
          marked_text::utf8(random_.text(33'000 + random_.below(5000), u"ab c\ndefgh{}\n")));
    if (wide_) return action(made, "insertText:", marked_text::utf8(random_.characters(1)));
    static constexpr std::u16string_view units = u"abc  ({[\"')]}\t";
    return action(made, "insertText:", marked_text::utf8(random_.text(1, units)));
  }
  step place(step& made) {
    std::size_t const what = random_.below(6);
    made.what = what < 2   ? step::go_to
                : what < 3 ? step::select
                : what < 5 ? step::select_columns
                           : step::move;
    made.line = random_.below(10'000);
    made.column = random_.below(random_.one_in(2) ? 4 : 1000);
    made.lines = random_.below(random_.one_in(10) ? 5000 : 5);
    made.columns = random_.one_in(2) ? 0 : random_.below(6);
    return made;
  }
  step search(step& made) {
    static constexpr char const* patterns[][2] = {
        {"a", "bb"}, {"[a-c]+", ""},     {"\\s", "\n"},      {"^", "x"},
        {"$", ";"},  {"(?<=\\w)", "\t"}, {"(.)(.)", "$2$1"}, {"\n", ""}};
    auto const& [find, replacement] = patterns[random_.below(std::size(patterns))];
    static names const selectors = {"replaceAll:",     "replaceAll:", "replaceAllInSelection:",
                                    "replaceAndFind:", "findNext:",   "findPrevious:"};
    return action(
        made, pick(selectors),
        plist::dictionary{
            {"findString", find}, {"replaceString", replacement}, {"regularExpression", true}});
  }
  step compose(step& made) {
    made.what = step::compose;
    made.selector = marked_text::utf8(random_.characters(2));
    made.lines = random_.below(3);
    return made;
  }
  /// Snippets and macros; of bundles, as the select window executes them, too.
  step item(step& made) {
    static names const sources = {"${1:a} $1 ${2:b} $0.", "${2:x${1:y}z}\n$2 ${1/./-/g}",
                                  "f(${1:a}\t)\n{\n\t$1$0\n}\n"};
    std::size_t const what = random_.below(8);
    if (what < 3)
      return action(made, "insertSnippet:", plist::dictionary{{"content", pick(sources)}});
    if (what < 5) return action(made, what == 3 ? "nextSnippetField:" : "previousSnippetField:");
    if (what < 6) return action(made, "executeBundleItem:", pick(shipped_));
    if (what < 7) return action(made, "executeCommandWithOptions:", command());
    plist::array steps;
    for (std::size_t n = random_.below(5); n > 0; --n)
      steps.push_back(
          plist::dictionary{{"command", random_.one_in(2) ? pick(edits) : pick(movements)}});
    steps.push_back(plist::dictionary{{"command", "insertText:"}, {"argument", "m"}});
    return action(made, "playMacroWithOptions:", std::move(steps));
  }
  plist::dictionary command() {
    static names const scripts = {"cat", "tr a b", "sed p", "rev", "echo '${1:x} $1'", ":"};
    static names const inputs = {"none", "selection", "selection", "document"};
    static names const without = {"", "", "document", "character", "word", "line", "scope"};
    static names const outputs = {"replaceSelectedText", "replaceSelectedText", "replaceDocument",
                                  "afterSelectedText",   "insertAsSnippet",     "replaceSelection"};
    return {{"command", pick(scripts)},       {"input", pick(inputs)},
            {"fallbackInput", pick(without)}, {"output", pick(outputs)},
            {"eachRow", random_.one_in(2)},   {"inputFormat", random_.one_in(6) ? "xml" : "text"}};
  }
  static names shipped_items() {
    names result;
    for (auto const& item :
         BundleManager::sharedInstance().bundleItemsOfKind(bundles::item_kind::snippet))
      if (item->content()["content"].string_or("`").find('`') == std::string::npos)
        result.push_back(item->UUID());
    std::sort(result.begin(), result.end());
    return result;
  }
  step action(step& made, std::string selector, plist::value argument = {}) {
    made.selector = std::move(selector);
    if (made.selector == "foldAllAtLevel:") argument = static_cast<int>(random_.below(3));
    made.argument = std::move(argument);
    return made;
  }
  std::string const& pick(names const& from) { return from[random_.below(from.size())]; }

  static inline names const edits = {
      "deleteBackward:", "deleteBackward:",         "deleteForward:", "deleteForward:",
      "insertNewline:",  "insertNewline:",          "insertTab:",     "deleteWordLeft:",
      "delete:",         "deleteToEndOfParagraph:", "indent:",        "insertNewline:"};
  static inline names const clipboard = {
      "cut:",  "copy:",          "copy:",      "paste:",          "paste:",
      "yank:", "pastePrevious:", "pasteNext:", "nextCompletion:", "pasteWithoutReindent:"};
  static inline names const movements = {"moveLeft:",
                                         "moveRight:",
                                         "moveUp:",
                                         "moveDown:",
                                         "moveToEndOfLine:",
                                         "moveToBeginningOfLine:",
                                         "moveWordRight:",
                                         "moveDownAndModifySelection:",
                                         "moveUpAndModifySelection:",
                                         "moveRightAndModifySelection:",
                                         "moveToEndOfLineAndModifySelection:",
                                         "selectAll:",
                                         "selectBlock:",
                                         "toggleColumnSelection:",
                                         "moveToEndOfDocument:"};
  static inline names const marks = {
      "toggleCurrentBookmark:", "toggleCurrentBookmark:", "foldSelection:", "toggleFolding:",
      "toggleFolding:",         "foldAllAtLevel:",        "unfoldAll:",     "goToNextBookmark:"};
  static inline names const rest = {
      "enterLineAppendMode:", "enterLineAppendMode:", "cancel:",
      "toggleOverwriteMode:", "toggleSoftWrap:",      "toggleFreehandedEdit:"};

  names const known_ = actions_of_views(), shipped_ = shipped_items();
  random_source& random_;
  bool large_, wide_;
};

class histories : public shown_view_test {
 protected:
  static std::string initial_text(random_source& random, bool large, bool wide) {
    if (wide) return marked_text::utf8(random.characters(random.below(large ? 60'000 : 60)));
    if (!large) return marked_text::utf8(random.text(random.below(90), u"abc de\t\n\n{\n}\n"));
    return marked_text::utf8(random.text(40'000 + random.below(40'000), u"abcdefgh ij\t\n{\n}"));
  }

  /// With HISTORY_LOG set also what is seen after the step.
  static std::string logged(std::string const& step, world& after) {
    static bool const fully = std::getenv("HISTORY_LOG") != nullptr;
    if (!fully) return step + "\n";
    return step + "\n" + std::to_string(after.memento()) + " " + after.seen() + "\n";
  }

  void run(unsigned seed, bool large) {
    SCOPED_TRACE("seed " + std::to_string(seed) + (large ? ", large" : ""));
    random_source random(seed);
    bool const wide = seed % 3 == 0;
    step_maker steps(random, large, wide);
    std::string const text = initial_text(random, large, wide);
    std::vector<step> sequence, tail;
    for (std::size_t n = 5 + random.below(30); n > 0; --n) sequence.push_back(steps.any());
    sequence.push_back(steps.edit());
    for (std::size_t n = 1 + random.below(10); n > 0; --n)
      tail.push_back(random.one_in(3) ? steps.edit() : steps.any());
    std::size_t const most = 1 + random.below(12);

    world straight(text, seed % 4 == 1);
    std::string log;
    auto const do_sequence = [&](world& in) {
      start_afresh();
      for (step const& made : sequence) {
        std::uint32_t const memento = in.memento();
        in.perform(made);
        if (&in != &straight) log += logged(described(made), in);
        if (&made == &sequence.back() && in.memento() == memento) in.perform(steps.typed(u"z"));
      }
    };
    do_sequence(straight);
    std::string const seen = straight.seen();
    std::u16string const units = straight.text();
    straight.expect_up_to_date();
    std::vector<std::pair<std::string, std::u16string>> after_tail;
    for (step const& made : tail) {
      straight.perform(made);
      straight.expect_up_to_date();
      after_tail.emplace_back(straight.seen(), straight.text());
    }

    straight.expect_rows_as_laid_out_anew();

    world around(text, seed % 4 == 1);
    do_sequence(around);
    std::size_t const k = std::min(most, around.undo_steps());
    for (std::size_t n = 0; n < 2 * k; ++n) {
      // In one view: the other one would keep where its caret was meanwhile.
      around.undo_or_redo(0, n < k);
      log += logged(n < k ? "undo" : "redo", around);
      around.expect_up_to_date();
    }
    SCOPED_TRACE(marked_text::utf8(marked_text::units(large ? "" : "text: " + text)) + "\n" + log);
    EXPECT_EQ(around.seen(), seen);
    ASSERT_TRUE(around.text() == units) << marked_text::utf8(large ? u"" : around.text());
    for (std::size_t n = 0; n < tail.size(); ++n) {
      SCOPED_TRACE("tail " + described(tail[n]));
      around.perform(tail[n]);
      around.expect_up_to_date();
      ASSERT_EQ(around.seen(), after_tail[n].first);
      ASSERT_TRUE(around.text() == after_tail[n].second)
          << (large ? ""
                    : marked_text::utf8(around.text()) + "\n--- instead of ---\n" +
                          marked_text::utf8(after_tail[n].second));
    }
  }

  /// Each step taken back alone leads to where it began, and redone to where it ended.
  void run_steps(unsigned seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    random_source random(seed);
    bool const wide = seed % 3 == 0;
    step_maker steps(random, false, wide);
    std::string const text = initial_text(random, false, wide);
    start_afresh();
    world of(text, seed % 4 == 1);
    std::string log;
    for (std::size_t n = 10 + random.below(20); n > 0; --n) {
      step const made = steps.any();
      std::uint32_t const memento = of.memento();
      bool const walks = made.selector.starts_with("undo") || made.selector.starts_with("redo");
      std::string const before = of.seen_in(made.view);
      std::u16string const units = of.text();
      of.perform(made);
      log += logged(described(made), of);
      // Wrapping is no part of the text, and in no text a rectangle is like a caret.
      bool const wraps = described(made).find("toggleSoftWrap:") != std::string::npos;
      if (walks || wraps || of.memento() == memento || units.empty()) continue;
      SCOPED_TRACE(marked_text::utf8(marked_text::units("text: " + text)) + "\n" + log);
      std::string const after = of.seen_in(made.view);
      std::u16string const units_after = of.text();
      of.undo_or_redo(made.view, true);
      // What is typed elsewhere has ended a snippet for good.
      std::string const back = of.seen_in(made.view);
      ASSERT_EQ(back.substr(0, back.find(';')), before.substr(0, before.find(';')));
      ASSERT_EQ(of.memento(), memento);
      ASSERT_TRUE(of.text() == units);
      of.undo_or_redo(made.view, false);
      ASSERT_EQ(of.seen_in(made.view), after);
      ASSERT_TRUE(of.text() == units_after);
    }
  }

  void start_afresh() {
    desktop_.general_pasteboard().set({});
    WynPasteboardManager::sharedInstance().clear();
    WynFindManager::sharedInstance().setOptions(
        {{"findString", ""}, {"replaceString", ""}, {"regularExpression", false}});
  }

  void run_seeds(unsigned count, bool large) {
    for_seeds(count, [=, this](unsigned seed) { run(seed, large); });
  }
  void for_seeds(unsigned count, std::function<void(unsigned)> const& run_one) {
    unsigned first = 1, last = count;
    if (char const* const given = std::getenv("HISTORY_SEEDS"))
      std::sscanf(given, "%u-%u", &first, &last);
    for (unsigned seed = first; seed <= last && !HasFatalFailure() && !HasNonfatalFailure(); ++seed)
      run_one(seed);
  }
};

TEST_F(histories, undone_and_redone_equal_themselves) {
  run_seeds(300, false);
}

TEST_F(histories, each_step_is_taken_back) {
  for_seeds(300, [this](unsigned seed) { run_steps(seed); });
}

TEST_F(histories, of_large_texts_equal_themselves) {
  run_seeds(2, true);
}

}  // namespace
