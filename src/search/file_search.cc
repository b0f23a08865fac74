#include "search/file_search.h"

#include "documents/file_text.h"
#include "encoding/decode_in_place.h"
#include "encoding/estimate_buffer.h"
#include "encoding/harmonize_units.h"
#include "path/file_reader.h"
#include "platform/utf.h"
#include "plist/utf8.h"

#include <algorithm>
#include <cstring>

namespace search {
namespace {

using namespace std::chrono_literals;

constexpr auto patience = 10s;               // with one file
constexpr std::size_t longest_sought = 200;  // bytes that are searched for by a byte_search
constexpr std::size_t kept_memory = 16 * 1024 * 1024;  // bytes between files

bool is_ascii(std::u16string_view text) {
  return std::all_of(text.begin(), text.end(), [](char16_t u) { return u != 0 && u < 0x80; });
}

bool is_ascii(char const* bytes, std::size_t size) {
  constexpr std::size_t block = 256;
  for (; size >= block; bytes += block, size -= block) {
    unsigned char all = 0;
    for (std::size_t n = 0; n < block; ++n)
      all = static_cast<unsigned char>(all | static_cast<unsigned char>(bytes[n]));
    if (all >= 0x80) return false;
  }
  return std::all_of(bytes, bytes + size, [](char c) { return static_cast<signed char>(c) >= 0; });
}

// Units that valid UTF-8 has as UTF-16.
std::size_t units_of(std::string_view bytes) {
  std::size_t units = 0;
  for (char const c : bytes) {
    auto const byte = static_cast<unsigned char>(c);
    units += (byte & 0xC0) != 0x80;
    units += byte >= 0xF0;
  }
  return units;
}

bool has_lone_return(std::string_view bytes) {
  for (std::size_t at = 0; (at = bytes.find('\r', at)) != bytes.npos; ++at)
    if (at + 1 == bytes.size() || bytes[at + 1] != '\n') return true;
  return false;
}

// Lines alone don't tell where a text begins and ends.
bool names_ends_of_text(std::u16string_view pattern) {
  for (std::size_t n = 0; n + 1 < pattern.size(); ++n)
    if (pattern[n] == u'\\' &&
        std::u16string_view(u"AzZG").find(pattern[n + 1]) != std::u16string_view::npos)
      return true;
  return false;
}

bool is_inner(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

bool is_inner(char16_t unit) {
  return (unit & 0xFC00) == 0xDC00;
}

// Where the part of a line around a match begins and ends that is kept: whole characters alone.
template <class Text>
std::pair<std::size_t, std::size_t> excerpt_of(Text all, std::size_t line, std::size_t end,
                                               std::size_t match, std::size_t excerpt) {
  if (excerpt == 0) return {line, end};
  std::size_t from = match - line > excerpt ? match - excerpt : line;
  std::size_t to = end - match > 2 * excerpt ? match + 2 * excerpt : end;
  while (from > line && is_inner(all[from])) --from;
  while (to < end && is_inner(all[to])) ++to;
  return {from, to};
}

}  // namespace

file_searcher::file_searcher(file_query query, std::atomic<bool> const& cancelled)
    : query_(std::move(query)),
      compiled_(query_.sought, {.regular_expression = query_.regular_expression,
                                .ignore_case = query_.ignore_case,
                                .whole_words = query_.whole_words}),
      cancelled_(cancelled),
      keeps_matches_(!query_.only_count || query_.scopes != nullptr) {
  std::u16string const& sought = query_.sought;
  if (query_.regular_expression) {
    if (std::string needed = required_text(sought); !needed.empty())
      needed_.emplace(needed.substr(0, longest_sought), query_.ignore_case);
    needed_is_ascii_ = true;
    stays_in_line_ = compiled_.pattern()->stays_in_line() && !names_ends_of_text(sought);
    return;
  }
  bool const has_line_end = sought.find_first_of(u"\n\r") != sought.npos;
  std::string const bytes = unicode::to_utf8(sought);
  bool const is_one_form = is_ascii(sought) || (!query_.ignore_case && plist::is_utf8(bytes) &&
                                                query_.supplementary_pairs);
  if (has_line_end || !is_one_form || bytes.size() > longest_sought ||
      sought.find(u'\0') != sought.npos)
    return;
  needed_.emplace(bytes, query_.ignore_case);
  needed_is_ascii_ = is_ascii(sought);
  is_whole_ = !query_.whole_words;
  stays_in_line_ = true;
}

file_result file_searcher::search(std::string const& path) {
  file_result result;
  result.path = path;
  deadline_ = std::chrono::steady_clock::now() + patience;
  if (cancelled_)
    result.what = outcome::cancelled;
  else if (query_.rules.is_text(path) == false)
    result.what = outcome::binary;
  else if (read(path, result))
    search_bytes(result);
  if (query_.only_count && keeps_matches_) result.matches.clear();
  if (capacity_ > kept_memory) {
    bytes_.reset();
    capacity_ = 0;
  }
  return result;
}

file_result file_searcher::search(std::string const& path, text::unit_view text) {
  file_result result;
  result.path = path;
  deadline_ = std::chrono::steady_clock::now() + patience;
  search_units(text, result);
  if (query_.only_count && keeps_matches_) result.matches.clear();
  return result;
}

bool file_searcher::read(std::string const& path, file_result& result) {
  auto const fail = [&](std::string reason) {
    result.what = outcome::unreadable;
    result.reason = std::move(reason);
    return false;
  };
  path::file_reader reader;
  if (auto const error = reader.open(path)) return fail(error->message);
  result.version = path::version_of(reader.info());
  auto const expected = static_cast<std::uint64_t>(std::max<off_t>(reader.info().st_size, 0));
  size_ = 0;
  // One byte more, to see the end.
  for (std::size_t wanted = std::min<std::uint64_t>(expected + 1, projects::text_head);;) {
    if (wanted > documents::largest_file) return fail("it has more than 2 GiB");
    if (wanted > capacity_) {
      auto larger = std::make_unique_for_overwrite<char[]>(wanted);
      if (size_ != 0) std::memcpy(larger.get(), bytes_.get(), size_);
      bytes_ = std::move(larger);
      capacity_ = wanted;
    }
    bool const is_head = size_ == 0;
    auto const got = reader.read(bytes_.get() + size_, wanted - size_);
    if (got.error) return fail(got.error->message);
    size_ += got.bytes;
    if (is_head && query_.rules.is_text(path) != true &&
        !projects::looks_like_text({bytes_.get(), size_})) {
      result.what = outcome::binary;
      return false;
    }
    if (size_ < wanted) return true;
    wanted = is_head ? std::max<std::size_t>(expected + 1, 2 * wanted) : 2 * wanted;
    if (cancelled_) {
      result.what = outcome::cancelled;
      return false;
    }
  }
}

void file_searcher::search_bytes(file_result& result) {
  std::string_view const all(bytes_.get(), size_);
  auto const* const bytes = reinterpret_cast<unsigned char const*>(bytes_.get());
  if (needed_) {
    bool const is_there = needed_->find(all.begin(), all.end()) != all.end();
    bool const may_be_wide =
        !all.empty() &&
        (bytes[0] >= 0xFE || all.substr(0, projects::text_head).find('\0') != all.npos);
    // In another charset it may look different, and case reaches beyond ASCII.
    if (!is_there && !may_be_wide && needed_is_ascii_ &&
        (!query_.ignore_case || is_ascii(all.data(), all.size())))
      return;
  }
  bool const ascii = is_ascii(all.data(), all.size());
  auto const charset = ascii ? encoding::ASCII : encoding::estimate_buffer(bytes, size_);
  bool const is_by_bytes =
      needed_ && stays_in_line_ && (ascii || !query_.ignore_case) &&
      (ascii || (charset == encoding::UTF8 && query_.supplementary_pairs && plist::is_utf8(all))) &&
      !has_lone_return(all);
  std::unique_ptr<char16_t[]> memory;
  if (!is_by_bytes) return search_units(decode(charset, memory), result);
  constexpr std::string_view mark = "\xEF\xBB\xBF";
  search_utf8(all.starts_with(mark) ? all.substr(mark.size()) : all, ascii, result);
  if (query_.scopes != nullptr && !result.matches.empty())
    keep_those_in_scope(decode(charset, memory), result);
}

void file_searcher::search_utf8(std::string_view bytes, bool is_ascii, file_result& result) {
  auto const feed_from = [&](std::size_t at) {
    return std::min(bytes.find('\n', at), bytes.size());
  };
  auto const units_in = [&](std::size_t from, std::size_t to) {
    return is_ascii ? to - from : units_of(bytes.substr(from, to - from));
  };
  char const* const end = bytes.data() + bytes.size();
  std::size_t line = 0, feed = feed_from(0), number = 0;
  std::size_t offset = 0;               // units before the line
  std::size_t counted = 0, column = 0;  // of the byte up to which units of the line are counted
  for (char const* found = bytes.data(); (found = needed_->find(found, end)) != end;) {
    if (cancelled_) {
      result.what = outcome::cancelled;
      return;
    }
    if (!keeps_matches_ && is_whole_) {
      ++result.count;
      found += needed_->size();
      continue;
    }
    auto const at = static_cast<std::size_t>(found - bytes.data());
    for (; feed < at; ++number) {
      bool const has_return = feed != line && bytes[feed - 1] == '\r';
      offset += units_in(line, feed) - has_return + 1;
      counted = line = feed + 1;
      column = 0;
      feed = feed_from(line);
    }
    bool const has_return = feed != bytes.size() && feed != line && bytes[feed - 1] == '\r';
    if (!is_whole_) {
      search_line(bytes.substr(line, feed - has_return - line), {number, 0},
                  static_cast<std::uint32_t>(offset), result);
      if (result.what != outcome::searched) return;
      found = bytes.data() + feed;
      continue;
    }
    ++result.count;
    column += units_in(counted, at);
    counted = at;
    auto const [from, to] = excerpt_of(bytes, line, feed - has_return, at, query_.excerpt);
    std::size_t const first = from == line ? 0 : column - units_in(from, at);
    result.matches.push_back({.first = {number, column},
                              .last = {number, column + query_.sought.size()},
                              .offset = static_cast<std::uint32_t>(offset + column),
                              .length = static_cast<std::uint32_t>(query_.sought.size()),
                              .line = std::string(bytes.substr(from, to - from)),
                              .line_from = static_cast<std::uint32_t>(first),
                              .captures = {},
                              .is_cut = from != line || to != feed - has_return});
    found += needed_->size();
  }
}

void file_searcher::search_line(std::string_view line, text::pos place, std::uint32_t offset,
                                file_result& result) {
  // With the end of the line before, so that it doesn't look like the beginning of the text.
  bool const is_first = place.line == 0;
  std::u16string const units = (is_first ? u"" : u"\n") + unicode::to_utf16(line) + u"\n";
  std::size_t const first = is_first ? 0 : 1;
  search_part(units, first, units.size() - 1, place, std::int64_t{offset} - !is_first, result);
}

// Whether there is nothing more to find.
bool file_searcher::is_over(search_end end, file_result& result) const {
  if (end == search_end::gave_up) result.what = outcome::gave_up;
  if (end == search_end::cancelled) result.what = outcome::cancelled;
  return end != search_end::found;
}

// The memory holds what is returned.
std::u16string_view file_searcher::decode(encoding::charset_t charset,
                                          std::unique_ptr<char16_t[]>& memory) const {
  memory = std::make_unique_for_overwrite<char16_t[]>(size_ + 1);
  char16_t* const units = memory.get();
  std::memcpy(reinterpret_cast<char*>(units) + size_, bytes_.get(), size_);
  auto const decoded = encoding::decode_in_place(units, size_, charset, query_.supplementary_pairs);
  auto const text = encoding::harmonize_units(units, units + decoded.units);
  return {units, static_cast<std::size_t>(text.last - units)};
}

void file_searcher::search_units(text::unit_view units, file_result& result) {
  search_part(units, 0, units.size(), {}, 0, result);
  if (query_.scopes != nullptr && !result.matches.empty()) keep_those_in_scope(units, result);
}

// Of `units` those from `first` on are searched, which are at `place` in the text and `shift` units
// later than here; matches begin at `last` or before.
void file_searcher::search_part(text::unit_view units, std::size_t first, std::size_t last,
                                text::pos place, std::int64_t shift, file_result& result) {
  text_searcher searcher(compiled_, units, cancelled_);
  searcher.set_limits(deadline_, 0);
  auto const feed_from = [&](std::size_t at) {
    return std::min(units.find(u'\n', at), units.size());
  };
  std::size_t line = first, feed = feed_from(first);
  auto const place_of = [&](std::size_t at) {
    for (; feed < at; ++place.line) {
      line = feed + 1;
      feed = feed_from(line);
    }
    return text::pos(place.line, at - line);
  };
  for (std::size_t at = first; at <= last;) {
    if (is_over(searcher.next(at, last), result)) return;
    bool const is_empty = searcher.begin() == searcher.end();
    at = searcher.end() + is_empty;
    if (is_empty) continue;
    ++result.count;
    if (!keeps_matches_) continue;
    file_match match;
    match.first = place_of(searcher.begin());
    match.offset = static_cast<std::uint32_t>(static_cast<std::int64_t>(searcher.begin()) + shift);
    match.length = static_cast<std::uint32_t>(searcher.end() - searcher.begin());
    auto const [from, to] = excerpt_of(units, line, feed, searcher.begin(), query_.excerpt);
    match.line = unicode::to_utf8(units.substr(from, to - from));
    match.line_from = static_cast<std::uint32_t>(from - line);
    match.is_cut = from != line || to != feed;
    if (query_.regular_expression) match.captures = oniguruma::captures_of(searcher.match());
    for (auto& [group, range] : match.captures) {
      range.first += static_cast<int>(shift);
      range.second += static_cast<int>(shift);
    }
    match.last = place_of(searcher.end());
    result.matches.push_back(std::move(match));
  }
}

void file_searcher::keep_those_in_scope(text::unit_view units, file_result& result) const {
  std::vector<text::pos> places;
  for (file_match const& match : result.matches) places.push_back(match.first);
  auto const wanted = query_.scopes->in_scope(units, result.path, places, cancelled_);
  std::size_t kept = 0;
  for (std::size_t n = 0; n < places.size(); ++n)
    if (wanted[n]) std::swap(result.matches[kept++], result.matches[n]);
  result.matches.resize(kept);
  result.count = result.matches.size();
  if (cancelled_) result.what = outcome::cancelled;
}

}  // namespace search
