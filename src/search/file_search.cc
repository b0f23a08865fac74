#include "search/file_search.h"

#include "documents/file_text.h"
#include "encoding/decode_in_place.h"
#include "encoding/estimate_buffer.h"
#include "encoding/harmonize_units.h"
#include "path/file_reader.h"
#include "platform/utf.h"
#include "plist/utf8.h"
#include "regex/oniguruma_format.h"

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

}  // namespace

file_searcher::file_searcher(file_query query, std::atomic<bool> const& cancelled)
    : query_(std::move(query)),
      compiled_(query_.sought, {.regular_expression = query_.regular_expression,
                                .ignore_case = query_.ignore_case}),
      cancelled_(cancelled) {
  std::u16string const& sought = query_.sought;
  if (query_.regular_expression) {
    if (std::string needed = required_text(sought); !needed.empty())
      needed_.emplace(needed.substr(0, longest_sought), query_.ignore_case);
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
  is_whole_ = true;
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
    bool const needed_is_ascii = is_ascii(query_.sought) || !is_whole_;
    // In another charset it may look different, and case reaches beyond ASCII.
    if (!is_there && !may_be_wide && needed_is_ascii &&
        (!query_.ignore_case || is_ascii(all.data(), all.size())))
      return;
  }
  bool const ascii = is_ascii(all.data(), all.size());
  auto const charset = ascii ? encoding::ASCII : encoding::estimate_buffer(bytes, size_);
  bool const is_by_bytes =
      needed_ && (is_whole_ || stays_in_line_) && (ascii || !query_.ignore_case) &&
      (ascii || (charset == encoding::UTF8 && query_.supplementary_pairs && plist::is_utf8(all))) &&
      !has_lone_return(all);
  if (!is_by_bytes) return decode(charset, result);
  constexpr std::string_view mark = "\xEF\xBB\xBF";
  search_utf8(all.starts_with(mark) ? all.substr(mark.size()) : all, ascii, result);
}

void file_searcher::search_utf8(std::string_view bytes, bool is_ascii, file_result& result) {
  char const* const end = bytes.data() + bytes.size();
  char const* line = bytes.data();  // begins where `place_` is
  place_ = {};
  line_offset_ = 0;
  for (char const* at = line; (at = needed_->find(at, end)) != end;) {
    if (cancelled_) {
      result.what = outcome::cancelled;
      return;
    }
    if (query_.only_count && is_whole_) {
      ++result.count;
      at += needed_->size();
      continue;
    }
    for (char const* next; (next = static_cast<char const*>(std::memchr(
                                line, '\n', static_cast<std::size_t>(at - line)))) != nullptr;) {
      std::string_view passed(line, static_cast<std::size_t>(next - line));
      if (passed.ends_with('\r')) passed.remove_suffix(1);
      line_offset_ += static_cast<std::uint32_t>(is_ascii ? passed.size() : units_of(passed)) + 1;
      ++place_.line;
      line = next + 1;
    }
    auto const* stop =
        static_cast<char const*>(std::memchr(at, '\n', static_cast<std::size_t>(end - at)));
    if (stop == nullptr) stop = end;
    std::string_view text(line, static_cast<std::size_t>(stop - line));
    if (text.ends_with('\r') && stop != end) text.remove_suffix(1);
    if (!is_whole_) {
      search_line(text, place_.line == 0, result);
      if (result.what != outcome::searched) return;
      at = stop;
      continue;
    }
    ++result.count;
    std::string_view const before(line, static_cast<std::size_t>(at - line));
    auto const column = static_cast<std::uint32_t>(units_of(before));
    result.matches.push_back({.first = {place_.line, column},
                              .last = {place_.line, column + query_.sought.size()},
                              .offset = line_offset_ + column,
                              .length = static_cast<std::uint32_t>(query_.sought.size()),
                              .line = std::string(text),
                              .captures = {}});
    at += needed_->size();
  }
}

