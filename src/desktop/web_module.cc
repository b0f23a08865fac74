#include "desktop/web_module.h"

#include "platform/log.h"
#include "platform/system/library_folders.h"

#include <QtGlobal>

#include <dlfcn.h>
#include <unistd.h>

namespace widgets {
namespace {

/// Qt's remarks about how it is started are not for the user.
class Silence {
 public:
  Silence()
      : former_(
            qInstallMessageHandler([](QtMsgType, QMessageLogContext const&, QString const&) {})) {}
  ~Silence() { qInstallMessageHandler(former_); }
  Silence(Silence const&) = delete;
  Silence& operator=(Silence const&) = delete;

 private:
  QtMessageHandler const former_;
};

OutputPageModule* load_web_module(std::string& reason) {
  static OutputPageModule* module = nullptr;
  static std::string why;
  if (module == nullptr && why.empty()) {
    std::string const path = platform::module_folder() + "/desktop_web.so";
    bool const is_there = access(path.c_str(), R_OK) == 0;
    void* const library = is_there ? dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL) : nullptr;
    void* const entry = library != nullptr ? dlsym(library, output_page_symbol) : nullptr;
    if (entry != nullptr) {
      module = reinterpret_cast<OutputPageModule* (*)()>(entry)();
    } else {
      why = is_there ? "Qt WebEngine is not installed (on Debian the package "
                       "libqt6webenginewidgets6)"
                     : "Quirnote was built without Qt WebEngine";
      if (is_there) platform::log(dlerror());
    }
  }
  reason = why;
  return module;
}

}  // namespace

std::unique_ptr<OutputPage> make_web_page(platform::html_window_delegate& delegate,
                                          std::string& reason) {
  Silence const silence;
  OutputPageModule* const module = load_web_module(reason);
  return module == nullptr ? nullptr : module->make_page(delegate);
}

}  // namespace widgets
