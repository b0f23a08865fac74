#include "bundles/BundleManager.h"
#include "documents/WynDocument.h"
#include "grammar/tokenize_filter.h"
#include "headless/headless_desktop.h"
#include "headless/headless_view_host.h"
#include "headless/recording_graphics.h"
#include "platform/own_defaults.h"
#include "platform/region.h"
#include "settings/store.h"
#include "test.h"
#include "text/marked_text.h"
#include "text/views/bookmark_filter.h"
#include "text/views/folding_filter.h"
#include "textview/WynTextView.h"
#include "textview/view_will_change.h"
#include "work_counter.h"

#include <chrono>
#include <thread>

// How the work of what a user does grows with the text, its lines, folds, bookmarks, carets, and
// depth. Work is counted in basic blocks, so nothing here depends on the machine. At eight times
// the size it may be eight times as much, and somewhat more for what is sorted or searched.
namespace {

constexpr std::size_t small = 150;
constexpr double most_growth = 12;
// What happens now and then, such as a table that is made once.
constexpr double some_work = 60000;

/// A view on a text of some size, with what it has to show.
class document {
 public:
  document(std::string const& text, char const* language = nullptr) {
    view.setCurrentStyleSheet({});
    view.setDocument(WynDocument::document());
    {
      textview::view_will_change const scope(view);
      std::u16string const units = marked_text::units(text);
      view.view()->storage->insert(view.view()->storage->end(-1), units.begin(), units.end());
    }
    if (language != nullptr) {
      for (plist::value const& l : BundleManager::sharedInstance().languages())
        if (l["name"].string_or("") == language)
          view.changeLanguageToAndLearn(l["uuid"].string_or(""), false);
      wait();
    }
    view.goToLineAndColumn({view.view()->storage->lines() / 2 + 1, 6});
  }

  text::view& rows() { return *view.view(); }
  void select(text::pos first, text::pos last, bool columns = false) {
    textview::view_will_change const scope(view);
    auto const at = [&](text::pos place) {
      return text::view_iterator(&rows(), {place, rows().storage});
    };
    rows().selection.set_caret(at(first));
    rows().selection.current_mark = rows().selection.last_mark = at(last);
    rows().selection.column_mode = columns;
  }
  void perform(std::string const& selector) {
    view.tryToPerformWith(selector, {});
    draw();
  }
  void draw() {
    view.draw(drawn_, host.visible_rect());
    drawn_.clear();
  }
  void wait() {
    if (view.tokenizer() != nullptr)
      while (!view.tokenizer()->wait_for(rows().storage->lines(), std::chrono::hours(1))) continue;
  }

  WynTextView view;
  headless::headless_view_host host{view};

 private:
  headless::recording_graphics drawn_;
};

using made_document = std::unique_ptr<document>;

made_document fold_all(made_document made) {
  made->view.tryToPerformWith("foldAllAtLevel:", plist::value(0));
  made->draw();
  return made;
}

/// By what there is many of. Tabs and the words are for those that stop there.
std::map<std::string, std::function<made_document(std::size_t)>> const documents = {
    {"lines",
     [](std::size_t n) { return std::make_unique<document>(repeated("some (words)\there\n", n)); }},
    {"selected lines",
     [](std::size_t n) {
       auto made = std::make_unique<document>(repeated("some (words)\there\n", n));
       made->select({0, 2}, {n - 1, 3});
       return made;
     }},
    {"lines of columns",
     [](std::size_t n) {
       auto made = std::make_unique<document>(repeated("some (words)\there\n", n));
       made->select({0, 2}, {n - 1, 7}, true);
       return made;
     }},
    {"units of a wrapped line, and columns in it",
     [](std::size_t n) {
       auto made = std::make_unique<document>(repeated("some (words)\there ", n) + "\nnext\n");
       made->view.setSoftWrap(true);
       made->select({0, 2}, {1, 3}, true);
       return made;
     }},
    {"units of a line",
     [](std::size_t n) {
       auto made = std::make_unique<document>(repeated("some (words)\there ", n));
       made->select({0, 8 * n}, {0, 8 * n + 5});
       return made;
     }},
    {"bookmarks",
     [](std::size_t n) {
       auto made = std::make_unique<document>(repeated("some (words)\there\n", n));
       for (std::size_t line = 0; line < n; ++line) made->rows().set_bookmark({line, 3}, true);
       return made;
     }},
    {"folds",
     [](std::size_t n) {
       return fold_all(std::make_unique<document>(repeated("f() {\n  g();\n}\n", n), "C"));
     }},
    {"folds in folds",
     [](std::size_t n) {
       std::string opening, closing;
       for (std::size_t i = 0; i < n; ++i) {
         opening += std::string(i % 50, ' ') + "{\n";
         closing = std::string(i % 50, ' ') + "}\n" + closing;
       }
       return fold_all(std::make_unique<document>(opening + "x\n" + closing, "C"));
     }},
    {"stops without a start",
     [](std::size_t n) {
       return std::make_unique<document>(repeated("  g();\n}\n", n), "C");
     }},
};

std::uint64_t work_of(std::function<void()> const& action) {
  std::uint64_t const before = blocks_run();
  action();
  return blocks_run() - before;
}

class growth : public testing::Test {
 private:
  own_defaults const defaults_;

