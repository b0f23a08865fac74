#include "platform/html/html_tokens.h"

#include "encoding/encoders.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <utility>

namespace platform {
namespace {

constexpr std::size_t longest_tag = std::size_t{1} << 16;

bool is_letter(char c) {
  return ('a' <= c && c <= 'z') || ('A' <= c && c <= 'Z');
}

bool is_blank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
}

char small(char c) {
  return 'A' <= c && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string name_of(std::string_view tag) {
  std::size_t const first = tag.starts_with("</") ? 2 : 1;
  std::string name;
  for (std::size_t i = first; i < tag.size() && name.size() < 32; ++i) {
    if (is_blank(tag[i]) || tag[i] == '>' || tag[i] == '/') break;
    name += small(tag[i]);
  }
  return name;
}

bool has_no_tags(std::string_view name) {
  constexpr std::array<std::string_view, 8> all = {"iframe", "noembed",  "noframes", "script",
                                                   "style",  "textarea", "title",    "xmp"};
  return std::find(all.begin(), all.end(), name) != all.end();
}

struct named_entity {
  std::string_view name, text;
};

constexpr std::array<named_entity, 14> named_entities = {{{"amp", "&"},
                                                          {"apos", "'"},
                                                          {"bull", "\u2022"},
                                                          {"copy", "\u00A9"},
                                                          {"gt", ">"},
                                                          {"hellip", "\u2026"},
                                                          {"larr", "\u2190"},
                                                          {"lt", "<"},
                                                          {"mdash", "\u2014"},
                                                          {"middot", "\u00B7"},
                                                          {"nbsp", "\u00A0"},
                                                          {"ndash", "\u2013"},
                                                          {"quot", "\""},
                                                          {"rarr", "\u2192"}}};

std::string utf8_of(std::uint32_t value) {
  if (value == 0 || value > 0x10FFFF || (0xD800 <= value && value < 0xE000)) value = 0xFFFD;
  std::string bytes;
  encoding::put_utf8_sequence(static_cast<char32_t>(value), std::back_inserter(bytes));
  return bytes;
}

}  // namespace

void html_tokens::put(std::string_view bytes, sink& to) {
  while (!bytes.empty()) bytes = take(bytes, to);
}

void html_tokens::finish(sink& to) {
  if (held_.empty()) return;
  if (held_ == "<")
    to.text(held_);
  else
    to.other(held_);
  held_.clear();
  state_ = state::text;
}

std::string_view html_tokens::take(std::string_view rest, sink& to) {
  switch (state_) {
    case state::text:
      return take_text(rest, to);
    case state::tag:
      return take_tag(rest, to);
    case state::comment:
      return take_comment(rest, to);
    case state::contents:
      break;
  }
  return take_contents(rest, to);
}

std::string_view html_tokens::take_text(std::string_view rest, sink& to) {
  std::size_t const at = rest.find('<');
  if (at != 0) to.text(rest.substr(0, at));
  if (at == rest.npos) return {};
  begin_tag("<");
  return rest.substr(at + 1);
}

void html_tokens::begin_tag(std::string_view held) {
  held_ = held;
  state_ = state::tag;
  quote_ = '\0';
  is_value_ = is_long_ = false;
}

std::string_view html_tokens::take_tag(std::string_view rest, sink& to) {
  if (held_ == "<" && (rest[0] == '!' || rest[0] == '?')) {
    state_ = state::comment;
    is_long_ = false;
    return rest;
  }
  if (held_ == "<" && rest[0] != '/' && !is_letter(rest[0])) {
    to.text("<");
    held_.clear();
    state_ = state::text;
    return rest;
  }
  std::size_t at = 0;
  while (at < rest.size() && !ends_tag(rest[at])) ++at;
  bool const is_whole = at < rest.size();
  held_ += rest.substr(0, is_whole ? at + 1 : at);
  if (!is_whole && held_.size() <= longest_tag) return {};
  if (!is_long_) name_ = name_of(held_);
  bool const closes = !is_long_ && held_.starts_with("</");
  if (is_long_ || !is_whole)
    to.other(held_);
  else
    to.tag(name_, closes, held_);
  held_.clear();
  is_long_ = !is_whole;
  if (!is_whole) return {};
  state_ = !closes && has_no_tags(name_) ? state::contents : state::text;
  return rest.substr(at + 1);
}

// A ">" in quotes doesn't end it, and a quote is one only where a value begins.
bool html_tokens::ends_tag(char c) {
  if (quote_ != '\0') {
    if (c == quote_) quote_ = '\0';
    return false;
  }
  if (c == '>') return true;
  if (is_value_ && (c == '"' || c == '\'')) quote_ = c;
  is_value_ = c == '=' || (is_value_ && is_blank(c));
  return false;
}

std::string_view html_tokens::take_comment(std::string_view rest, sink& to) {
  if (!is_long_ && held_.size() < 4 && rest[0] != '>') {
    held_ += rest[0];
    return rest.substr(1);
  }
  if (!is_long_) name_ = held_.starts_with("<!--") ? "-->" : ">";
  std::size_t const had = held_.size(), from = is_long_ ? 0 : std::min<std::size_t>(2, had);
  held_ += rest;
  std::size_t const at = held_.find(name_, from);
  is_long_ = at == held_.npos;
  if (is_long_) {
    std::size_t const kept = std::min<std::size_t>(held_.size(), 2);
    to.other(std::string_view(held_).substr(0, held_.size() - kept));
    held_.erase(0, held_.size() - kept);
    return {};
  }
  std::size_t const end = at + name_.size();
  to.other(std::string_view(held_).substr(0, end));
  held_.clear();
  state_ = state::text;
  return rest.substr(end - had);
}

std::string_view html_tokens::take_contents(std::string_view rest, sink& to) {
  std::string const end = "</" + name_;
  std::size_t const had = held_.size();
  held_ += rest;
  auto const at = std::search(held_.begin(), held_.end(), end.begin(), end.end(),
                              [](char a, char b) { return small(a) == b; });
  auto const found = static_cast<std::size_t>(at - held_.begin());
  if (at == held_.end()) {
    std::size_t const tail = held_.size() - std::min(held_.size(), end.size() - 1);
    std::size_t const kept = std::min(held_.find('<', tail), held_.size());
    if (kept != 0) to.other(std::string_view(held_).substr(0, kept));
    held_.erase(0, kept);
    return {};
  }
  if (found != 0) to.other(std::string_view(held_).substr(0, found));
  std::size_t const begun = std::max(found + 1, had);
  begin_tag(std::string(held_, found, begun - found));
  return rest.substr(begun - had);
}

std::size_t end_of_entity(std::string_view raw) {
  constexpr std::size_t longest = 10;
  if (!raw.starts_with('&')) return 0;
  std::size_t const end = raw.substr(0, longest).find(';');
  return end == raw.npos || end < 2 ? 0 : end + 1;
}

std::string text_of_entity(std::string_view entity) {
  std::string_view const name = entity.substr(1, entity.size() - 2);
  if (name.starts_with('#')) {
    bool const is_hexadecimal = name.size() > 1 && small(name[1]) == 'x';
    std::string_view const digits = name.substr(is_hexadecimal ? 2 : 1);
    std::uint32_t value = 0;
    auto const end = digits.data() + digits.size();
    auto const result = std::from_chars(digits.data(), end, value, is_hexadecimal ? 16 : 10);
    return result.ec == std::errc() && result.ptr == end ? utf8_of(value) : "";
  }
  for (auto const& [known, text] : named_entities)
    if (known == name) return std::string(text);
  return "";
}

std::string text_of_html(std::string_view raw) {
  std::string text;
  for (std::size_t at = 0; at < raw.size();) {
    std::size_t const entity = end_of_entity(raw.substr(at));
    std::string const meant = entity == 0 ? "" : text_of_entity(raw.substr(at, entity));
    text += meant.empty() ? std::string(1, raw[at]) : meant;
    at += meant.empty() ? 1 : entity;
  }
  return text;
}

std::string attribute_of(std::string_view tag, std::string_view name) {
  std::size_t at = 1;
  auto const until = [&](auto const& is_end) {
    std::size_t const first = at;
    while (at < tag.size() && !is_end(tag[at])) ++at;
    return tag.substr(first, at - first);
  };
  until(is_blank);
  while (at < tag.size()) {
    until([](char c) { return !is_blank(c) && c != '/'; });
    std::string_view const key =
        until([](char c) { return is_blank(c) || c == '=' || c == '>' || c == '/'; });
    until([](char c) { return !is_blank(c); });
    std::string_view value;
    if (at < tag.size() && tag[at] == '=') {
      ++at;
      until([](char c) { return !is_blank(c); });
      char const quote = at < tag.size() && (tag[at] == '"' || tag[at] == '\'') ? tag[at] : '\0';
      if (quote != '\0') ++at;
      value = quote != '\0' ? until([&](char c) { return c == quote; })
                            : until([](char c) { return is_blank(c) || c == '>'; });
      if (quote != '\0') ++at;
    }
    bool const is_it = std::equal(key.begin(), key.end(), name.begin(), name.end(),
                                  [](char a, char b) { return small(a) == b; });
    if (is_it) return text_of_html(value);
    if (at < tag.size() && tag[at] == '>') break;
  }
  return "";
}

std::string html_escaped(std::string_view text) {
  std::string result;
  for (char const c : text) {
    switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      default:
        result += c;
    }
  }
  return result;
}

}  // namespace platform
