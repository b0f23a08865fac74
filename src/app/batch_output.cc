#include "app/batch_output.h"

#include <unicode/utf8.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>

#include "platform/shown_characters.h"
#include "platform/standard_streams.h"

namespace {

std::string escaped_byte(unsigned char byte) {
  if (byte == '\n') return "\\n";
  if (byte == '\t') return "\\t";
  char text[8];
  std::snprintf(text, sizeof text, "\\x%02X", byte);
  return text;
}

}  // namespace

std::string escaped_name(std::string_view name) {
  std::string out;
  auto const size = static_cast<std::int32_t>(name.size());
  for (std::int32_t at = 0; at < size;) {
    std::int32_t const start = at;
    UChar32 c = 0;
    U8_NEXT(name.data(), at, size, c);
    auto const bytes =
        name.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(at - start));
    if (c == '\\')
      out += "\\\\";
    else if (platform::is_shown_as_it_is(c))  // a wrong byte is -1
      out += bytes;
    else
      for (char const byte : bytes) out += escaped_byte(static_cast<unsigned char>(byte));
  }
  return out;
}

void batch_output::begin_file(std::string_view name) {
  if (style_ == heading::lines)
    put((stands_in_line_ ? "\n==> " : "==> ") + escaped_name(name) + " <==\n");
  if (style_ == heading::nulls) put(std::string(name) + '\0');
}

void batch_output::end_file() {
  if (style_ == heading::nulls) put({"", 1});
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
