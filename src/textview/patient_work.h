#pragma once

#include <atomic>
#include <functional>

/// Does work that may take long, such as a search with somebody's pattern, without freezing the
/// windows: on another thread, while this one handles events. What is still not done after half a
/// second is shown as "Searching…" and can be cancelled. In batch mode it is done at once.
///
/// `work` looks at the flag often and returns when it is set. It may run on when this function has
/// returned, so all that it uses must belong to it; it is destroyed on the main thread. It must
/// leave the counts of text blocks alone.
///
/// False if it was cancelled, or if other such work is under way. Main thread only.
bool do_patiently(std::function<void(std::atomic<bool> const& cancelled)> work);
