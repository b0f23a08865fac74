#include "desktop/OffscreenPicture.h"
#include "desktop/PlatformStart.h"
#include "desktop/QtDesktop.h"
#include "platform/desktop_module.h"

#include <cstdlib>

namespace {

bool is_set(char const* variable) {
  char const* const value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

class QtModule final : public platform::desktop_module {
 public:
  std::unique_ptr<platform::desktop> make_desktop(int& argc, char** argv,
                                                  std::string& error) override {
    if (!is_set("DISPLAY") && !is_set("WAYLAND_DISPLAY") && !is_set("QT_QPA_PLATFORM")) {
      error = "there is no display: neither DISPLAY nor WAYLAND_DISPLAY is set";
      return nullptr;
    }
    widgets::PlatformStart const start("no window can be opened", 1);
    return std::make_unique<widgets::QtDesktop>(argc, argv);
  }

  bool render(platform::view_client& client, int columns, int rows, std::string& png,
              std::string& error) override {
    return widgets::render_picture(client, columns, rows, png, error);
  }
};

}  // namespace

extern "C" __attribute__((visibility("default"))) platform::desktop_module*
quirnote_desktop_module() {
  static QtModule module;
  return &module;
}