void file_searcher::search_line(std::string_view line, bool is_first, file_result& result) {
  // With the end of the line before, so that it doesn't look like the beginning of the text.
  std::u16string const units = (is_first ? u"" : u"\n") + unicode::to_utf16(line) + u"\n";
  std::size_t const begin = is_first ? 0 : 1;
  text_searcher searcher(compiled_, units, cancelled_);
  searcher.set_limits(deadline_, 0);
  for (std::size_t at = begin; at < units.size();) {
    auto const end = searcher.next(at, units.size() - 1);
    if (is_over(end, result)) return;
    bool const is_empty = searcher.begin() == searcher.end();
    at = searcher.end() + is_empty;
    if (is_empty) continue;
    ++result.count;
    if (query_.only_count) continue;
    auto captures = oniguruma::captures_of(searcher.match());
    auto const shift = static_cast<int>(line_offset_) - static_cast<int>(begin);
    for (auto& [group, range] : captures) range = {range.first + shift, range.second + shift};
    std::size_t const column = searcher.begin() - begin;
    auto const length = static_cast<std::uint32_t>(searcher.end() - searcher.begin());
    result.matches.push_back({.first = {place_.line, column},
                              .last = {place_.line, searcher.end() - begin},
                              .offset = line_offset_ + static_cast<std::uint32_t>(column),
                              .length = length,
                              .line = std::string(line),
                              .captures = std::move(captures)});
  }
}

// Whether there is nothing more to find.
bool file_searcher::is_over(search_end end, file_result& result) const {
  if (end == search_end::gave_up) result.what = outcome::gave_up;
  if (end == search_end::cancelled) result.what = outcome::cancelled;
  return end != search_end::found;
}

void file_searcher::decode(encoding::charset_t charset, file_result& result) {
  auto const units = std::make_unique_for_overwrite<char16_t[]>(size_ + 1);
  std::memcpy(reinterpret_cast<char*>(units.get()) + size_, bytes_.get(), size_);
  auto const decoded =
      encoding::decode_in_place(units.get(), size_, charset, query_.supplementary_pairs);
  auto const text = encoding::harmonize_units(units.get(), units.get() + decoded.units);
  search_units({units.get(), static_cast<std::size_t>(text.last - units.get())}, result);
}

void file_searcher::search_units(text::unit_view units, file_result& result) {
  text_searcher searcher(compiled_, units, cancelled_);
  searcher.set_limits(deadline_, 0);
  std::size_t line = 0, line_begin = 0;
  auto const place_of = [&](std::size_t offset) {
    for (std::size_t at; (at = units.find(u'\n', line_begin)) < offset; ++line) line_begin = at + 1;
    return text::pos(line, offset - line_begin);
  };
  for (std::size_t at = 0; at <= units.size();) {
    auto const end = searcher.next(at, units.size());
    if (is_over(end, result)) return;
    bool const is_empty = searcher.begin() == searcher.end();
    at = searcher.end() + is_empty;
    if (is_empty) continue;
    ++result.count;
    if (query_.only_count) continue;
    file_match match;
    match.first = place_of(searcher.begin());
    match.offset = static_cast<std::uint32_t>(searcher.begin());
    match.length = static_cast<std::uint32_t>(searcher.end() - searcher.begin());
    match.line = unicode::to_utf8(units.substr(
        line_begin, std::min(units.find(u'\n', line_begin), units.size()) - line_begin));
    if (query_.regular_expression) match.captures = oniguruma::captures_of(searcher.match());
    match.last = place_of(searcher.end());
    result.matches.push_back(std::move(match));
  }
}

std::optional<std::u16string> with_replacements(text::unit_view text,
                                                std::vector<file_match> const& matches,
                                                std::string const& replacement, bool is_format) {
  std::u16string const literal = is_format ? u"" : unicode::to_utf16(replacement);
  oniguruma::format format(is_format ? replacement.c_str() : "");
  if (is_format && format.has_failed()) return std::nullopt;
  std::u16string result;
  std::size_t done = 0;
  for (file_match const& match : matches) {
    result += text.substr(done, match.offset - done);
    done = std::size_t{match.offset} + match.length;
    if (!is_format) {
      result += literal;
      continue;
    }
    auto captures = match.captures;
    captures.emplace(0, std::pair(static_cast<int>(match.offset), static_cast<int>(done)));
    result += format.expand(text, captures);
  }
  result += text.substr(done);
  return result;
}

}  // namespace search
