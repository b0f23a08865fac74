#pragma once

#include <QAbstractNativeEventFilter>

#include <cstdint>
#include <functional>
#include <memory>

struct xcb_connection_t;

namespace widgets {

/// The program that has the clipboard, where X11 says which window that is. Asked for anything by
/// way of Qt, one that hangs is waited for for seconds; this asks and goes on.
class ClipboardOwner final : QAbstractNativeEventFilter {
 public:
  /// Null on other window systems. `primary` for the primary selection.
  static std::unique_ptr<ClipboardOwner> make(bool primary);
  ~ClipboardOwner() override;

  /// Calls `then` in a later turn of the loop, when the owner has answered, or there is none. What
  /// an earlier call was to do is dropped if it is still waited for.
  void when_answered(std::function<void()> then);

 private:
  ClipboardOwner(xcb_connection_t* connection, bool primary);
  bool nativeEventFilter(QByteArray const& type, void* message, qintptr* result) override;

  xcb_connection_t* connection_;
  std::uint32_t window_ = 0, selection_ = 0, targets_ = 0;
  std::function<void()> then_;
};

}  // namespace widgets
