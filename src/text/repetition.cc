#include "text/repetition.h"

#include <utility>

#include "text/storage.h"

namespace text {

namespace {

void exchange(text::storage& storage, text::pos at, size_t erased, text_slice const& inserted) {
  text::iterator const first(at, &storage);
  if (erased != 0) storage.detail::erase(first, {at.line, at.column + erased, &storage});
  if (!inserted.units.empty()) storage.detail::insert(first, inserted);
}

}  // namespace

repetition::repetition(std::vector<replacement::edit> const& edits, text_block erased,
                       text_block inserted)
    : erased_(std::move(erased)), inserted_(std::move(inserted)) {
  for (replacement::edit const& edit : edits) {
    lines_.push_back(edit.first.line);
    columns_.push_back(edit.first.column);
    lengths_.push_back(edit.last.column - edit.first.column);
  }
}

std::vector<repetition::place> repetition::places() const {
  std::vector<place> result(lines_.size());
  auto const fill = [&](number_runs const& numbers, auto set) {
    size_t index = 0;
    numbers.visit([&](uint32_t number) { set(result[index++], number); });
  };
  fill(lines_, [](place& to, uint32_t number) { to.at.line = number; });
  fill(columns_, [](place& to, uint32_t number) { to.at.column = number; });
  fill(lengths_, [](place& to, uint32_t number) { to.erased = number; });
  return result;
}

// From the last to the first, and back the other way, so that places are as they were written down.
void repetition::apply(text::storage& storage) const {
  auto const all = places();
  for (auto place = all.rbegin(); place != all.rend(); ++place)
    exchange(storage, place->at, place->erased, inserted_);
}

void repetition::revert(text::storage& storage) const {
  size_t seen = 0;
  for (place const& place : places()) {
    exchange(storage, place.at, inserted_.size(),
             {erased_, erased_.view().substr(seen, place.erased)});
    seen += place.erased;
  }
}

}  // namespace text
