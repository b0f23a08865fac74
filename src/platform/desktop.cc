#include "platform/desktop.h"

#include <cassert>

namespace platform {
namespace {
desktop* current_desktop = nullptr;
}

desktop& desktop::current() {
  assert(current_desktop != nullptr);
  return *current_desktop;
}

desktop* desktop::current_or_null() {
  return current_desktop;
}

void desktop::set_current(desktop* d) {
  current_desktop = d;
}

}  // namespace platform
