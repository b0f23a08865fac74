#include "app/AppDelegate.h"
#include "app/batch_mode.h"
#include "bundles/BundleManager.h"
#include "path/file_system.h"
#include "platform/desktop_module.h"
#include "platform/library_folders.h"
#include "platform/replace_file.h"
#include "platform/user_defaults.h"
#include "plist/xml_reader.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr char const* usage =
    "usage: quirnote [FILE[:LINE[:COLUMN]]]...\n"
    "       quirnote --batch [--set KEY=VALUE]... [--macro FILE|- [--repeat N]]...\n"
    "                [--answer TITLE=BUTTON]... [--save | --save-as PATH] [--print WHAT]...\n"
    "                [--explain LINE:COLUMN] [--render PNG [--size COLUMNSxROWS]] [--strict]\n"
    "                [FILE]...\n"
    "       quirnote --batch --check-bundle DIR [--check-bundle DIR]...\n"
    "       quirnote --help | --version\n"
    "WHAT is text, selection, state, scopes, styles or symbols.\n";

int wrong_usage(std::string const& reason) {
  std::fprintf(stderr, "quirnote: %s\n%s", reason.c_str(), usage);
  return 2;
}

// The menus are part of the program: without them something is wrong with the installation.
plist::value read_menus() {
  std::string const path = platform::shared_support_folder() + "/menus.plist";
  std::string contents;
  if (int const error = platform::read_file(path, contents, platform::file_calls::system())) {
    std::fprintf(stderr, "quirnote: %s: %s\n", path.c_str(), std::strerror(error));
    return {};
  }
  plist::read_result const result = plist::read_xml(contents);
  if (result.error)
    std::fprintf(stderr, "quirnote: %s:%zu:%zu: %s\n", path.c_str(), result.error->line,
                 result.error->column, result.error->message.c_str());
  return result.value;
}

int run_batch(std::vector<std::string> arguments) {
  arguments.erase(arguments.begin());
  std::string error;
  auto const options = parse_batch_options(arguments, error);
  return options ? run_batch_mode(*options) : wrong_usage(error);
}

bool is_option(std::string const& argument) {
  return argument.rfind("--", 0) == 0;
}

// Behind "--" everything is a file, whatever it begins with.
std::vector<std::string> files_among(std::vector<std::string> arguments) {
  auto const end_of_options = std::find(arguments.begin(), arguments.end(), "--");
  if (end_of_options != arguments.end()) arguments.erase(end_of_options);
  return arguments;
}

int run_windows(int argc, char** argv) {
  std::string error;
  platform::desktop_module* const module = platform::load_desktop_module(error);
  auto const desktop = module ? module->make_desktop(argc, argv, error) : nullptr;
  if (desktop == nullptr) {
    std::fprintf(stderr, "quirnote: no window can be opened: %s\n%s", error.c_str(),
                 "Batch mode works without a display; see quirnote --help.\n");
    return 1;
  }
  int status = 0;
  {
    AppDelegate app(read_menus(), platform::state_folder() + "/RecentFiles.plist");
    app.setLaunchArguments(files_among({argv + 1, argv + argc}), path::cwd());
    status = desktop->run(app);
  }
  BundleManager::saveSharedCache();
  platform::user_defaults::standard().save();
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);  // a file beyond the user's limit is an error like a full disk
  std::vector<std::string> const arguments(argv + 1, argv + argc);
  std::string const first = arguments.empty() ? "" : arguments[0];
  if (first == "--batch") return run_batch(arguments);
  if (first == "--help" || first == "-h") {
    std::fputs(usage, stdout);
    return 0;
  }
  if (first == "--version") {
    std::puts("Quirnote " QUIRNOTE_VERSION);
    return 0;
  }
  auto const end_of_options = std::find(arguments.begin(), arguments.end(), "--");
  auto const option = std::find_if(arguments.begin(), end_of_options, is_option);
  if (option != end_of_options) return wrong_usage("unknown option " + *option);
  return run_windows(argc, argv);
}
