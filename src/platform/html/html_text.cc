#include "platform/html/html_text.h"

#include <algorithm>
#include <array>

namespace platform {
namespace {

template <std::size_t n>
bool is_one_of(std::array<std::string_view, n> const& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

constexpr std::array<std::string_view, 29> blocks = {
    "address", "article", "aside",  "blockquote", "body", "dd",   "details", "div",
    "dl",      "dt",      "figure", "footer",     "form", "head", "header",  "hr",
    "html",    "li",      "main",   "nav",        "ol",   "pre",  "section", "summary",
    "table",   "tbody",   "thead",  "tr",         "ul"};
constexpr std::array<std::string_view, 7> spaced = {"h1", "h2", "h3", "h4", "h5", "h6", "p"};

}  // namespace

std::vector<html_text::span> html_text::put(std::string_view bytes) {
  tokens_.put(bytes, *this);
  return std::exchange(spans_, {});
}

std::vector<html_text::span> html_text::finish() {
  tokens_.finish(*this);
  add(std::exchange(entity_, {}));
  return std::exchange(spans_, {});
}

void html_text::text(std::string_view raw) {
  constexpr std::size_t longest_entity = 10;
  std::string const all = std::exchange(entity_, {}) + std::string(raw);
  std::size_t const last = all.rfind('&');
  bool const is_cut =
      last != all.npos && all.size() - last < longest_entity && all.find(';', last) == all.npos;
  if (is_cut) entity_ = all.substr(last);
  add(text_of_html(std::string_view(all).substr(0, is_cut ? last : all.npos)));
}

void html_text::tag(std::string_view name, bool closes, std::string_view raw) {
  add(std::exchange(entity_, {}));
  if (name == "a") link_ = closes ? "" : attribute_of(raw, "href");
  if (name == "br") return add_plain("\n");
  if ((name == "td" || name == "th") && closes) return add_plain("\t");
  if (is_one_of(blocks, name)) end_line(1);
  if (is_one_of(spaced, name)) end_line(2);
  if (name == "li" && !closes) add_plain("\u2022 ");
  if (name == "hr") add_plain("----\n");
  if (name != "pre") return;
  preformatted_ = std::max(0, preformatted_ + (closes ? -1 : 1));
  skips_newline_ = !closes;
}

// Outside of <pre> any number of blanks and line feeds is one blank, and none at a line's ends.
void html_text::add(std::string_view text) {
  if (text.empty()) return;
  if (preformatted_ > 0) {
    if (std::exchange(skips_newline_, false) && text.starts_with('\n')) text.remove_prefix(1);
    return add_plain(text);
  }
  std::string plain;
  for (char const c : text) {
    if (c == ' ' || c == '\t' || c == '\n' || c == '\r') {
      blank_ = true;
      continue;
    }
    if (std::exchange(blank_, false) && (newlines_ == 0 || !plain.empty())) plain += ' ';
    plain += c;
  }
  bool const ends_in_blank = std::exchange(blank_, false);
  add_plain(plain);
  blank_ = ends_in_blank;
}

void html_text::add_plain(std::string_view text) {
  if (text.empty()) return;
  if (text[0] == '\n') blank_ = false;
  if (spans_.empty() || spans_.back().link != link_) spans_.push_back({"", link_});
  if (blank_ && newlines_ == 0) spans_.back().text += ' ';
  blank_ = false;
  spans_.back().text += text;
  std::size_t const content = text.find_last_not_of('\n');
  auto const ends = static_cast<int>(text.size() - (content == text.npos ? 0 : content + 1));
  newlines_ = content == text.npos ? newlines_ + ends : ends;
}

void html_text::end_line(int lines) {
  blank_ = false;
  while (newlines_ < lines) add_plain("\n");
}

}  // namespace platform
