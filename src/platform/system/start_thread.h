#pragma once

#include <functional>
#include <thread>

namespace platform {

/// Begins `work` on a thread of its own, which becomes `thread`; that must not be joinable. False,
/// with nothing begun, when the system has no thread to give: a limit of processes, want of memory.
[[nodiscard]] bool start_thread(std::thread& thread, std::function<void()> work);

}  // namespace platform
