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

void desktop::request_quit(application_delegate& app) {
  waits().deliver([this, &app] {
    if (!app.tryToPerformWith("terminate:", {})) terminate();
  });
}

void desktop::end_at_once(application_delegate& app) {
  waits().finish([this, &app] {
    has_lost_text_ = !app.applicationMustTerminate();
    terminate();
  });
}

void beep() {
  if (auto* const desktop = desktop::current_or_null()) desktop->beep();
}

}  // namespace platform
