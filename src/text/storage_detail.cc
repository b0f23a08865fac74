#include "text/storage_detail.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <new>

#include "text/replacement.h"
#include "text/unit_search.h"

namespace text {

namespace {

using line_buffer = storage_detail::line_buffer;

/// Tells all observers; each may take itself off the list.
template <typename Call>
void tell(storage_detail::observer_list& observers, Call call) {
  for (auto it = observers.begin(); it != observers.end();) call(**it++);
}

line_buffer joined(unit_view left, unit_view right) {
  line_buffer::array line;
  line.reserve(left.size() + right.size());
  line.append(left.data(), left.size());
  line.append(right.data(), right.size());
  return line_buffer::own(std::move(line));
}

line_buffer copied(unit_view units) {
  return units.empty() ? line_buffer() : joined(units, {});
}

/// What stands in a line from `column` on; a slice of the same memory if the line is one.
line_buffer rest_of_line(line_buffer const& line, size_t column) {
  size_t const length = line.size() - column;
  return line.is_borrowed() ? line_buffer::borrow(line.data() + column, length)
                            : copied({line.data() + column, length});
}

/// Takes the units up to the next `\n`, and that, off the front of `units`.
unit_view next_piece(unit_view& units) {
  char_t const* const first = units.data();
  char_t const* const last = first + units.size();
  char_t const* const newline = find_unit(first, last, u'\n');
  units.remove_prefix(static_cast<size_t>(newline - first) + (newline == last ? 0 : 1));
  return {first, static_cast<size_t>(newline - first)};
}

/// Makes room for `added` more lines, growing geometrically as insertion itself would.
void reserve_lines(std::vector<line_buffer>& lines, size_t added) {
  size_t const needed = lines.size() + added;
  if (needed > lines.capacity())
    lines.reserve(added > lines.size() ? needed : std::max(needed, lines.size() * 2));
}

bool is_part(unit_view units, unit_view whole) {
  auto const after = std::greater<char_t const*>();
  return !after(whole.data(), units.data()) &&
         !after(units.data() + units.size(), whole.data() + whole.size());
}

std::ptrdiff_t at(size_t index) {
  return static_cast<std::ptrdiff_t>(index);
}

}  // namespace

std::u16string storage_detail::whole_text() const {
  std::u16string result;
  result.reserve(length_);
  for (size_t line = 0; line < data.size(); ++line) {
    if (line != 0) result += u'\n';
    result += line_units(line);
  }
  return result;
}

storage_detail::observer_id storage_detail::add_observer(storage_observer* observer) {
  return observers.insert(observers.end(), observer);
}

void storage_detail::remove_observer(storage_observer* observer) {
  auto const found = std::find(observers.begin(), observers.end(), observer);
  if (found != observers.end()) observers.erase(found);
}

text::iterator storage_detail::insert(text::iterator const& pos, text_slice const& slice) {
  std::lock_guard lock(mutex);
  unit_view const units = slice.units;
  // Memory is allocated before observers are notified.
  if (units.size() > max_length - length_) throw std::bad_alloc();
  size_t const newlines = count_unit(units, u'\n');
  reserve_lines(data, newlines);
  tell(observers, [&](auto& told) { told.will_insert(pos, static_cast<int>(units.size())); });

  if (units.size() >= borrowed_length && (newlines > 0 || size(pos.line) == 0))
    borrow_lines(pos.line, pos.column, slice, newlines);
  else if (newlines > 0)
    insert_lines(pos.line, pos.column, units, newlines);
  else
    line_to_edit(pos.line).replace(pos.column, 0, units.data(), units.size());
  length_ += units.size();

  text::iterator last = pos;
  last.line += static_cast<uint32_t>(newlines);
  last.column = static_cast<uint32_t>(newlines == 0 ? pos.column + units.size()
                                                    : units.size() - units.rfind(u'\n') - 1);
  tell(observers, [&](auto& told) { told.did_insert(pos, last); });
  return last;
}

void storage_detail::insert_lines(size_t line, size_t column, unit_view units, size_t newlines) {
  unit_view const first = next_piece(units);
  std::vector<line_buffer> after(newlines);
  for (size_t i = 0; i + 1 < newlines; ++i) after[i] = copied(next_piece(units));
  after.back() = units.empty() ? rest_of_line(data[line], column)
                               : joined(units, line_units(line).substr(column));

  // Only the first of these can fail, and it leaves the text as it was.
  data[line].replace(column, size(line) - column, first.data(), first.size());
  data.insert(data.begin() + at(line + 1), std::move_iterator(after.begin()),
              std::move_iterator(after.end()));
}

void storage_detail::borrow_lines(size_t line, size_t column, text_slice const& slice,
                                  size_t newlines) {
  // Before any line or local slice points into the block, as unused ones may be dropped here.
  keep_block(slice.block);
  unit_view units = slice.units;
  unit_view const first = next_piece(units);
  unit_view const after = line_units(line).substr(column);
  size_t const last_newline = units.rfind(u'\n');
  unit_view const last = newlines < 2 ? units : units.substr(last_newline + 1);
  if (newlines > 0) units.remove_suffix(last.size());

  line_buffer tail = last.empty()    ? rest_of_line(data[line], column)
                     : after.empty() ? line_buffer::borrow(last.data(), last.size())
                                     : joined(last, after);
  if (column == 0)
    data[line] = line_buffer::borrow(first.data(), first.size());
  else
    data[line].replace(column, size(line) - column, first.data(), first.size());
  if (newlines == 0) return;

  data.insert(data.begin() + at(line + 1), newlines, line_buffer());
  for (size_t i = 1; i < newlines; ++i) {
    unit_view const piece = next_piece(units);
    data[line + i] = line_buffer::borrow(piece.data(), piece.size());
  }
  data[line + newlines] = std::move(tail);
}

void storage_detail::erase(text::iterator const& first, text::iterator const& last) {
  std::lock_guard lock(mutex);
  tell(observers, [&](auto& told) { told.will_erase(first, last); });
  auto const length = static_cast<int>(last - first);
  text::iterator const pos = first;

  if (first.line == last.line)
    line_to_edit(first.line).replace(first.column, last.column - first.column, nullptr, 0);
  else
    join_lines(first, last);
  length_ -= static_cast<size_t>(length);
  if (data.size() == 1 && !data[0].is_borrowed()) blocks_.clear();

  tell(observers, [&](auto& told) { told.did_erase(pos, length); });
}

void storage_detail::join_lines(text::iterator const& first, text::iterator const& last) {
  if (first.column == 0) {
    data[last.line].replace(0, last.column, nullptr, 0);
    data[first.line] = std::move(data[last.line]);
  } else {
    unit_view const before = line_units(first.line).substr(0, first.column);
    unit_view const after = line_units(last.line).substr(last.column);
    unit_view const both(before.data(), before.size() + after.size());
    // The halves of a borrowed line that was split become what they were.
    if (before.data() + before.size() == after.data() && block_holding(both) != blocks_.end())
      data[first.line] = line_buffer::borrow(both.data(), both.size());
    else
      data[first.line].replace(first.column, size(first.line) - first.column, after.data(),
                               after.size());
  }
  data.erase(data.begin() + at(first.line + size_t{1}), data.begin() + at(last.line + size_t{1}));
}

void storage_detail::replace(text::iterator const& first, text::iterator const& last,
                             replacement const& what) {
  std::lock_guard lock(mutex);
  unit_view const units = what.new_text.units;
  if (units.size() > max_length - (length_ - what.old_text.units.size())) throw std::bad_alloc();
  reserve_lines(data, count_unit(units, u'\n'));
  tell(observers, [&](auto& told) { told.will_replace(what); });
  if (!what.old_text.units.empty()) erase(first, last);
  if (!what.new_text.units.empty()) insert(first, what.new_text);
  tell(observers, [&](auto& told) { told.did_replace(what); });
}

std::optional<text_slice> storage_detail::borrowed_text(text::pos first, text::pos last) const {
  // Empty lines have no place of their own in a block.
  size_t known = first.line;
  while (known < last.line && size(known) == 0) ++known;
  if (!data[known].is_borrowed()) return {};
  auto const block = std::find_if(blocks_.begin(), blocks_.end(), [&](text_block const& kept) {
    return is_part(line_units(known), kept.view());
  });
  if (block == blocks_.end()) return {};
  auto const in_front = static_cast<std::ptrdiff_t>(known - first.line);
  char_t const* const start = begin(known) + (in_front == 0 ? first.column : 0) - in_front;
  if (start < block->begin()) return {};

  char_t const* at = start;
  size_t column = first.column;
  for (size_t line = first.line;; ++line, column = 0) {
    size_t const length = (line == last.line ? last.column : size(line)) - column;
    if (length != 0 && begin(line) + column != at) return {};
    at += length;
    if (line == last.line) break;
    if (at >= block->end() || *at++ != u'\n') return {};
  }
  return text_slice(*block, {start, static_cast<size_t>(at - start)});
}

storage_detail::line_buffer& storage_detail::line_to_edit(size_t line) {
  line_buffer& edited = data[line];
  if (!edited.is_borrowed()) return edited;
  unit_view const units = line_units(line);
  auto const block = block_holding(units);
  if (block->size() - units.size() >= borrowed_length || !block->is_sole_owner_of_pages())
    return edited;

  for (line_buffer& other : data)
    if (&other != &edited && other.is_borrowed() && is_part({other.data(), 1}, block->view()))
      other.get_pimpl(false);
  line_buffer owner = line_buffer::own({});
  auto const [memory, bytes] = block->release_pages();
  blocks_.erase(block);
  if (units.data() != memory) std::copy(units.begin(), units.end(), static_cast<char_t*>(memory));
  owner.get_pimpl(false)->data = line_buffer::array::adopt(memory, bytes, units.size());
  return edited = std::move(owner);
}

std::vector<text_block>::iterator storage_detail::block_holding(unit_view units) {
  return std::find_if(blocks_.begin(), blocks_.end(),
                      [&](text_block const& kept) { return is_part(units, kept.view()); });
}

void storage_detail::keep_block(text_block const& block) {
  // Undo and redo bring the same blocks again and again.
  auto const same = [&](text_block const& kept) { return kept.get() == block.get(); };
  if (std::any_of(blocks_.begin(), blocks_.end(), same)) return;
  // No line points into the new one yet, so it comes after the sweep.
  if (blocks_.size() + 1 >= sweep_at_) {
    drop_unused_blocks();
    sweep_at_ = std::max<size_t>(8, 2 * (blocks_.size() + 1));
  }
  blocks_.push_back(block);
}

void storage_detail::drop_unused_blocks() {
  auto const before = std::less<char_t const*>();
  std::sort(blocks_.begin(), blocks_.end(),
            [&](text_block const& a, text_block const& b) { return before(a.begin(), b.begin()); });
  std::vector<bool> used(blocks_.size());
  for (line_buffer const& line : data) {
    if (!line.is_borrowed()) continue;
    auto const after = std::upper_bound(
        blocks_.begin(), blocks_.end(), line.data(),
        [&](char_t const* units, text_block const& block) { return before(units, block.begin()); });
    used[static_cast<size_t>(after - blocks_.begin()) - 1] = true;
  }
  size_t index = 0;
  std::erase_if(blocks_, [&](text_block const&) { return !used[index++]; });
}

}  // namespace text
