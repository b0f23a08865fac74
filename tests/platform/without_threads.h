#pragma once

#include <pthread.h>

#include <cstddef>

/// As long as it lives no thread can be started, because the stack of each would have to be larger
/// than memory can ever be.
class without_threads {
 public:
  without_threads() {
    pthread_getattr_default_np(&former_);
    pthread_getattr_default_np(&attributes_);
    pthread_attr_setstacksize(&attributes_, std::size_t{1} << 47);
    pthread_setattr_default_np(&attributes_);
  }
  ~without_threads() {
    pthread_setattr_default_np(&former_);
    pthread_attr_destroy(&attributes_);
    pthread_attr_destroy(&former_);
  }
  without_threads(without_threads const&) = delete;
  without_threads& operator=(without_threads const&) = delete;

 private:
  pthread_attr_t attributes_{}, former_{};
};
