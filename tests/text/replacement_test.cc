#include "text/replacement.h"

#include "marked_text.h"
#include "random_text.h"
#include "test.h"
#include "text/views/bookmark_filter.h"
#include "text/views/folding_filter.h"
#include "text/views/soft_wrap_filter.h"
#include "text/views/view_filter.h"

// Replacing many ranges at once, against doing it one by one from the last to the first.
namespace {

using text::replacement;

struct document {
  document(std::u16string const& units, bool loaded) : view(storage) {
    storage.insert(std::as_const(start), units.begin(), units.end());
    storage.forget_history();
    EXPECT_EQ(storage.borrowed_text({0, 0}, storage.end(-1).pos()).has_value(), loaded);
    view.set_screen_width(7);
    view.set_soft_wrap(true);
  }

  /// All that a change could have left wrong.
  std::string state() {
    std::string result = marked_text::text_of(storage) + "\n--";
    for (size_t row = 0; row < view.lines(); ++row)
      result += " " + std::to_string(view.begin(row).base.line) + ":" +
                std::to_string(view.begin(row).base.column);
    for (text::pos const mark : view.bookmark_filter->marks.list())
      result += " b" + std::to_string(mark.line) + ":" + std::to_string(mark.column);
    for (auto const& kept : view.notify_observer.notifications)
      result += " n" + std::to_string(kept.first_line) + ":" + std::to_string(kept.first_column) +
                "-" + std::to_string(kept.last_line) + ":" + std::to_string(kept.last_column);
    for (auto const& fold : view.folding_filter->foldings)
      result += " f" + std::to_string(fold.first) + ":" + std::to_string(fold.last);
    return result + " w" + std::to_string(view.columns());
  }

  text::storage storage;
  text::iterator const start = storage.begin_of_line(0);
  text::view view;
};

constexpr std::u16string_view alphabet = u"ab c\t\n";

void add_marks(document& to, random_source random) {
  for (size_t n = random.up_to(8); n > 0; --n) {
    size_t const line = random.below(to.storage.lines());
    size_t const column = random.up_to(to.storage.size(line));
    if (random.one_in(4)) {
      to.view.folding_filter->fold_lines(line, line + random.up_to(to.storage.lines() - line - 1));
    } else if (random.one_in(3)) {
      text::pos const at(line, column);
      to.view.notify_observer.add_notify({at, to.storage.end(line).pos()});
    } else {
      to.view.set_bookmark({line, column}, true);
    }
  }
}

TEST(replacement, equals_one_by_one) {
  for (unsigned seed = 1; seed <= 1500; ++seed) {
    SCOPED_TRACE(seed);
    random_source random(seed);
    bool const large = seed % 50 == 0;  // so that lines are slices of a block
    std::u16string const units =
        random.text(large ? 40000 : random.up_to(60), alphabet) + (large ? u"\n" : u"");
    document one_by_one(units, large), at_once(units, large);
    unsigned const marks = static_cast<unsigned>(random.below(1000000));
    add_marks(one_by_one, random_source(marks));
    add_marks(at_once, random_source(marks));

    replacement::range_list ranges;
    std::u16string inserted;
    bool const repeated = random.one_in(3);
    if (repeated) inserted = random.text(random.up_to(3), alphabet);
    size_t const start = random.up_to(units.size());
    size_t at = start;
    for (size_t n = random.up_to(8); n > 0; --n) {
      at += random.up_to(std::min<size_t>(units.size() - at, 9));
      size_t const erased = random.up_to(std::min<size_t>(units.size() - at, 4));
      std::u16string const text = repeated ? inserted : random.text(random.up_to(3), alphabet);
      ranges.push_back({static_cast<uint32_t>(at - start), static_cast<uint32_t>(erased),
                        static_cast<uint32_t>(text.size())});
      if (!repeated) inserted += text;
      at += std::max<size_t>(erased, 1);
      if (at > units.size()) break;
    }
    at = std::min(at, units.size());
    auto const first = at_once.storage.begin_of_line(0) + static_cast<std::ptrdiff_t>(start);
    auto const last = at_once.storage.begin_of_line(0) + static_cast<std::ptrdiff_t>(at);
    std::string const before = at_once.state();
    // Bookmarks and folds whose text has gone don't come back.
    bool const are_reversible = at_once.view.bookmark_filter->marks.empty() &&
                                at_once.view.folding_filter->foldings.empty();

    at_once.storage.replace(replacement::make(first.pos(), at_once.storage.slice(first, last),
                                              ranges, inserted, repeated));
    size_t taken = inserted.size();
    for (auto range = ranges.rbegin(); range != ranges.rend(); ++range) {
      text::iterator const from =
          one_by_one.storage.begin_of_line(0) + static_cast<std::ptrdiff_t>(start + range->offset);
      one_by_one.storage.erase(from, from + range->erased);
      if (!repeated) taken -= range->inserted;
      char16_t const* const text = inserted.data() + (repeated ? 0 : taken);
      one_by_one.storage.insert(from, text, text + range->inserted);
    }
    std::string const after = at_once.state();
    ASSERT_EQ(after, one_by_one.state());

    at_once.storage.undo();
    EXPECT_EQ(marked_text::units_of(at_once.storage), units);
    EXPECT_TRUE(!are_reversible || at_once.state() == before);
    at_once.storage.redo();
    EXPECT_TRUE(!are_reversible || at_once.state() == after);
    EXPECT_EQ(marked_text::units_of(at_once.storage), marked_text::units_of(one_by_one.storage));
  }
}

TEST(replacement, text_in_one_block_is_not_copied) {
  std::u16string units(70000, u'x');
  for (size_t n = 99; n < units.size(); n += 100) units[n] = u'\n';
  units[150] = units[151] = u'\n';  // an empty line
  text::storage storage;
  auto const block = text::text_block::copy(units);
  storage.insert(storage.begin_of_line(0), block);
  text::iterator const first = storage.begin_of_line(1) + 51;
  text::text_slice const slice = storage.slice(first, storage.end(-1));
  EXPECT_EQ(slice.units.data(), block.begin() + 151);
  EXPECT_TRUE(slice.units == block.view().substr(151));
  storage.insert(storage.begin_of_line(5), 1, u'y');
  text::text_slice const copied = storage.slice(first, storage.end(-1));
  EXPECT_TRUE(copied.units ==
              std::u16string(u"\n") + units.substr(152, 148) + u"y" + units.substr(300));
  // A unit that has gone leaves a gap in the block.
  storage.undo();
  storage.insert(storage.begin_of_line(5) + 9, 1, u'\n');
  storage.erase(storage.begin_of_line(6));
  EXPECT_FALSE(storage.borrowed_text({5, 0}, {6, 3}).has_value());
}

}  // namespace
