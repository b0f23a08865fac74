#include "textview/mouse/dropped_content.h"

#include "documents/document_alerts.h"
#include "documents/load_file.h"
#include "documents/printable_name.h"
#include "path/file_system.h"
#include "platform/desktop.h"
#include "platform/system/run_program.h"
#include "platform/utf.h"
#include "settings/store.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

namespace dropped_content {
namespace {

constexpr double color_command_time = 2;  // seconds, in which the window waits

bool may_insert(std::string const& path) {
  struct stat info;
  if (::stat(path.c_str(), &info) != 0 || info.st_size <= large_file) return true;
  char size[32];
  std::snprintf(size, sizeof size, "%.1f", static_cast<double>(info.st_size) / 1048576);
  platform::alert const question{
      "Inserting Large File",
      "The file " + documents::quoted(documents::printable(path::abbreviate_with_tilde(path))) +
          " has a size of " + size + " MB. Are you sure you want to insert this as a text file?",
      {"Insert File", "Cancel"},
      1};
  return platform::desktop::current().alerts().run(question) == 0;
}

void tell_why_unreadable(std::string const& path) {
  std::string bytes;
  if (auto const error = path::read_content(path, bytes))
    documents::tell_could_not_open(*error, path);
}

// The command's input, as a file that is nowhere.
int input_with(std::string const& text) {
  int const file = ::memfd_create("color", MFD_CLOEXEC);
  if (file < 0) return file;
  if (::write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size()) &&
      ::lseek(file, 0, SEEK_SET) == 0)
    return file;
  ::close(file);
  return -1;
}

}  // namespace

bool is_folder(std::string const& path) {
  struct stat info;
  return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

std::vector<char16_t> text_of_files(std::vector<std::string> const& paths, bool as_paths) {
  std::vector<char16_t> text;
  bool has_path = false;
  for (std::string const& path : paths) {
    if (as_paths || is_folder(path)) {
      std::u16string const units = unicode::to_utf16((has_path ? "\n" : "") + path);
      text.insert(text.end(), units.begin(), units.end());
      has_path = true;
    } else if (may_insert(path) && !documents::load_file(path, text, paths.size() > 1)) {
      tell_why_unreadable(path);
    }
  }
  return text;
}

std::u16string text_of_color(plist::value const& color) {
  plist::array const& parts = color.elements();
  if (parts.size() < 3) return {};
  char numbers[96];
  std::snprintf(numbers, sizeof numbers, "%f %f %f", parts[0].real_or(0), parts[1].real_or(0),
                parts[2].real_or(0));
  int const input = input_with(numbers);
  if (input < 0) return {};
  // Both of the command's outputs count, as they do for any other command of the user.
  std::string const command = settings::store().string("WynTextViewPrettyPrintColorCommand");
  auto const result = platform::run_program({"/bin/bash", "-c", "exec 1>&2\n" + command}, input,
                                            color_command_time, [] { return true; });
  ::close(input);
  return result.error == 0 ? unicode::to_utf16(result.standard_error) : std::u16string();
}

}  // namespace dropped_content
