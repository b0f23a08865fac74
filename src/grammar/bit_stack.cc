#include "grammar/bit_stack.h"

#include <bit>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <utility>

#include "platform/log.h"

namespace bit_stack {
namespace {

constexpr unsigned word_bits = 32;

// The element is stored plus 1, so that a field of zeros is the end.
unsigned field_width(unsigned modulo) {
  return static_cast<unsigned>(std::bit_width(modulo));
}

// Only a sequence that doesn't belong to the grammar it is read with gets here.
[[noreturn]] void exhausted(std::string const& operation) {
  platform::log_text("stack exhausted, " + operation + "\n");
  std::exit(-1);
}

}  // namespace

base::block* base::make_block(unsigned size) {
  std::size_t const bytes = sizeof(block) + (size - 1) * sizeof(std::uint32_t);
  void* const memory = std::calloc(1, bytes);
  if (memory == nullptr) throw std::bad_alloc();
  auto* const made = static_cast<block*>(memory);
  made->size = size;
  return made;
}

void base::set_value(std::uintptr_t value) {
  std::uintptr_t taken = value;
  if ((value & 1) == 0) {
    auto const* const source = reinterpret_cast<block const*>(value);
    block* const copy = make_block(source->size);
    std::memcpy(copy->words, source->words, source->size * sizeof(std::uint32_t));
    taken = reinterpret_cast<std::uintptr_t>(copy);
  }
  if (!is_inline()) std::free(heap());
  value_ = taken;
}

base& base::operator=(base const& other) {
  if (this != &other) set_value(other.value_);
  return *this;
}

base& base::operator=(base&& other) noexcept {
  std::swap(value_, other.value_);
  return *this;
}

bool operator==(storage const& a, storage const& b) {
  if (a.is_inline() || b.is_inline()) return a.value_ == b.value_;
  return a.heap()->size == b.heap()->size &&
         std::memcmp(a.heap()->words, b.heap()->words, a.heap()->size * sizeof(std::uint32_t)) == 0;
}

bool operator<(storage const& a, storage const& b) {
  if (a.is_inline() && b.is_inline()) return a.value_ < b.value_;
  if (a.is_inline() != b.is_inline()) return a.is_inline();
  if (a.heap()->size != b.heap()->size) return a.heap()->size < b.heap()->size;
  for (unsigned i = 0; i < a.heap()->size; ++i)
    if (a.heap()->words[i] != b.heap()->words[i]) return a.heap()->words[i] < b.heap()->words[i];
  return false;
}

void builder::grow() {
  unsigned const old_size = size();
  block* const made = make_block(2 * old_size);
  if (is_inline()) {
    made->words[0] = word(0) >> 1;
    bits_available_ += 1;
  } else {
    std::memcpy(made->words, heap()->words, old_size * sizeof(std::uint32_t));
    std::free(heap());
  }
  value_ = reinterpret_cast<std::uintptr_t>(made);
  bits_available_ += old_size * word_bits;
}

void builder::add_bits(unsigned index, std::uint32_t bits) {
  if (is_inline())
    value_ |= bits;
  else
    heap()->words[index] |= bits;
}

void builder::push(unsigned index, unsigned modulo) {
  unsigned const width = field_width(modulo);
  while (width > bits_available_) grow();
  unsigned const at = bits_used() / word_bits, shift = bits_used() % word_bits;
  if (at >= size()) exhausted("push");
  add_bits(at, (index + 1) << shift);
  if (shift + width > word_bits) {
    if (at + 1 >= size())
      exhausted(std::string("push+1: inline ") + (is_inline() ? "YES" : "NO") + ", " +
                std::to_string(shift) + " + " + std::to_string(width) + " > 32?");
    add_bits(at + 1, (index + 1) >> (word_bits - shift));
  }
  bits_available_ -= width;
}

reader::reader(storage const& of)
    : storage_(&of), bits_available_(of.is_inline() ? 31 : of.capacity()) {}

unsigned reader::pop(unsigned modulo) {
  unsigned const width = field_width(modulo);
  if (width > bits_available_) return modulo;
  unsigned const at = bits_used() / word_bits, shift = bits_used() % word_bits;
  if (at >= storage_->size()) exhausted("pop");
  std::uint64_t field = storage_->word(at) >> shift;
  if (shift + width > word_bits) {
    if (at + 1 >= storage_->size()) exhausted("pop+1");
    field |= std::uint64_t{storage_->word(at + 1)} << (word_bits - shift);
  }
  bits_available_ -= width;
  auto const element = static_cast<unsigned>(field & ((std::uint64_t{1} << width) - 1));
  return element == 0 ? modulo : element - 1;
}

bool reader::empty() const {
  if (bits_available_ == 0) return true;
  unsigned at = bits_used() / word_bits;
  if (storage_->word(at) >> (bits_used() % word_bits) != 0) return false;
  while (++at < storage_->size())
    if (storage_->word(at) != 0) return false;
  return true;
}

}  // namespace bit_stack
