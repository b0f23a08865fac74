#include "platform/system/start_thread.h"

#include <system_error>

namespace platform {

bool start_thread(std::thread& thread, std::function<void()> work) try {
  thread = std::thread(std::move(work));
  return true;
} catch (std::system_error const&) {
  return false;
}

}  // namespace platform
