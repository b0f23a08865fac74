#pragma once

#include "platform/html_window.h"

#include <string>
#include <string_view>

/// What URLs in pages of output lead to:
///
///     qn-internal://local/7.html   the output of the seventh run
///     qn-shown://local/8.html      a text that is shown; its scripts may not run commands
///     qn-file:///home/me/a.html    a file, whose scripts may
///     qn-open:?file=…&line=…       a place in the editor (commands/link_places.h)
///     file:, about:, data:         as they are
///
/// All others, those of other hosts among them, are refused.
namespace page_urls {

/// `from` is the page that the link is in. Pages of output come from load() alone: once read they
/// can't be gone back to. A file that was opened as such leads to none whose
/// scripts may run commands.
platform::page_link link_for(std::string const& url, std::string const& from);

/// The path that a qn-file: URL names; empty for any other, or if it isn't an absolute path.
std::string file_of(std::string_view url);

/// A regular file, or a link to one.
bool is_file(std::string const& path);

/// The URL of the page that says that something wasn't found.
std::string error_page();

/// The text of a page with links that are relative to `url`.
std::string with_base(std::string const& html, std::string const& url);

}  // namespace page_urls
