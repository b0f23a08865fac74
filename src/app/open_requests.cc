#include "app/open_requests.h"

#include "app/AppDelegate.h"
#include "app/compare_files.h"
#include "app/file_argument.h"
#include "app/line_place.h"
#include "documents/WynDocument.h"
#include "platform/desktop.h"
#include "windows/document_window.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <utility>

namespace app {
namespace {

std::string token_of_environment() {
  for (char const* name : {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"})
    if (char const* const token = std::getenv(name); token != nullptr && *token != '\0')
      return token;
  return "";
}

void tell_closed(server::peer& from, std::size_t file, bool is_saved) {
  // The program is made to end, and text that isn't saved is kept for its next start: who waits
  // goes on to wait for that one.
  if (platform::desktop::current().waits().is_ending()) return;
  from.send({.what = wire::answer::kind::closed, .file = file, .is_saved = is_saved});
}

bool is_folder(std::string const& path) {
  struct stat info;
  return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool write_text(WynDocument const& document, platform::descriptor const& output) {
  return ::ftruncate(output.get(), 0) == 0 && ::lseek(output.get(), 0, SEEK_SET) == 0 &&
         document.writeToStream(output.get(), document.displayName());
}

}  // namespace

wire::request request_for(std::vector<std::string> const& arguments, std::string const& directory) {
  wire::request request{.adds_to_recent = true, .activation_token = token_of_environment()};
  for (std::string const& argument : arguments) {
    auto const file = parse_file_argument(argument, directory);
    std::string line;
    if (file.place) {
      line = std::to_string(file.place->line);
      if (file.place->column != 0) line += ":" + std::to_string(file.place->column);
    }
    request.files.push_back({file.path, line});
  }
  return request;
}

void open_requests::take(wire::request const& request, std::shared_ptr<server::peer> const& from) {
  // It looks for the next instance then.
  if (is_refusing_ || platform::desktop::current().waits().is_ending()) return from->drop();
  taken_.push_back({request, from, from->take_passed()});
  from->send({});
  platform::desktop::current().waits().post(lives_, [this] { perform_all(); });
}

void open_requests::perform_all() {
  for (taken& each : std::exchange(taken_, {})) perform(std::move(each));
}

void open_requests::perform(taken what) {
  if (what.request.what == wire::request::purpose::open_url) {
    app_.openURL(what.request.url);
  } else if (what.request.shows_differences && what.request.files.size() == 2) {
    compare(what);
  } else {
    open(what);
    if (what.request.has_input) open_input(what, std::move(what.input));
  }
  app_.comeToFront(what.request.activation_token);
}

void open_requests::open(taken const& what) {
  auto const& files = what.request.files;
  std::vector<file_argument> arguments;
  for (auto const& [path, line] : files) arguments.push_back({path, parse_line_place(line)});
  app_.openFiles(std::move(arguments), {.adds_to_recent = what.request.adds_to_recent,
                                        .in_new_window = what.request.in_new_window});
  for (std::size_t n = 0; n < files.size(); ++n) {
    auto const document = app_.documentOfFile(files[n].path);
    if (document != nullptr && !what.request.environment.empty())
      app_.windowOfDocument(*document)->setCallerEnvironment(what.request.environment);
    if (what.request.changes_directory) app_.changeDirectoryFor(files[n].path);
    if (!what.request.waits) continue;
    // A folder isn't waited for, and what couldn't be opened has been told.
    if (document != nullptr)
      wait_for(*document, n, what, nullptr);
    else
      tell_closed(*what.from, n, is_folder(files[n].path));
  }
}

// Both files are closed with what is shown of them.
void open_requests::compare(taken const& what) {
  auto const& files = what.request.files;
  auto const [shown, are_read] = compare_files(app_, files[0].path, files[1].path);
  for (std::size_t n = 0; n < files.size() && what.request.waits; ++n)
    if (shown != nullptr)
      wait_for(*shown, n, what, nullptr);
    else
      tell_closed(*what.from, n, are_read);
}

void open_requests::open_input(taken const& what, platform::descriptor input) {
  if (!input.is_open()) return tell_closed(*what.from, what.request.files.size(), false);
  auto const document = WynDocument::documentWithContentsOfStream(input.get(), "standard input");
  if (document == nullptr) return tell_closed(*what.from, what.request.files.size(), false);
  document->setDocumentEdited(document->length() != 0);
  app_.show(document).showWindow();
  if (what.request.waits)
    wait_for(*document, what.request.files.size(), what,
             std::make_shared<platform::descriptor>(std::move(input)));
}

void open_requests::wait_for(WynDocument& document, std::size_t file, taken const& what,
                             std::shared_ptr<platform::descriptor> const& output) {
  auto const number =
      document.addOpener({what.request.waiter, output != nullptr,
                          [&document, file, from = what.from, output](bool is_saved) {
                            if (output != nullptr)
                              is_saved = from->is_connected() && write_text(document, *output);
                            tell_closed(*from, file, is_saved);
                          }});
  what.from->add_did_leave([weak = document.weak_from_this(), number] {
    if (auto const left = weak.lock()) left->removeOpener(number);
  });
}

}  // namespace app
