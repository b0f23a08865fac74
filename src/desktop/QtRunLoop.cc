#include "desktop/QtRunLoop.h"

#include <QEventLoop>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>

namespace widgets {
namespace {

int milliseconds(double seconds) {
  double const ms = std::ceil(seconds * 1000);
  return static_cast<int>(std::clamp(ms, 0.0, double(std::numeric_limits<int>::max())));
}

// Stops with the handle; the task itself lives until the call that dropped the handle is over.
class QtTimer final : public platform::timer {
 public:
  QtTimer(double seconds, bool repeats, std::function<void()> task) {
    auto shared = std::make_shared<std::function<void()>>(std::move(task));
    timer_.setTimerType(seconds < 0.1 ? Qt::PreciseTimer : Qt::CoarseTimer);
    timer_.setSingleShot(!repeats);
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [weak = std::weak_ptr(shared)] {
      if (auto const running = weak.lock()) (*running)();
    });
    task_ = std::move(shared);
    timer_.start(milliseconds(seconds));
  }

 private:
  QTimer timer_;
  std::shared_ptr<std::function<void()>> task_;
};

// As above: the task lives until its call is over.
class QtDescriptorWatch final : public platform::descriptor_watch {
 public:
  QtDescriptorWatch(int descriptor, std::function<void()> task)
      : notifier_(descriptor, QSocketNotifier::Read),
        task_(std::make_shared<std::function<void()>>(std::move(task))) {
    QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_,
                     [weak = std::weak_ptr(task_)] {
                       if (auto const running = weak.lock()) (*running)();
                     });
  }

 private:
  QSocketNotifier notifier_;
  std::shared_ptr<std::function<void()>> task_;
};

}  // namespace

void QtRunLoop::post(std::function<void()> task) {
  QMetaObject::invokeMethod(&main_thread_, std::move(task), Qt::QueuedConnection);
}

std::unique_ptr<platform::timer> QtRunLoop::schedule(double seconds, bool repeats,
                                                     std::function<void()> task) {
  return std::make_unique<QtTimer>(seconds, repeats, std::move(task));
}

std::unique_ptr<platform::descriptor_watch> QtRunLoop::watch_descriptor(
    int descriptor, std::function<void()> task) {
  return std::make_unique<QtDescriptorWatch>(descriptor, std::move(task));
}

double QtRunLoop::now() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void QtRunLoop::run_for(double seconds) {
  QEventLoop loop;
  if (loop.processEvents() || seconds <= 0) return;
  QTimer limit;
  limit.setSingleShot(true);
  limit.setTimerType(Qt::PreciseTimer);
  limit.start(milliseconds(seconds));
  loop.processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}

}  // namespace widgets
