#include "text/storage.h"

#include "marked_text.h"
#include "random_text.h"
#include "test.h"

namespace {

using marked_text::text_of;
using marked_text::units_of;

text::iterator insert(text::storage& storage, text::iterator at, std::u16string const& text) {
  return storage.insert(std::as_const(at), text.begin(), text.end());
}

std::string killed(text::storage const& storage) {
  auto const& data = storage.kill_buffer.data;
  return marked_text::utf8({data.data(), data.size()});
}

/// Writes down each call, and keeps a copy of the text from nothing but the calls.
class recorder : public text::storage::observer {
 public:
  explicit recorder(text::storage& storage) : storage_(storage), model_(units_of(storage)) {
    storage.add_observer(this);
  }
  ~recorder() override { storage_.remove_observer(this); }

  void will_change_memento(unsigned long from, unsigned long to) override {
    log << "will " << from << ">" << to << "; ";
    EXPECT_EQ(storage_.current_memento, from);
  }
  void did_change_memento(unsigned long from, unsigned long to) override {
    log << "did " << from << ">" << to << "; ";
    EXPECT_EQ(storage_.previous_memento, from);
    EXPECT_EQ(storage_.current_memento, to);
    EXPECT_EQ(model_, units_of(storage_));
  }
  void will_insert(text::iterator const& pos, int length) override {
    log << "will_insert " << pos.line << "," << pos.column << " " << length << "; ";
    at_ = static_cast<size_t>(pos - storage_.begin_of_line(0));
    length_ = length;
  }
  void did_insert(text::iterator const& first, text::iterator const& last) override {
    log << "did_insert " << first.line << "," << first.column << " " << last.line << ","
        << last.column << "; ";
    EXPECT_EQ(last - first, length_);
    std::vector<char16_t> text;
    text::append_units(first, last, text);
    model_.insert(at_, std::u16string(text.begin(), text.end()));
  }
  void will_erase(text::iterator const& first, text::iterator const& last) override {
    log << "will_erase " << first.line << "," << first.column << " " << last.line << ","
        << last.column << "; ";
    at_ = static_cast<size_t>(first - storage_.begin_of_line(0));
    length_ = static_cast<int>(last - first);
  }
  void did_erase(text::iterator const& pos, int length) override {
    log << "did_erase " << pos.line << "," << pos.column << " " << length << "; ";
    EXPECT_EQ(length, length_);
    model_.erase(at_, static_cast<size_t>(length));
  }

  std::ostringstream log;

