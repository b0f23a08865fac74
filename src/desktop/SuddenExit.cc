#include "desktop/SuddenExit.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace widgets {
namespace {

SuddenExit* present = nullptr;

}  // namespace

SuddenExit::SuddenExit(std::function<bool()> on_exit) : on_exit_(std::move(on_exit)) {
  [[maybe_unused]] static int const registered = std::atexit(&SuddenExit::run);
  present = this;
}

SuddenExit::~SuddenExit() {
  present = nullptr;
}

void SuddenExit::run() {
  if (present == nullptr || std::exchange(present, nullptr)->on_exit_()) return;
  std::fflush(nullptr);
  std::_Exit(EXIT_FAILURE);
}

}  // namespace widgets
