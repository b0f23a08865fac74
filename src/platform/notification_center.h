#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "plist/value.h"

namespace platform {

/// What an observer is given; valid during the call.
struct notification {
  std::string_view name;
  void const* object;  // whom it is about, or null
  plist::value const& info;
};

/// Tells those who asked that something happened, by name, at once and in the order in which they
/// asked. Main thread only.
///
///     token_ = center.observe("WynBundlesDidChange", [this](auto const&) { reload(); });
class notification_center {
  struct observer;

 public:
  using callback = std::function<void(notification const&)>;

  /// Observes as long as it lives; may outlive the centre. May be dropped while the observer is
  /// being called.
  class token {
   public:
    token() = default;
    token(token&&) = default;
    token& operator=(token&& other);
    ~token() { reset(); }
    void reset();
    explicit operator bool() const { return observer_ != nullptr; }

   private:
    friend class notification_center;
    explicit token(std::shared_ptr<observer> o) : observer_(std::move(o)) {}
    std::shared_ptr<observer> observer_;
  };

  notification_center();
  ~notification_center();

  /// With an `object`, only posts about that object are heard. The pointer is compared, not used.
  [[nodiscard]] token observe(std::string name, callback call, void const* object = nullptr);

  /// Calls all who observe at this moment, less those that drop their token meanwhile.
  void post(std::string_view name, void const* object = nullptr, plist::value const& info = {});

  /// The one of the process.
  static notification_center& standard();

 private:
  struct observer_list;
  std::unique_ptr<observer_list> observers_;
};

}  // namespace platform
