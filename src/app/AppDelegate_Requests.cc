#include "app/AppDelegate.h"
#include "app/quirnote_url.h"
#include "documents/WynDocument.h"
#include "documents/printable_name.h"
#include "path/file_system.h"
#include "path/path.h"
#include "platform/desktop.h"
#include "platform/scoped_value.h"
#include "settings/store.h"
#include "windows/document_window.h"

#include <sys/stat.h>

// What other programs ask for.

namespace {

bool is_regular_file(std::string const& path) {
  struct stat info;
  return ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

}  // namespace

// A link may come from anywhere: so it makes no document, installs nothing and runs nothing.
void AppDelegate::openURL(std::string const& url) {
  if (settings::store().boolean("DisableURLScheme")) return;
  auto& alerts = platform::desktop::current().alerts();
  auto const link = app::parse_quirnote_url(url, path::home());
  if (link && link->host != "open") {
    alerts.run({"Unknown URL Scheme",
                "This version of Quirnote does not support " +
                    documents::quoted(documents::printable(link->host)) + " in its URL scheme.",
                {"Continue"}});
  } else if (!link || (!link->path.empty() && !is_regular_file(link->path))) {
    alerts.run({"Couldn't Open",
                "The link " + documents::quoted(documents::printable(url)) +
                    " names no file on this computer.",
                {"Continue"}});
  } else if (!link->path.empty()) {
    platform::scoped_value const opening(openOptions_, app::open_options{.adds_to_recent = false});
    openFile(link->path, link->place.line != 0 ? std::optional(link->place) : std::nullopt);
  } else if (auto const open = orderedControllers(); !open.empty() && link->place.line != 0) {
    open.front()->textView().goToLineAndColumn(link->place);
  } else {
    platform::beep();
  }
}

void AppDelegate::changeDirectoryFor(std::string const& path) {
  struct stat info;
  bool const is_folder = ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
  currentDirectory_ = is_folder ? path : path::parent(path);
}

void AppDelegate::comeToFront(std::string const& activation_token) {
  auto windows = platform::desktop::current().ordered_windows();
  bool const wanted = settings::store().string("WynAppDelegateOpenUntitledDocument") == "ahig";
  if (windows.empty() && wanted) {
    newDocument();
    windows = platform::desktop::current().ordered_windows();
  }
  if (!windows.empty()) windows.front()->come_to_front(activation_token);
}
