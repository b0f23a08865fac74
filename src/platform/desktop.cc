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
    keep_text(app);
    terminate();
  });
}

void beep() {
  if (auto* const desktop = desktop::current_or_null()) desktop->beep();
}

// The answer is wanted now, and none can be had while something waits.
bool desktop::end_session(application_delegate& app, bool may_ask) {
  return may_ask && !waits().is_waiting() ? app.applicationShouldTerminate() : keep_text(app);
}

// First as it is: to do what is held may fail halfway, where what it needs has gone.
bool desktop::end_within_exit(application_delegate& app) {
  keep_text(app);
  waits().finish_input();
  return keep_text(app);
}

bool desktop::keep_text(application_delegate& app) {
  has_lost_text_ = !app.applicationMustTerminate();
  return !has_lost_text_;
}

}  // namespace platform
