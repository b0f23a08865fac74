#include "desktop/ClipboardOwner.h"

#include <QGuiApplication>
#include <QTimer>

#include <xcb/xcb.h>

#include <cstdlib>
#include <string_view>
#include <utility>

namespace widgets {
namespace {

xcb_atom_t atom(xcb_connection_t* connection, std::string_view name) {
  auto const cookie =
      xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
  xcb_intern_atom_reply_t* const reply = xcb_intern_atom_reply(connection, cookie, nullptr);
  xcb_atom_t const result = reply == nullptr ? xcb_atom_t{XCB_ATOM_NONE} : reply->atom;
  std::free(reply);
  return result;
}

}  // namespace

std::unique_ptr<ClipboardOwner> ClipboardOwner::make(bool primary) {
  auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  if (x11 == nullptr || x11->connection() == nullptr) return nullptr;
  return std::unique_ptr<ClipboardOwner>(new ClipboardOwner(x11->connection(), primary));
}

ClipboardOwner::ClipboardOwner(xcb_connection_t* connection, bool primary)
    : connection_(connection),
      selection_(primary ? xcb_atom_t{XCB_ATOM_PRIMARY} : atom(connection, "CLIPBOARD")),
      targets_(atom(connection, "TARGETS")) {
  xcb_screen_t const* const screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
  window_ = xcb_generate_id(connection_);
  xcb_create_window(connection_, 0, window_, screen->root, -1, -1, 1, 1, 0,
                    XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
  qGuiApp->installNativeEventFilter(this);
}

// The connection may be gone before: it takes the window along.
ClipboardOwner::~ClipboardOwner() = default;

void ClipboardOwner::when_answered(std::function<void()> then) {
  then_ = std::move(then);
  xcb_convert_selection(connection_, window_, selection_, targets_, targets_, XCB_CURRENT_TIME);
  xcb_flush(connection_);
}

bool ClipboardOwner::nativeEventFilter(QByteArray const& type, void* message, qintptr*) {
  if (type != "xcb_generic_event_t") return false;
  auto const& event = *static_cast<xcb_generic_event_t*>(message);
  if ((event.response_type & 0x7F) != XCB_SELECTION_NOTIFY) return false;
  if (reinterpret_cast<xcb_selection_notify_event_t const&>(event).requestor != window_)
    return false;
  xcb_delete_property(connection_, window_, targets_);
  // Asking for more handles events, which must not happen inside of one.
  if (then_) QTimer::singleShot(0, qGuiApp, std::exchange(then_, nullptr));
  return true;
}

}  // namespace widgets
