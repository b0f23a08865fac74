#include "platform/html/page_stream.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace platform {

bool page_stream::wants_more() const {
  std::scoped_lock const lock(mutex_);
  return abandoned_ || bytes_.size() - read_ < capacity;
}

void page_stream::append(std::string_view bytes) {
  {
    std::scoped_lock const lock(mutex_);
    if (abandoned_ || bytes.empty()) return;
    bytes_.append(bytes);
    was_full_ = was_full_ || bytes_.size() - read_ >= capacity;
  }
  tell(&page_stream::on_data_);
}

void page_stream::finish() {
  {
    std::scoped_lock const lock(mutex_);
    if (std::exchange(finished_, true)) return;
  }
  tell(&page_stream::on_data_);
}

bool page_stream::is_finished() const {
  std::scoped_lock const lock(mutex_);
  return finished_;
}

std::size_t page_stream::read(char* to, std::size_t most) {
  std::size_t count = 0;
  bool has_room_again = false;
  {
    std::scoped_lock const lock(mutex_);
    count = std::min(most, bytes_.size() - read_);
    std::memcpy(to, bytes_.data() + read_, count);
    read_ += count;
    // What is moved is never more than what was read since.
    if (read_ >= bytes_.size() - read_) bytes_.erase(0, std::exchange(read_, 0));
    has_room_again = was_full_ && bytes_.size() - read_ < capacity / 2;
    if (has_room_again) was_full_ = false;
  }
  if (has_room_again) tell(&page_stream::on_room_);
  return count;
}

std::size_t page_stream::available() const {
  std::scoped_lock const lock(mutex_);
  return bytes_.size() - read_;
}

bool page_stream::at_end() const {
  std::scoped_lock const lock(mutex_);
  return finished_ && read_ == bytes_.size();
}

void page_stream::abandon() {
  {
    std::scoped_lock const lock(mutex_);
    abandoned_ = true;
    bytes_.clear();
    read_ = 0;
  }
  tell(&page_stream::on_room_);
}

bool page_stream::is_abandoned() const {
  std::scoped_lock const lock(mutex_);
  return abandoned_;
}

void page_stream::set_on_data(std::function<void()> call) {
  std::scoped_lock const lock(mutex_);
  on_data_ = std::move(call);
}

void page_stream::set_on_room(std::function<void()> call) {
  std::scoped_lock const lock(mutex_);
  on_room_ = std::move(call);
}

// Without the lock, since what is called may read or append.
void page_stream::tell(std::function<void()> page_stream::*who) {
  std::function<void()> call;
  {
    std::scoped_lock const lock(mutex_);
    call = this->*who;
  }
  if (call) call();
}

}  // namespace platform
