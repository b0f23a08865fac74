#include "platform/log.h"

#include <cstdio>
#include <mutex>
#include <set>
#include <string_view>

#include "platform/escaped.h"

namespace platform {

void log(std::string const& message) {
  log_text("Quirnote: " + message + "\n");
}

void log_text(std::string const& text) {
  std::string shown;
  for (std::size_t begin = 0; begin < text.size();) {
    std::size_t const end = text.find('\n', begin);
    shown += platform::escaped(std::string_view(text).substr(begin, end - begin));
    if (end == text.npos) break;
    shown += '\n';
    begin = end + 1;
  }
  std::fputs(shown.c_str(), stderr);
}

void log_once(std::string const& message) {
  log_text_once("Quirnote: " + message + "\n");
}

// Never destroyed: threads and the end of the program may still have something to tell.
void log_text_once(std::string const& text) {
  static auto& mutex = *new std::mutex;
  static auto& told = *new std::set<std::string>;
  std::lock_guard const lock(mutex);
  if (told.insert(text).second) log_text(text);
}

}  // namespace platform
