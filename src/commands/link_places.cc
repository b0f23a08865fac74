#include "commands/link_places.h"

#include "platform/system/percent_encoding.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace commands {
namespace {

constexpr std::size_t longest_line = 1 << 16;  // bytes that are held back
constexpr std::string_view open_scheme = "qn-open:";

/// Elements that stand in a line.
bool is_inline(std::string_view name) {
  constexpr std::array<std::string_view, 22> all = {
      "a", "abbr", "b",   "bdi", "bdo", "big",  "cite",  "code", "del",    "em", "font",
      "i", "ins",  "kbd", "q",   "s",   "samp", "small", "span", "strong", "tt", "u"};
  return std::find(all.begin(), all.end(), name) != all.end();
}

}  // namespace

link_places::link_places(std::string directory, std::function<void(output_place const&)> found)
    : finder_(std::move(directory)), found_(std::move(found)) {}

std::string link_places::put(std::string_view bytes) {
  tokens_.put(bytes, *this);
  return std::exchange(shown_, {});
}

std::string link_places::flush() {
  was_cut_ = was_cut_ || !line_.empty();
  put_line();
  return std::exchange(shown_, {});
}

std::string link_places::finish() {
  tokens_.finish(*this);
  end_line();
  return std::exchange(shown_, {});
}

void link_places::text(std::string_view raw) {
  while (!raw.empty()) {
    std::size_t const newline = raw.find('\n');
    add(raw.substr(0, newline), !is_in_link_);
    if (newline == raw.npos) return;
    end_line();
    shown_ += '\n';
    raw.remove_prefix(newline + 1);
  }
}

void link_places::tag(std::string_view name, bool closes, std::string_view raw) {
  if (!is_inline(name)) end_line();
  if (name == "a") is_in_link_ = !closes;
  add(raw, false);
  if (!is_inline(name)) put_line();
}

void link_places::add(std::string_view raw, bool is_text) {
  if (raw.empty()) return;
  line_ += raw;
  if (pieces_.empty() || pieces_.back().is_text != is_text)
    pieces_.push_back({line_.size(), is_text});
  else
    pieces_.back().last = line_.size();
  if (line_.size() <= longest_line) return;
  was_cut_ = true;
  put_line();
}

void link_places::put_line() {
  shown_ += line_;
  line_.clear();
  pieces_.clear();
}

void link_places::end_line() {
  if (std::exchange(was_cut_, false)) return put_line();
  std::string text;
  std::vector<std::size_t> offsets;
  bool const is_plain = pieces_.size() == 1 && pieces_[0].is_text && line_.find('&') == line_.npos;
  if (!is_plain) read_line(text, offsets);
  auto const place = finder_.place_in(is_plain ? line_ : text);
  if (!place) return put_line();
  found_(*place);
  std::size_t const first = is_plain ? place->first : offsets[place->first];
  put_linked(first, is_plain ? place->last : offsets[place->last], url_of(*place));
}

/// The text as it is read, and where each byte of it stands; of an entity all have its first.
void link_places::read_line(std::string& text, std::vector<std::size_t>& offsets) const {
  std::size_t first = 0;
  for (piece const& each : pieces_) {
    for (std::size_t at = first; each.is_text && at < each.last;) {
      std::string_view const rest(line_.data() + at, each.last - at);
      std::size_t const entity = platform::end_of_entity(rest);
      std::string meant = entity == 0 ? "" : platform::text_of_entity(rest.substr(0, entity));
      std::size_t const length = meant.empty() ? 1 : entity;
      if (meant.empty()) meant = rest[0];
      text += meant;
      offsets.insert(offsets.end(), meant.size(), at);
      at += length;
    }
    first = each.last;
  }
  offsets.push_back(line_.size());
}

void link_places::put_linked(std::size_t from, std::size_t to, std::string const& url) {
  std::string const link = "<a href=\"" + platform::html_escaped(url) + "\">";
  std::size_t first = 0;
  for (piece const& each : pieces_) {
    std::size_t const begin = std::clamp(from, first, each.last);
    std::size_t const end = std::clamp(to, first, each.last);
    bool const is_linked = each.is_text && begin < end;
    shown_.append(line_, first, begin - first);
    if (is_linked) shown_ += link;
    shown_.append(line_, begin, end - begin);
    if (is_linked) shown_ += "</a>";
    shown_.append(line_, end, each.last - end);
    first = each.last;
  }
  line_.clear();
  pieces_.clear();
}

std::string url_of(output_place const& place) {
  std::string url(open_scheme);
  url += "?file=" + platform::percent_encoded(place.file, "/-._~") +
         "&line=" + std::to_string(place.line);
  if (place.column != 0) url += "&column=" + std::to_string(place.column);
  return url;
}

std::optional<output_place> place_of_url(std::string_view url) {
  if (!url.starts_with(open_scheme)) return std::nullopt;
  std::size_t const query = url.find('?');
  if (query == url.npos) return std::nullopt;
  auto const fields = platform::query_fields(url.substr(query + 1));
  if (!fields) return std::nullopt;
  output_place place;
  auto const number = [&](char const* name, std::size_t& to) {
    auto const field = fields->find(name);
    if (field == fields->end()) return true;
    char const* const end = field->second.data() + field->second.size();
    return std::from_chars(field->second.data(), end, to).ec == std::errc();
  };
  if (!number("line", place.line) || !number("column", place.column)) return std::nullopt;
  if (auto const file = fields->find("file"); file != fields->end()) place.file = file->second;
  bool const is_path = place.file.starts_with('/') && place.file.find('\0') == place.file.npos;
  return is_path ? std::optional(place) : std::nullopt;
}

}  // namespace commands
