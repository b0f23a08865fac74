#include "app/AppDelegate.h"
#include "app/batch_mode.h"
#include "app/command_line.h"
#include "app/menu_file.h"
#include "app/open_requests.h"
#include "bundles/BundleManager.h"
#include "path/file_system.h"
#include "platform/desktop.h"
#include "platform/desktop_module.h"
#include "platform/system/library_folders.h"
#include "platform/system/memory_reserve.h"
#include "platform/system/standard_streams.h"
#include "server/QuirnoteServer.h"
#include "server/application_t.h"
#include "settings/settings_page.h"
#include "settings/store.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <vector>

namespace {

int wrong_usage(std::string const& reason) {
  std::fprintf(stderr, "quirnote: %s\n%s", reason.c_str(), app::usage_text);
  return 2;
}

int print(char const* text) {
  if (std::fputs(text, stdout) >= 0 && std::fflush(stdout) == 0) return 0;
  std::fprintf(stderr, "quirnote: standard output: %s\n", std::strerror(errno));
  return 3;
}

// The window system sees no argument of ours, which might be options to it.
int run_windows(char* program, app::command_line& line) {
  // Before anything of the window system is loaded: what is handed over takes no time.
  wyn::application_t application;
  wire::request request = app::request_for(line.batch.files, path::cwd());
  if (!line.url.empty()) {
    request.what = wire::request::purpose::open_url;
    request.url = line.url;
  }
  if (!line.new_instance)
    if (auto const handed_over = application.hand_over(request)) return *handed_over;
  std::vector<char*> arguments = {program};
  for (std::string& word : line.session) arguments.push_back(word.data());
  int argc = static_cast<int>(arguments.size());
  arguments.push_back(nullptr);
  std::string error;
  platform::desktop_module* const module = platform::load_desktop_module(error);
  auto const desktop = module ? module->make_desktop(argc, arguments.data(), error) : nullptr;
  if (desktop == nullptr) {
    std::fprintf(stderr, "quirnote: no window can be opened: %s\n%s", error.c_str(),
                 "Batch mode works without a display; see quirnote --help.\n");
    return 1;
  }
  int status = 0;
  {
    app::menu_file const menus =
        app::read_menu_file(platform::shared_support_folder() + "/menus.plist");
    // It has to be there until the last document is closed.
    app::open_requests* requests = nullptr;
    server::QuirnoteServer server(
        application.socket(), desktop->loop(),
        [&](auto const& asked, auto const& from) { requests->take(asked, from); });
    AppDelegate app(menus.menus, platform::state_folder() + "/RecentFiles.plist");
    app::open_requests opener(app);
    requests = &opener;
    app.setLaunchArguments(line.batch.files, path::cwd());
    app.setRequests({.open_all =
                         [&] {
                           if (!line.url.empty()) app.openURL(line.url);
                           server.take_pending();
                           opener.perform_all();
                           if (application.is_to_be_activated())
                             app.comeToFront(request.activation_token);
                         },
                     .has_waiting = [&] { return opener.has_taken(); },
                     .refuse = [&] { opener.refuse(); }});
    app.setMenuFault(menus.fault);
    status = desktop->run(app);
  }
  BundleManager::saveSharedCache();
  settings::store().save();
  return status;
}

int run(char* program, std::vector<std::string> const& arguments) {
  std::string error;
  auto line = app::parse_command_line(arguments, error);
  if (!line) return wrong_usage(error);
  switch (line->what) {
    case app::command_line::purpose::help:
      return print(app::usage_text);
    case app::command_line::purpose::version:
      return print("Quirnote " QUIRNOTE_VERSION "\n");
    case app::command_line::purpose::list_settings:
      return print(settings::settings_page().c_str());
    case app::command_line::purpose::batch:
      return app::run_batch_mode(line->batch);
    case app::command_line::purpose::windows:
      break;
  }
  return run_windows(program, *line);
}

}  // namespace

int main(int argc, char** argv) try {
  platform::occupy_standard_descriptors();
  platform::keep_memory_reserve();
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);  // a file beyond the user's limit is an error like a full disk
  char program[] = "quirnote";
  return run(argc > 0 ? argv[0] : program, {argv + (argc > 0), argv + argc});
} catch (std::bad_alloc const&) {
  std::fputs("quirnote: there is not enough memory\n", stderr);
  return 1;
}
