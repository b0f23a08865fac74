#include "text/storage.h"

#include <algorithm>
#include <new>

namespace text {

storage::storage() : storage_detail(1), undo_manager(*this) {}

text::iterator storage::end(unsigned long line) {
  size_t const clamped = std::min<size_t>(line, data.size() - 1);
  return {clamped, size(clamped), this};
}

text::iterator storage::insert_copy(text::iterator const& pos, unit_view units) {
  return units.empty() ? pos : insert(pos, text_block::copy(units));
}

text::iterator storage::insert(text::iterator const& pos, text_block const& block) {
  if (block.empty()) return pos;
  // Held here as well: an observer may drop the record.
  text_block const held = block;
  text::iterator const at(pos.pos(), this);
  will_change_memento(next_memento);
  record(undo_type::insertion, at, held);
  size_t const length_before = length();
  try {
    text::iterator const behind = detail::insert(at, held);
    did_change_memento(next_memento++);
    return behind;
  } catch (std::bad_alloc const&) {
    if (length() == length_before)
      undo_records.resize(--undo_index);
    else  // an observer has thrown, and the change is done
      did_change_memento(next_memento++);
    throw;
  }
}

void storage::erase(text::iterator const& first, text::iterator const& last) {
  if (first == last) return;
  text::iterator const from(first.pos(), this), to(last.pos(), this);
  text_block const erased = buffer_for_sequence(from, to);  // before anything changes
  if (!kill_buffer.disabled) update_kill_buffer(from, to);
  will_change_memento(next_memento);
  record(undo_type::erasure, from, erased);
  detail::erase(from, to);
  did_change_memento(next_memento++);
}

void storage::replace(replacement what) {
  auto const held = std::make_shared<replacement const>(std::move(what));
  will_change_memento(next_memento);
  add_undo_record({undo_type::replacement,
                   current_memento,
                   held->first.line,
                   held->first.column,
                   static_cast<uint32_t>(held->old_text.units.size()),
                   {},
                   held});
  exchange(*held);
  did_change_memento(next_memento++);
}

void storage::exchange(replacement const& what) {
  text::iterator const first(what.first, this);
  detail::replace(first, first + static_cast<std::ptrdiff_t>(what.old_text.units.size()), what);
}

text_slice storage::slice(text::iterator const& first, text::iterator const& last) {
  if (auto borrowed = borrowed_text(first.pos(), last.pos())) return *std::move(borrowed);
  return buffer_for_sequence(text::iterator(first.pos(), this), text::iterator(last.pos(), this));
}

void storage::clear() {
  erase(begin_of_line(0), end(-1));
}

void storage::update_kill_buffer(text::iterator const& first, text::iterator const& last) {
  // A run of erasures leftward appends too, so the pieces stand in the order of their erasure.
  bool const continues = kill_buffer.memento == current_memento &&
                         (first == kill_buffer.position || last == kill_buffer.position);
  if (!continues) kill_buffer.data.clear();
  append_units(first, last, kill_buffer.data);
  kill_buffer.memento = next_memento;
  kill_buffer.position = first;
}

void storage::record(undo_type type, text::iterator const& at, text_block const& data) {
  add_undo_record(
      {type, current_memento, at.line, at.column, static_cast<uint32_t>(data.size()), data, {}});
}

void storage::add_undo_record(undo_record const& record) {
  undo_records.resize(undo_index);
  undo_records.push_back(record);
  ++undo_index;
}

void storage::forget_history() {
  undo_records.clear();
  undo_index = 0;
  undo_manager.forget_steps();
}

void storage::will_change_memento(unsigned long to) {
  for (auto it = observers.begin(); it != observers.end();)
    (*it++)->will_change_memento(current_memento, to);
}

void storage::did_change_memento(unsigned long to) {
  previous_memento = current_memento;
  current_memento = static_cast<uint32_t>(to);
  // Observers may change the text again from here, so what they are told is kept aside.
  unsigned long const from = previous_memento;
  for (auto it = observers.begin(); it != observers.end();) (*it++)->did_change_memento(from, to);
}

void storage::undo() {
  undo_record const record = undo_records[--undo_index];
  will_change_memento(record.memento);
  apply(record, true);
  did_change_memento(record.memento);
}

void storage::redo() {
  undo_record const record = undo_records[undo_index++];
  uint32_t const target =
      undo_index < undo_records.size() ? undo_records[undo_index].memento : next_memento - 1;
  will_change_memento(target);
  apply(record, false);
  did_change_memento(target);
}

void storage::apply(undo_record const& record, bool undoing) {
  if (record.type == undo_type::replacement)
    return exchange(undoing ? record.replaced->inverse() : *record.replaced);
  text::iterator const at = begin_of_line(record.line) + record.column;
  if ((record.type == undo_type::insertion) != undoing)
    detail::insert(at, record.data);
  else
    detail::erase(at, at + record.length);
}

text_block buffer_for_sequence(text::iterator first, text::iterator last) {
  auto const length = static_cast<size_t>(last - first);
  text_block_builder builder(length);
  copy_units(first, last, builder.data());
  return builder.finish(length);
}

}  // namespace text
