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

void storage::let_repeat() {
  if (repeating_) return;
  for (auto it = observers.begin(); it != observers.end();) (*it++)->repeat_edits();
}

text::iterator storage::insert(text::iterator const& pos, text_block const& block) {
  if (block.empty()) return pos;
  // Held here as well: an observer may drop the record.
  text_block const held = block;
  text::iterator const at(pos.pos(), this);
  text::iterator after;
  will_change_memento(next_memento);
  record(undo_type::insertion, at, held);
  make([&] { after = detail::insert(at, held); });
  let_repeat();
  return after;
}

void storage::erase(text::iterator const& first, text::iterator const& last) {
  if (first == last) return;
  text::iterator const from(first.pos(), this), to(last.pos(), this);
  text_block const erased = buffer_for_sequence(from, to);  // before anything changes
  if (!kill_buffer.disabled) update_kill_buffer(from, to);
  will_change_memento(next_memento);
  record(undo_type::erasure, from, erased);
  make([&] { detail::erase(from, to); });
  let_repeat();
}

void storage::replace(replacement what) {
  text::pos const first = what.first;
  size_t const length = what.old_text.units.size();
  auto const held = std::make_shared<many_edits const>(std::move(what));
  will_change_memento(next_memento);
  record(first, length, held);
  make([&] { exchange(*held, false); });
}

void storage::exchange(replacement const& what) {
  text::iterator const first(what.first, this);
  detail::replace(first, first + static_cast<std::ptrdiff_t>(what.old_text.units.size()), what);
}

void storage::exchange(many_edits const& edits, bool undoing) {
  if (auto const* replaced = std::get_if<replacement>(&edits))
    return undoing ? exchange(replaced->inverse()) : exchange(*replaced);
  auto const& repeated = std::get<repetition>(edits);
  undoing ? repeated.revert(*this) : repeated.apply(*this);
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

void storage::record(text::pos first, size_t length,
                     std::shared_ptr<text::many_edits const> edits) {
  add_undo_record({undo_type::many_edits,
                   current_memento,
                   first.line,
                   first.column,
                   static_cast<uint32_t>(length),
                   {},
                   std::move(edits)});
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
  if (record.type == undo_type::many_edits) return exchange(*record.edits, undoing);
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
