#include "search/project_results.h"

#include "documents/printable_name.h"
#include "path/file_system.h"
#include "path/path.h"
#include "platform/utf.h"

#include <algorithm>

namespace search {
namespace {

constexpr std::size_t number_width = 5;
constexpr std::string_view figure_space = "\u2007";

}  // namespace

void project_results::add(file_result result, std::optional<std::uint32_t> memento) {
  using outcome = file_result::outcome;
  found_file file;
  switch (result.what) {
    case outcome::searched:
      ++searched_;
      break;
    case outcome::binary:
      ++binary_;
      return;
    case outcome::unreadable:
      return add_note(std::move(result.path), "could not be read: " + result.reason);
    case outcome::gave_up:
      file.note = "the search took too long, there may be more matches";
      break;
    case outcome::cancelled:
      break;
  }
  if (result.matches.empty() && file.note.empty()) return;
  file.path = std::move(result.path);
  file.matches = std::move(result.matches);
  file.ticked.assign(file.matches.size(), true);
  file.memento = memento;
  if (!memento) file.version = result.version;
  count_ += file.matches.size();
  with_matches_ += !file.matches.empty();
  files_.push_back(std::move(file));
}

void project_results::add_note(std::string path, std::string note) {
  found_file file;
  file.path = std::move(path);
  file.note = std::move(note);
  files_.push_back(std::move(file));
}

void project_results::tick_file(std::size_t file, bool ticked) {
  files_[file].ticked.assign(files_[file].matches.size(), ticked);
}

std::size_t project_results::ticked() const {
  std::size_t count = 0;
  for (found_file const& file : files_)
    count += static_cast<std::size_t>(std::count(file.ticked.begin(), file.ticked.end(), true));
  return count;
}

std::optional<result_place> project_results::next(std::optional<result_place> from) const {
  result_place at = from ? result_place{from->file, from->match + 1} : result_place{};
  for (; at.file < files_.size(); at = {at.file + 1, 0})
    if (at.match < files_[at.file].matches.size()) return at;
  return std::nullopt;
}

std::optional<result_place> project_results::previous(std::optional<result_place> from) const {
  if (from && from->match > 0) return result_place{from->file, from->match - 1};
  for (std::size_t file = from ? from->file : files_.size(); file-- > 0;)
    if (std::size_t const size = files_[file].matches.size()) return result_place{file, size - 1};
  return std::nullopt;
}

std::string project_results::title(std::size_t file) const {
  found_file const& of = files_[file];
  std::string result = documents::printable_name(of.path) + " \u2014 " +
                       documents::printable(path::abbreviate_with_tilde(path::parent(of.path)));
  if (!of.note.empty()) result += ": " + of.note;
  return result;
}

result_line project_results::line(result_place at) const {
  file_match const& of = match(at);
  std::string const number = std::to_string(of.first.line + 1);
  result_line result;
  for (std::size_t n = number.size(); n < number_width; ++n) result.text += figure_space;
  std::size_t const before = std::max(number_width, number.size()) + 1;
  result.text += number + ":" + (of.line_from == 0 ? "" : "\u2026") + of.line;
  std::size_t const units = before + (of.line_from != 0) + unicode::to_utf16(of.line).size();
  result.first = before + (of.line_from != 0) + of.first.column - of.line_from;
  result.last = std::min(result.first + of.length, units);
  return result;
}

match_replacement::match_replacement(std::string const& text, bool is_format)
    : is_format_(is_format),
      format_(is_format ? text.c_str() : ""),
      literal_(is_format ? u"" : unicode::to_utf16(text)) {}

std::u16string match_replacement::expand(text::unit_view text, file_match const& match) {
  if (match.put != nullptr) return *match.put;
  if (!is_format_) return literal_;
  auto captures = match.captures;
  auto const first = static_cast<int>(match.offset);
  captures.emplace(0, std::pair(first, first + static_cast<int>(match.length)));
  return format_.expand(text, captures);
}

std::optional<std::u16string> match_replacement::preview(file_match const& match) {
  if (!is_format_) return literal_;
  std::u16string const line = unicode::to_utf16(match.line);
  // Where the kept part of the line stands in the text.
  std::uint32_t const base = match.offset - match.first.column + match.line_from;
  file_match here = match;
  here.offset -= base;
  if (here.offset + here.length > line.size()) return std::nullopt;
  for (auto& [group, range] : here.captures) {
    range.first -= static_cast<int>(base);
    range.second -= static_cast<int>(base);
    if (range.first < 0 || range.second > static_cast<int>(line.size())) return std::nullopt;
  }
  return expand(line, here);
}

std::u16string with_replacements(text::unit_view text, std::vector<file_match> const& matches,
                                 match_replacement& replacement) {
  std::u16string result;
  std::size_t done = 0;
  for (file_match const& match : matches) {
    result += text.substr(done, match.offset - done);
    result += replacement.expand(text, match);
    done = std::size_t{match.offset} + match.length;
  }
  result += text.substr(done);
  return result;
}

}  // namespace search
