#include "text/views/filter.h"

namespace text {

void filter::will_change_memento(unsigned long from, unsigned long to) {
  if (toward_view) toward_view->will_change_memento(from, to);
}

void filter::did_change_memento(unsigned long from, unsigned long to) {
  if (toward_view) toward_view->did_change_memento(from, to);
}

void filter::will_insert(text::iterator const& pos, int length) {
  if (toward_view) toward_view->will_insert(pos, length);
}

void filter::did_insert(text::iterator const&, text::iterator const&) {}

void filter::will_erase(text::iterator const&, text::iterator const&) {}

void filter::did_erase(text::iterator const& pos, int length) {
  if (toward_view) toward_view->did_erase(pos, length);
}

void filter::will_replace(text::replacement const& what) {
  if (toward_view) toward_view->will_replace(what);
}

void filter::did_replace(text::replacement const& what) {
  if (toward_view) toward_view->did_replace(what);
}

text::pos filter::in_storage(text::pos const& at) const {
  return at;
}

text::pos filter::in_view(text::pos const& at) const {
  return at;
}

text::iterator filter::begin(unsigned long line) const {
  return toward_storage->begin(in_storage({line, 0}).line);
}

text::iterator filter::end(unsigned long line) const {
  return toward_storage->end(in_storage({line, 0}).line);
}

size_t filter::size(unsigned long line) const {
  return static_cast<size_t>(end(line) - begin(line));
}

size_t filter::lines() const {
  return in_view({toward_storage->lines() - 1, 0}).line + size_t{1};
}

void filter::did_insert(text::pos const& first, text::pos const& last) {
  if (toward_view) toward_view->did_insert(in_view(first), in_view(last));
}

void filter::will_erase(text::pos const& first, text::pos const& last) {
  if (toward_view) toward_view->will_erase(in_view(first), in_view(last));
}

}  // namespace text