 private:
  text::storage& storage_;
  std::u16string model_;
  size_t at_ = 0;
  int length_ = 0;
};

TEST(storage, observers_hear_each_change_in_order) {
  text::storage storage;
  recorder heard(storage);
  text::iterator pos = storage.begin_of_line(0);
  std::u16string const text = u"a\n";
  storage.insert(pos, text.begin(), text.end());
  EXPECT_EQ(pos.pos(), text::pos(1, 0));
  storage.erase(storage.end(0), pos);
  storage.undo();
  EXPECT_EQ(heard.log.str(),
            "will 0>1; will_insert 0,0 2; did_insert 0,0 1,0; did 0>1; "
            "will 1>2; will_erase 0,1 1,0; did_erase 0,1 1; did 1>2; "
            "will 2>1; will_insert 0,1 1; did_insert 0,1 1,0; did 2>1; ");
  EXPECT_EQ(storage.undo_records[0].length, 2u);
  EXPECT_EQ(storage.undo_records[0].data.view(), u"a\n");
}

TEST(storage, empty_changes_leave_no_trace) {
  text::storage storage;
  recorder heard(storage);
  text::iterator const at = storage.begin_of_line(0);
  insert(storage, at, u"");
  storage.insert(at, 0, u'x');
  storage.insert(at, text::text_block());
  storage.erase(at, at);
  storage.clear();
  EXPECT_EQ(heard.log.str(), "");
  EXPECT_EQ(storage.next_memento, 1u);
  EXPECT_TRUE(storage.undo_records.empty());
}

TEST(storage, takes_any_sequence) {
  text::storage storage;
  unsigned short const pointers[] = {'a', '\n'};
  std::wstring const wide = L"b\x263A";
  std::list<char> const list = {'c', 'd'};
  text::iterator pos = storage.begin_of_line(0);
  storage.insert(pos, pointers, pointers + 2);
  storage.insert(pos, wide.begin(), wide.end());
  storage.insert(pos, list.begin(), list.end());
  storage.insert(pos, storage.begin_of_line(0), storage.begin_of_line(1) + 1);
  storage.insert(pos, 2, u'!');
  EXPECT_EQ(text_of(storage), "a\nb☺cda\nb!!");
  EXPECT_EQ(*pos, u'!');
}

TEST(storage, kill_buffer_collects_runs_in_the_order_of_erasure) {
  text::storage storage;
  insert(storage, storage.end(-1), u"abcdef");
  auto const erase = [&](size_t column) { storage.erase(text::iterator(0, column, &storage)); };
  erase(1);
  erase(0);
  EXPECT_EQ(killed(storage), "ba");
  erase(0);
  EXPECT_EQ(killed(storage), "bac");
  erase(2);
  EXPECT_EQ(killed(storage), "f");
  storage.kill_buffer.disabled = true;
  erase(1);
  storage.kill_buffer.disabled = false;
  EXPECT_EQ(killed(storage), "f");
  erase(0);
  EXPECT_EQ(killed(storage), "d");
  storage.undo();
  erase(0);
  EXPECT_EQ(killed(storage), "d");
}

/// A block in pages of its own, as a decoder makes it, with room after the text.
text::text_block paged_block(std::u16string const& text, char16_t const** memory = nullptr) {
  text::text_block_builder builder(text::paged_allocation + text.size());
  std::copy(text.begin(), text.end(), builder.data());
  if (memory) *memory = builder.data();
  return builder.finish(text.size());
}

/// How the text of a random run comes in: the lines are owned, or slices of a block.
enum class load { nothing, small_pieces, one_insert, adopted, long_line };

class storage_model : public testing::TestWithParam<load> {};

std::u16string load_into(text::storage& storage, load how, random_source& random) {
  if (how == load::nothing) return {};
  std::u16string text;
  if (how == load::long_line) {
    text = random.text(random.below(9), u"ab\n") + random.text(40000, u"ab\t") + u"\nend";
    storage.insert(storage.end(-1), paged_block(text));
    storage.forget_history();
    return text;
  }
  while (text.size() < 33000) text += random.text(random.below(300), u"abcdef\t ") + u"\n";
  if (random.one_in(2)) text += u"end";
  if (how == load::one_insert) insert(storage, storage.end(-1), text);
  if (how == load::small_pieces)
    for (size_t i = 0; i < text.size(); i += 1000)
      insert(storage, storage.end(-1), text.substr(i, 1000));
  if (how == load::adopted) {
    auto* memory = new std::u16string(text);
    storage.insert(storage.end(-1), text::text_block::adopt(memory->data(), memory->size(),
                                                            [memory] { delete memory; }));
  }
  return text;
}

TEST_P(storage_model, random_edits_equal_those_of_a_string) {
  for (unsigned seed = 1; seed <= (GetParam() == load::nothing ? 20 : 3); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    random_source random(seed);
    text::storage storage;
    std::u16string model = load_into(storage, GetParam(), random);
    recorder heard(storage);
    for (int step = 0; step < 60; ++step) {
      size_t const at = random.up_to(model.size());
      text::iterator const first = storage.begin_of_line(0) + static_cast<std::ptrdiff_t>(at);
      size_t const length = std::min(random.below(random.one_in(5) ? 4000 : 20), model.size() - at);
      if (random.one_in(2)) {
        text::iterator const last = first + static_cast<std::ptrdiff_t>(length);
        ASSERT_EQ(last + -static_cast<std::ptrdiff_t>(length), first);
        ASSERT_EQ(static_cast<size_t>(last - first), length);
        storage.erase(first, last);
        model.erase(at, length);
      } else {
        std::u16string const text =
            random.text(random.one_in(50) ? 40000 : random.below(12), u"xyz\n\nw");
        text::iterator const after = insert(storage, first, text);
        ASSERT_EQ(after, first + static_cast<std::ptrdiff_t>(text.size()));
        model.insert(at, text);
      }
      ASSERT_EQ(units_of(storage), model);
    }
  }
}

TEST_P(storage_model, each_memento_has_one_text) {
  for (unsigned seed = 1; seed <= (GetParam() == load::nothing ? 20 : 3); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    random_source random(seed);
    text::storage storage;
    std::map<uint32_t, std::u16string> texts = {{0, u""}};
    load_into(storage, GetParam(), random);
    texts[storage.current_memento] = units_of(storage);
    size_t const loaded = storage.undo_index;
    for (int step = 0; step < 100; ++step) {
      if (random.one_in(3)) {
        size_t const line = random.below(storage.lines());
        text::iterator const at(line, random.up_to(storage.size(line)), &storage);
        // Also by blocks of which lines are slices, more than are kept without a look at them.
        if (random.one_in(4) && at != storage.end(-1))
          storage.erase(at, storage.end(-1));
        else if (random.one_in(4))
          insert(storage, at, random.text(33'000, u"pqrstuvwxyz\n"));
        else if (random.one_in(2) && at != storage.end(-1))
          storage.erase(at);
        else
          insert(storage, at, random.text(3, u"pq\n"));
        ASSERT_EQ(texts.count(storage.current_memento), 0u);
        texts[storage.current_memento] = units_of(storage);
      } else if (random.one_in(2) && storage.undo_index > (random.one_in(9) ? 0 : loaded)) {
        storage.undo();
      } else if (storage.undo_index < storage.undo_records.size()) {
        storage.redo();
      }
      if (texts.count(storage.current_memento) != 0)
        ASSERT_EQ(units_of(storage), texts[storage.current_memento]);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(loads, storage_model,
                         testing::Values(load::nothing, load::small_pieces, load::one_insert,
                                         load::adopted, load::long_line));

TEST(storage, adopted_text_exists_once) {
  auto* memory = new std::u16string(50000, u'a');
  for (size_t i = 99; i < memory->size(); i += 100) (*memory)[i] = u'\n';
  int released = 0;
  {
    text::storage storage;
    storage.insert(storage.end(-1),
                   text::text_block::adopt(memory->data(), memory->size(), [&] { ++released; }));
    EXPECT_EQ(storage.lines(), 501u);
    EXPECT_EQ(storage.begin(7), memory->data() + 700);
    EXPECT_EQ(storage.undo_records[0].data.begin(), memory->data());

    storage.undo();
    storage.redo();
    EXPECT_EQ(storage.begin(7), memory->data() + 700);

    insert(storage, text::iterator(7, 50, &storage), u"x");
    EXPECT_NE(storage.begin(7), memory->data() + 700);
    EXPECT_EQ(storage.begin(8), memory->data() + 800);

    // The lines keep the block when its record is gone.
    storage.undo_records.clear();
    EXPECT_EQ(storage.line_units(8), std::u16string(99, u'a'));
    EXPECT_EQ(released, 0);
  }
  EXPECT_EQ(released, 1);
  delete memory;
}

TEST(storage, first_edit_of_a_line_that_is_its_block_takes_the_block_over) {
  std::u16string const line(100'000, u'a');
  for (std::u16string const before : {u"", u"x\n\nyz\n"})
    for (std::u16string const after : {u"", u"\n", u"\nb\n\nc"}) {
      size_t const number = before.empty() ? 0 : 3;
      std::u16string model = before + line + after;
      text::storage storage;
      char16_t const* memory = nullptr;
      storage.insert(storage.end(-1), paged_block(model, &memory));
      storage.forget_history();
      EXPECT_EQ(storage.begin(number), memory + before.size());

      insert(storage, text::iterator(number, 60'000, &storage), u"new");
      model.insert(before.size() + 60'000, u"new");
      EXPECT_EQ(storage.begin(number), memory);
      EXPECT_EQ(units_of(storage), model);
      storage.undo();
      EXPECT_EQ(units_of(storage), before + line + after);
      storage.clear();
      storage.undo();
      EXPECT_EQ(units_of(storage), before + line + after);
    }
}

TEST(storage, block_that_somebody_holds_stays_as_it_was) {
  std::u16string const line(100'000, u'a');
  text::storage storage;
  text::text_block block = paged_block(line);
  storage.insert(storage.end(-1), block);
  storage.forget_history();
  storage.erase(text::iterator(0, 5, &storage));
  EXPECT_EQ(block.view(), line);
  EXPECT_NE(storage.begin(0), block.begin());

  // The record of an insertion that can be undone counts as well.
  storage.clear();
  storage.insert(storage.end(-1), std::exchange(block, {}));
  insert(storage, text::iterator(0, 5, &storage), u"b");
  EXPECT_EQ(storage.undo_records.end()[-2].data.view(), line);
}

TEST(storage, halves_of_a_split_line_are_joined_without_a_copy) {
  std::u16string const line(100'000, u'a');
  text::storage storage;
  storage.insert(storage.end(-1), paged_block(line));
  char16_t const* const memory = storage.begin(0);
  insert(storage, text::iterator(0, 400, &storage), u"\n");
  storage.undo();
  EXPECT_EQ(storage.begin(0), memory);
  EXPECT_EQ(units_of(storage), line);
}

TEST(storage, forgotten_history_is_not_walked) {
  text::storage storage;
  insert(storage, storage.end(-1), u"loaded");
  storage.undo_manager.begin_group();
  insert(storage, storage.end(-1), u" text");
  storage.forget_history();
  storage.undo_manager.end_group();
  EXPECT_FALSE(storage.undo_manager.can_undo());
  EXPECT_EQ(storage.current_memento, 2u);
  {
    text::undo_group const group(storage.undo_manager);
    insert(storage, storage.end(-1), u"!");
  }
  storage.undo_manager.undo();
  EXPECT_EQ(text_of(storage), "loaded text");
  storage.undo_manager.redo();
  EXPECT_EQ(text_of(storage), "loaded text!");
  EXPECT_EQ(storage.current_memento, 3u);
}

TEST(storage, blocks_that_no_line_uses_are_let_go) {
  text::storage storage;
  std::u16string const memory(40000, u'a');
  int alive = 0;
  for (int i = 0; i < 100; ++i) {
    ++alive;
    storage.insert(storage.end(-1),
                   text::text_block::adopt(memory.data() + i, 39000, [&] { --alive; }));
    insert(storage, storage.end(-1), u"\n");
    storage.undo();
    storage.undo();
  }
  EXPECT_LT(alive, 3);
}

TEST(storage, observer_may_leave_during_a_call) {
  struct leaver : text::storage::observer {
    explicit leaver(text::storage& s) : storage(s) { storage.add_observer(this); }
    void did_insert(text::iterator const&, text::iterator const&) override {
      storage.remove_observer(this);
      ++calls;
    }
    text::storage& storage;
    int calls = 0;
  };
  text::storage storage;
  leaver first(storage), second(storage);
  insert(storage, storage.end(-1), u"a");
  insert(storage, storage.end(-1), u"b");
  EXPECT_EQ(first.calls, 1);
  EXPECT_EQ(second.calls, 1);
}

}  // namespace
