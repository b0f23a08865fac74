#pragma once

#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>

namespace platform {

/// The bytes of a page on their way from the command that prints them, on the main thread, to the
/// reader that shows them, on any one thread. It holds a bounded number of them: who writes looks
/// at wants_more() first and stops reading from the command while that is false, so that a page
/// that falls behind slows the command down instead of filling memory.
class page_stream {
 public:
  static constexpr std::size_t capacity = std::size_t{1} << 20;

  /// Whether there is room. What is appended is always taken, so by one read more it may hold more.
  bool wants_more() const;
  void append(std::string_view bytes);
  /// Nothing comes after what was appended.
  void finish();
  bool is_finished() const;

  /// Up to `most` bytes; 0 if there are none now.
  std::size_t read(char* to, std::size_t most);
  std::size_t available() const;
  /// Everything was appended and read.
  bool at_end() const;
  /// The reader has gone: what is appended from now on is dropped, and more is wanted.
  void abandon();
  bool is_abandoned() const;

  /// Called on the thread that appends or finishes, after it; empty for nobody.
  void set_on_data(std::function<void()> call);
  /// Called on the reader's thread, when there is room again after there was none, or when the
  /// reader has gone; empty for nobody.
  void set_on_room(std::function<void()> call);

 private:
  void tell(std::function<void()> page_stream::*who);

  mutable std::mutex mutex_;
  std::string bytes_;
  std::size_t read_ = 0;  // of bytes_
  bool finished_ = false, abandoned_ = false, was_full_ = false;
  std::function<void()> on_data_, on_room_;
};

}  // namespace platform