 protected:
  /// `work` is given a size and returns what it took.
  static void expect_growth(std::string const& what,
                            std::function<std::uint64_t(std::size_t)> const& work,
                            double most = most_growth, std::size_t size = small) {
    std::uint64_t const before = work(size), after = work(8 * size);
    auto const is_within = [most](std::uint64_t at, std::uint64_t at_eight_times) {
      double const now_and_then = most < most_growth ? some_work / 8 : some_work;
      return static_cast<double>(at_eight_times) <= most * static_cast<double>(at) + now_and_then;
    };
    // What is bounded may still be growing towards its bound.
    if (is_within(before, after) || is_within(after, work(64 * size))) return;
    ADD_FAILURE() << what << ": " << before << ", and " << after << " at eight times the size";
  }

  headless::headless_desktop desktop_;
};

// Rows that become one are as wide as all together, and each row of the rectangle is filled up to
// that: the text itself grows by the square.
bool is_known_to_grow(std::string const& selector, std::string const& documents) {
  return selector == "unwrapText:" && documents == "lines of columns";
}

// These wait for programs, one of them for what stands in the text.
bool runs_programs(std::string const& selector) {
  return selector.find("xecute") != selector.npos;
}

// Every method that the text view has under a name, queries of menus included.
TEST_F(growth, of_every_action) {
  document const any("");
  for (auto const& [name, make] : documents)
    for (std::string const& selector : any.view.selectors())
      if (!is_known_to_grow(selector, name) && !runs_programs(selector))
        expect_growth(selector + " with many " + name, [&, &make = make](std::size_t n) {
          made_document const made = make(n);
          made->draw();
          return work_of([&] { made->perform(selector); });
        });
}

// What a key press within a line costs is the same in a large text.
TEST_F(growth, of_a_key_press) {
  for (char const* name : {"lines", "bookmarks", "units of a wrapped line, and columns in it",
                           "units of a line", "stops without a start"})
    for (char const* selector : {"insertTab:", "deleteBackward:", "moveDown:", "moveRight:",
                                 "moveRightAndModifySelection:", "toggleBookmark:"}) {
      auto const work = [&](std::size_t n) {
        made_document const made = documents.at(name)(n);
        made->perform(selector);
        made->perform(selector);
        return work_of([&] { made->perform(selector); });
      };
      expect_growth(std::string(selector) + " in a text with many " + name, work, 1.5);
    }
}

// What goes and comes back with its marks, and what is repeated on many lines.
TEST_F(growth, of_histories) {
  for (auto const& [name, make] : documents)
    for (char const* const edit : {"delete:", "insertNewline:", "paste:"})
      expect_growth(std::string(edit) + " and undo with many " + name, [&](std::size_t n) {
        made_document const made = make(n);
        made->perform("copy:");
        if (!made->rows().has_selection()) made->perform("selectAll:");
        made->draw();
        return work_of([&] {
          for (char const* const step : {edit, "undo:", "redo:", "undo:"}) made->perform(step);
        });
      });
}

TEST_F(growth, of_breaking_a_long_line) {
  expect_growth("hard wrap", [](std::size_t n) {
    document made(repeated("word ", n));
    settings::store().set("WynTextViewHardWrapEnabled", true);
    made.view.setRightMargin(20);
    made.view.setSoftWrap(true);
    made.perform("moveToEndOfDocument:");
    return work_of([&] {
      made.view.insert_text(u"x");
      EXPECT_EQ(made.rows().storage->lines(), (n + 1 + 3) / 4);
    });
  });
}

TEST_F(growth, of_replacing_line_ends_in_folds) {
  expect_growth("Replace All", [](std::size_t n) {
    made_document const made = documents.at("folds")(n);
    return work_of([&] {
      made->view.findWithOptions({{"action", "replaceAll"},
                                  {"findString", "\n"},
                                  {"replaceString", " \n\n"},
                                  {"replaceAllScope", "document"}});
      EXPECT_EQ(made->rows().storage->lines(), 6 * n + 1);
      made->draw();
    });
  });
}

// Selectors of symbols look at all that is around a place, so depth counts as length does.
TEST_F(growth, of_the_list_of_symbols) {
  struct {
    char const *language, *text;
  } const cases[] = {
      {"JSON", "[{\"a\":"}, {"JSON", "["},         {"JSON", "{\"a\": 1}\n"}, {"CSS", "a{b:c(\n"},
      {"CSS", "a { }\n"},   {"C", "{\n"},          {"C", "int f() {\n}\n"},  {"C++", "f({"},
      {"C++", "f({\n"},     {"Markdown", "# a\n"}, {"HTML", "<div>"},
  };
  for (auto const& c : cases) {
    auto const work = [&](std::size_t n) {
      std::uint64_t const before = blocks_run() + blocks_run_by_ended_threads();
      {
        document made(repeated(c.text, n), c.language);
        made.draw();
        made.view.buildFunctionPopUp();
      }
      return blocks_run() + blocks_run_by_ended_threads() - before;
    };
    std::uint64_t const at_least = work(1);  // reads the language the first time
    auto const more = [&](std::size_t n) { return work(n) - std::min(at_least, work(1)); };
    expect_growth(std::string("opening ") + c.language + ": " + c.text, more, most_growth, 200);
  }
}

// Between two events there is time for a slice only.
// As in a window, where all but the list of a short text is made on another thread.
TEST_F(growth, of_a_slice_of_the_list_of_symbols) {
  desktop_.busy().cancel_after = 1'000'000;
  expect_growth(
      "the longest slice",
      [&](std::size_t n) {
        document made(repeated("{\"a\": [1, 2, 3, 4, 5, 6, 7, 8]}\n", 20 * n), "JSON");
        std::uint64_t longest = work_of([&] { made.view.insert_text(u" "); });
        made.wait();
        for (int i = 0; i < 500; ++i) {
          longest = std::max(longest, work_of([&] { desktop_.loop().run_for(0.01); }));
          std::this_thread::sleep_for(std::chrono::milliseconds(2));  // for the other thread
        }
        EXPECT_EQ(made.view.functionPopUp().size(), 20 * n);
        return longest;
      },
      1.5);
}

TEST_F(growth, of_regions) {
  expect_growth("adding and comparing", [](std::size_t n) {
    return work_of([&] {
      wyn::region rows, other;
      for (std::size_t i = 0; i < n; ++i) {
        rows.add({0, 16.0 * double(i), 100, 16});
        other.add({50, 16.0 * double(n - i), 100, 16});
      }
      EXPECT_GT(rows.exclusive_or(other).rects().size(), n);
    });
  });
}

}  // namespace
