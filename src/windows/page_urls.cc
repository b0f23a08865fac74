#include "windows/page_urls.h"

#include "platform/html/html_tokens.h"
#include "platform/log.h"
#include "platform/system/library_folders.h"
#include "platform/system/percent_encoding.h"

#include <sys/stat.h>

#include <algorithm>

namespace page_urls {
namespace {

constexpr std::string_view plain = "/-._~!$&'()*+,;=:@";

/// As browsers write the URLs of files.
std::string without_host(std::string url) {
  constexpr std::string_view host = "localhost";
  url.erase(url.find(host), host.size());
  return url;
}

/// Finds where the elements of a page's head may begin.
class head_finder final : public platform::html_tokens::sink {
 public:
  void text(std::string_view raw) override {
    bool const is_blank = raw.find_first_not_of(" \t\r\n") == raw.npos;
    if (!is_blank) has_ended_ = true;
    at_ += raw.size();
  }
  void tag(std::string_view name, bool closes, std::string_view raw) override {
    at_ += raw.size();
    if (name == "base") has_base_ = true;
    bool const opens = !closes && (name == "html" || name == "head");
    if (opens && !has_ended_) place_ = at_;
    if (!opens) has_ended_ = true;
  }
  void other(std::string_view raw) override {
    at_ += raw.size();
    if (!has_ended_ && raw.starts_with("<!")) place_ = at_;
  }
  std::size_t place() const { return place_; }
  bool has_base() const { return has_base_; }

 private:
  std::size_t at_ = 0, place_ = 0;
  bool has_ended_ = false, has_base_ = false;
};

}  // namespace

platform::page_link link_for(std::string const& url, std::string const& from) {
  using kind = platform::page_link::kind;
  std::string const scheme = url.substr(0, url.find(':'));
  if (scheme == "qn-file" && from.starts_with("qn-")) {
    std::string const file = file_of(url);
    if (is_file(file)) return {kind::load};
    return {kind::instead,
            error_page() + "?url=" + platform::percent_encoded(url, "-._~") + "&error=1"};
  }
  std::string const fragment = url.substr(std::min(url.find('#'), url.size()));
  std::string const page = from.substr(0, from.find('#'));
  bool const is_within = !fragment.empty() && url == page + fragment;
  // A link within a text that is shown, as its base makes it.
  for (std::string const& base : {error_page(), without_host(error_page())})
    if (from.starts_with("qn-shown:") && !fragment.empty() && url == base + fragment)
      return {kind::instead, page + fragment};
  for (char const* known : {"file", "about", "data"})
    if (scheme == known || is_within) return {kind::load};
  platform::log("a page may not go to " + url.substr(0, 200));
  return {kind::refuse};
}

std::string file_of(std::string_view url) {
  constexpr std::string_view scheme = "qn-file:";
  if (!url.starts_with(scheme)) return "";
  url.remove_prefix(scheme.size());
  url = url.substr(0, url.find_first_of("?#"));
  for (std::string_view const host : {"//localhost/", "///"})
    if (url.starts_with(host)) url.remove_prefix(host.size() - 1);
  auto const file = platform::percent_decoded(url);
  bool const is_path =
      file && file->starts_with('/') && !file->starts_with("//") && file->find('\0') == file->npos;
  return is_path ? *file : "";
}

bool is_file(std::string const& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

std::string error_page() {
  return "file://localhost" +
         platform::percent_encoded(platform::shared_support_folder() + "/html/error_not_found.html",
                                   plain);
}

std::string with_base(std::string const& html, std::string const& url) {
  platform::html_tokens tokens;
  head_finder head;
  constexpr std::size_t longest_head = 1 << 16;
  tokens.put(std::string_view(html).substr(0, longest_head), head);
  tokens.finish(head);
  if (head.has_base()) return html;
  std::string result = html;
  result.insert(head.place(), "<base href=\"" + platform::html_escaped(url) + "\">");
  return result;
}

}  // namespace page_urls
