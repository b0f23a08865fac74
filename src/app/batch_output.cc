#include "app/batch_output.h"

#include <unistd.h>

#include "platform/system/standard_streams.h"

namespace app {

void batch_output::begin_file(std::string_view name) {
  if (style_ == heading::lines)
    put((stands_in_line_ ? "\n==> " : "==> ") + platform::escaped_name(name) + " <==\n");
  if (style_ == heading::nulls) put(std::string(name) + '\0');
}

void batch_output::end_file() {
  if (style_ == heading::nulls) put(std::string(1, '\0'));
  if (isatty(STDOUT_FILENO)) flush();
}

void batch_output::put(std::string_view text) {
  if (text.empty()) return;
  stands_in_line_ = text.back() != '\n';
  constexpr std::size_t enough = 1 << 16;  // bytes
  if (waiting_.size() + text.size() > enough) flush();
  if (text.size() > enough)
    write(text);
  else
    waiting_ += text;
}

void batch_output::write(std::string_view text) {
  if (error_ == 0) error_ = platform::write_to_stream(STDOUT_FILENO, text.data(), text.size());
}

int batch_output::flush() {
  write(waiting_);
  waiting_.clear();
  return error_;
}

}  // namespace app
