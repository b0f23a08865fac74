#pragma once

#include <cstdint>

/// A compact sequence of small numbers: the way from a grammar's root to a rule, as the index of a
/// child at each level. It is what the view compares, sorts and caches styles by, so up to 31 bits
/// take no memory but the word itself.
///
///     bit_stack::builder b;
///     b.push(3, 12);                       // the fourth of twelve children
///     bit_stack::storage path(b);
///     bit_stack::reader r(path);
///     while (!r.empty()) index = r.pop(number_of_children);
///
/// Each element takes as many bits as its `modulo`, the number of values it can have, needs; that
/// is not recorded, so a reader walks the grammar along with the bits. Elements are read in the
/// order in which they were pushed. Any thread, each object by one at a time.
namespace bit_stack {

/// Either the bits themselves, above bit 0, which is set (the value 1 is the empty sequence), or
/// the address of a block that belongs to this object alone.
class base {
 public:
  std::uintptr_t value() const { return value_; }
  bool is_inline() const { return (value_ & 1) != 0; }

 protected:
  struct block {
    unsigned size;  ///< in words
    std::uint32_t words[1];
  };

  base() = default;
  explicit base(std::uintptr_t value) { set_value(value); }
  base(base const& other) { set_value(other.value_); }
  base(base&& other) noexcept : value_(other.value_) { other.value_ = 1; }
  base& operator=(base const& other);
  base& operator=(base&& other) noexcept;
  ~base() { set_value(1); }

  /// Frees the block held so far and takes a value, of which a block is copied.
  void set_value(std::uintptr_t value);
  static block* make_block(unsigned size);
  block* heap() const { return reinterpret_cast<block*>(value_); }
  /// Number of words; that of the inline form, which is one, holds the tag too.
  unsigned size() const { return is_inline() ? 1 : heap()->size; }
  std::uint32_t word(unsigned index) const {
    return is_inline() ? static_cast<std::uint32_t>(value_) : heap()->words[index];
  }
  /// In bits.
  unsigned capacity() const { return size() * 32; }

  std::uintptr_t value_ = 1;

  friend class reader;
};

/// A finished sequence.
class storage : public base {
 public:
  storage() = default;
  explicit storage(std::uintptr_t value) : base(value) {}
  /// Of a builder's content.
  explicit storage(base const& other) : base(other) {}

  bool empty() const { return value_ == 1; }

  /// Blocks of different capacity differ.
  friend bool operator==(storage const& a, storage const& b);
  /// A total order, for keys only.
  friend bool operator<(storage const& a, storage const& b);
};

/// A sequence that grows.
class builder : public base {
 public:
  builder() = default;

  /// `index` is below `modulo`.
  void push(unsigned index, unsigned modulo);
  unsigned bits_used() const { return capacity() - bits_available_; }

 private:
  void grow();
  void add_bits(unsigned index, std::uint32_t bits);

  unsigned bits_available_ = 31;
};

/// Reads a sequence, which must outlive it, from its first element.
class reader {
 public:
  explicit reader(storage const& of);

  /// The next element, or `modulo` when there is none.
  unsigned pop(unsigned modulo);
  bool empty() const;
  unsigned bits_used() const { return storage_->capacity() - bits_available_; }

 private:
  storage const* storage_;
  unsigned bits_available_;
};

}  // namespace bit_stack
