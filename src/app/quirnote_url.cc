#include "app/quirnote_url.h"

#include "path/path.h"
#include "platform/system/percent_encoding.h"

#include <charconv>

namespace app {
namespace {

constexpr std::string_view scheme = "qrnt://";

bool take_prefix(std::string_view& text, std::string_view prefix) {
  if (!text.starts_with(prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

std::size_t number_in(std::string const& text) {
  std::size_t number = 0;
  char const* const end = text.data() + text.size();
  auto const result = std::from_chars(text.data(), end, number);
  return result.ec == std::errc() && result.ptr == end ? number : 0;
}

std::optional<std::string> local_path(std::string_view url, std::string const& home) {
  if (!take_prefix(url, "file://")) return std::nullopt;
  take_prefix(url, "localhost");
  if (url.empty() || url.find('\0') != std::string_view::npos) return std::nullopt;
  return path::join(home, std::string(url));
}

}  // namespace

std::optional<quirnote_url> parse_quirnote_url(std::string_view url, std::string const& home) {
  if (!take_prefix(url, scheme)) return std::nullopt;
  std::size_t const mark = url.find('?');
  std::string_view host = url.substr(0, mark);
  while (host.ends_with('/')) host.remove_suffix(1);  // as browsers write it
  quirnote_url result{.host = std::string(host)};
  auto const fields = platform::query_fields(mark == std::string_view::npos ? std::string_view()
                                                                            : url.substr(mark + 1));
  if (!fields) return std::nullopt;
  auto const value = [&](std::string_view name) {
    auto const found = fields->find(name);
    return found == fields->end() ? std::string() : found->second;
  };
  if (std::string const file = value("url"); !file.empty()) {
    auto const local = local_path(file, home);
    if (!local) return std::nullopt;
    result.path = *local;
  }
  result.place = {number_in(value("line")), number_in(value("column"))};
  return result;
}

}  // namespace app
