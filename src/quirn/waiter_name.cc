#include "quirn/waiter_name.h"

#include "platform/system/descriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <charconv>

namespace quirn {
namespace {

// "ID (NAME) STATE PARENT ...", where the name may hold anything.
struct process {
  std::string name = {};
  int parent = 0;
};

process look_at(int id) {
  platform::descriptor const file(
      ::open(("/proc/" + std::to_string(id) + "/stat").c_str(), O_RDONLY | O_CLOEXEC));
  char text[512];
  ssize_t const size = ::read(file.get(), text, sizeof text);
  std::string const line(text, size > 0 ? static_cast<std::size_t>(size) : 0);
  std::size_t const begin = line.find('('), end = line.rfind(')');
  if (begin == std::string::npos || end == std::string::npos || end + 4 > line.size()) return {};
  process result{line.substr(begin + 1, end - begin - 1)};
  std::from_chars(line.data() + end + 4, line.data() + line.size(), result.parent);
  return result;
}

}  // namespace

std::string waiter_name() {
  process const parent = look_at(::getppid());
  bool const is_between = (parent.name == "sh" || parent.name == "dash") && parent.parent > 1;
  std::string const above = is_between ? look_at(parent.parent).name : "";
  return above.empty() ? parent.name : above;
}

}  // namespace quirn
