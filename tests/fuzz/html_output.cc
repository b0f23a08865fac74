#include "commands/link_places.h"
#include "fuzz/fuzz.h"
#include "platform/html/html_text.h"
#include "windows/page_urls.h"

// A page of output, cut after each multiple of its first byte: linking changes nothing where no
// place is named, and what it is read as doesn't depend on the cuts. The same as a URL.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  if (size == 0) return 0;
  std::size_t const step = data[0] + std::size_t{1};
  std::string const html(data + 1, data + size);

  commands::link_places links("/nonexistent", [](auto const&) {});
  platform::html_text whole, cut;
  std::string shown, text, text_of_cut;
  auto const add = [](std::string& to, auto const& spans) {
    for (auto const& span : spans) to += span.text;
  };
  for (std::size_t at = 0; at < html.size(); at += step) {
    shown += links.put(html.substr(at, step));
    add(text_of_cut, cut.put(html.substr(at, step)));
  }
  shown += links.finish();
  add(text_of_cut, cut.finish());
  add(text, whole.put(html));
  add(text, whole.finish());
  bool const names_place = html.find("file:") != html.npos || html.find('/') != html.npos;
  if (shown != html && !names_place) std::abort();
  if (text != text_of_cut) std::abort();

  std::string const based = page_urls::with_base(html, "u");
  if (based != html && based.size() != html.size() + std::string("<base href=\"u\">").size())
    std::abort();
  std::string const file = page_urls::file_of(html);
  if (!file.empty() && (file[0] != '/' || file.find('\0') != file.npos)) std::abort();
  if (auto const place = commands::place_of_url(html))
    if (commands::place_of_url(commands::url_of(*place)) != place) std::abort();
  return 0;
}
