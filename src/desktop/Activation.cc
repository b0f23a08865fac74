#include "desktop/Activation.h"

#include <QGuiApplication>
#include <QTimer>

#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include <xcb/xcb.h>

namespace widgets {
namespace {

// As startup notification has it: ..._TIME and the time of the user's click, in milliseconds.
std::uint32_t time_of(std::string const& token) {
  constexpr std::string_view mark = "_TIME";
  std::size_t const at = token.rfind(mark);
  std::uint32_t time = XCB_CURRENT_TIME;
  if (at != std::string::npos)
    std::from_chars(token.data() + at + mark.size(), token.data() + token.size(), time);
  return time;
}

void send_request(xcb_connection_t* connection, xcb_window_t window, std::uint32_t time) {
  constexpr std::string_view name = "_NET_ACTIVE_WINDOW";
  constexpr std::uint32_t by_the_user = 2;  // and not by the program itself, which might be refused
  auto* const atom = xcb_intern_atom_reply(
      connection, xcb_intern_atom(connection, 1, name.size(), name.data()), nullptr);
  if (atom == nullptr) return;
  xcb_client_message_event_t event{};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = window;
  event.type = atom->atom;
  event.data.data32[0] = by_the_user;
  event.data.data32[1] = time;
  std::free(atom);
  if (event.type == XCB_ATOM_NONE) return;
  xcb_window_t const root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
  xcb_send_event(connection, 0, root,
                 XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                 reinterpret_cast<char const*>(&event));
  xcb_flush(connection);
}

}  // namespace

void use_activation_token(std::string const& token) {
  if (token.empty() || !QGuiApplication::platformName().startsWith(QLatin1String("wayland")))
    return;
  qputenv("XDG_ACTIVATION_TOKEN", QByteArray::fromStdString(token));
}

void ask_for_activation(QWidget& window, std::string const& token) {
  QTimer::singleShot(0, &window, [&window, time = time_of(token)] {
    auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 == nullptr || !window.isVisible()) return;
    send_request(x11->connection(), static_cast<xcb_window_t>(window.winId()), time);
  });
}

}  // namespace widgets
