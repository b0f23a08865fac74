#pragma once

#include "text/storage.h"

#include <utility>

namespace text {

/// Keeps what is erased during its life out of the storage's kill buffer, as that is not for
/// yanking. Guards may be nested. The storage must outlive it.
class kill_buffer_guard {
 public:
  explicit kill_buffer_guard(storage& guarded, bool disable = true)
      : buffer_(guarded.kill_buffer),
        was_disabled_(std::exchange(buffer_.disabled, buffer_.disabled || disable)) {}
  ~kill_buffer_guard() { buffer_.disabled = was_disabled_; }
  kill_buffer_guard(kill_buffer_guard const&) = delete;
  kill_buffer_guard& operator=(kill_buffer_guard const&) = delete;

 private:
  storage::kill_buffer_t& buffer_;
  bool was_disabled_;
};

}  // namespace text
