#include <algorithm>

#include "text/storage.h"

namespace text {

namespace {

bool reach_into_other_lines(std::vector<replacement::edit> const& edits, unit_view inserted) {
  return inserted.find(u'\n') != inserted.npos ||
         std::any_of(edits.begin(), edits.end(), [](replacement::edit const& edit) {
           return edit.first.line != edit.last.line;
         });
}

/// Sets a flag for the duration of a scope.
class raised {
 public:
  explicit raised(bool& flag) : flag_(flag) { flag_ = true; }
  ~raised() { flag_ = false; }

 private:
  bool& flag_;
};

}  // namespace

/// Edits that add or remove lines exchange the whole stretch: one by one each would move all lines
/// and all that is kept of lines.
void storage::repeat(std::vector<replacement::edit> const& edits, unit_view inserted) {
  if (edits.empty()) return;
  raised const repeats(repeating_);
  // A run of erasures continues: what was erased by repeating isn't part of it.
  if (kill_buffer.memento == current_memento) kill_buffer.memento = next_memento;
  if (reach_into_other_lines(edits, inserted)) return replace(replacement_of(edits, inserted));

  auto const held = std::make_shared<many_edits const>(repetition_of(edits, inserted));
  will_change_memento(next_memento);
  record(edits.front().first, std::get<repetition>(*held).erased_units(), held);
  make([&] {
    std::lock_guard const lock(mutex);
    exchange(*held, false);
  });
}

replacement storage::replacement_of(std::vector<replacement::edit> const& edits,
                                    unit_view inserted) {
  replacement::range_list ranges;
  ranges.reserve(edits.size());
  text::iterator at(edits.front().first, this);
  std::ptrdiff_t offset = 0;
  for (replacement::edit const& edit : edits) {
    text::iterator const first(edit.first, this), last(edit.last, this);
    offset += first - at;
    std::ptrdiff_t const erased = last - first;
    ranges.push_back({static_cast<uint32_t>(offset), static_cast<uint32_t>(erased),
                      static_cast<uint32_t>(inserted.size())});
    offset += erased;
    at = last;
  }
  text::pos const first = edits.front().first;
  return replacement::make(first, slice({first, this}, at), std::move(ranges), inserted, true);
}

repetition storage::repetition_of(std::vector<replacement::edit> const& edits, unit_view inserted) {
  size_t length = 0;
  for (replacement::edit const& edit : edits) length += edit.last.column - edit.first.column;
  text_block erased;
  if (length != 0) {
    text_block_builder builder(length);
    char_t* out = builder.data();
    for (replacement::edit const& edit : edits)
      out = std::copy(begin(edit.first.line) + edit.first.column,
                      begin(edit.first.line) + edit.last.column, out);
    erased = builder.finish(length);
  }
  return {edits, std::move(erased), text_block::copy(inserted)};
}

}  // namespace text
