#pragma once

#include "platform/system/start_thread.h"

#include <memory>
#include <utility>

namespace platform {

/// An object that is destroyed on a thread of its own, where there is one to be had: to free a
/// hundred megabytes or half a million strings takes longer than a key press may. What it holds
/// must not be shared by counts that aren't atomic.
template <class T>
std::shared_ptr<T> freed_aside(T made) {
  return {new T(std::move(made)), [](T* old) {
            std::thread thread;
            if (start_thread(thread, [old] { delete old; }))
              thread.detach();
            else
              delete old;
          }};
}

}  // namespace platform
