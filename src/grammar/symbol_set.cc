#include "grammar/symbol_set.h"

namespace grammar {

void symbol_set::add(symbol_set const& more) {
  ascii[0] |= more.ascii[0];
  ascii[1] |= more.ascii[1];
  has_other |= more.has_other;
  has_end |= more.has_end;
}

void symbol_set::remove(symbol_set const& less) {
  ascii[0] &= ~less.ascii[0];
  ascii[1] &= ~less.ascii[1];
}

bool symbol_set::is_within(symbol_set const& whole) const {
  return (ascii[0] & ~whole.ascii[0]) == 0 && (ascii[1] & ~whole.ascii[1]) == 0 &&
         (!has_other || whole.has_other) && (!has_end || whole.has_end);
}

symbol_set symbol_set::complement() const {
  return {{~ascii[0], ~ascii[1]}, !has_other, !has_end};
}

symbol_set symbol_set::of(char const* units) {
  symbol_set made;
  for (; *units; ++units) made.add(static_cast<unsigned char>(*units));
  return made;
}

symbol_set symbol_set::everything() {
  return {{~std::uint64_t{0}, ~std::uint64_t{0}}, true, false};
}

symbol_set symbol_set::words() {
  symbol_set made = of("_");
  made.add('0', '9');
  made.add('A', 'Z');
  made.add('a', 'z');
  return made;
}

}  // namespace grammar
