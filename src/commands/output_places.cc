#include "commands/output_places.h"

#include "path/path.h"
#include "platform/system/percent_encoding.h"

#include <sys/stat.h>

#include <algorithm>
#include <charconv>

namespace commands {
namespace {

constexpr std::size_t longest_line = 4096;  // bytes; what is longer is no message
constexpr std::size_t most_candidates = 64;
constexpr std::size_t most_marks = 32;  // in a line that are looked at
constexpr std::size_t most_known = 4096;
constexpr std::size_t most_folders = 100;

bool is_digit(char c) {
  return '0' <= c && c <= '9';
}

/// Where the digits that begin at `at` end; the number counts from 1.
struct number {
  std::size_t value = 0, last = 0;
};

std::optional<number> number_at(std::string_view line, std::size_t at) {
  number found;
  auto const begin = line.data() + std::min(at, line.size());
  auto const result = std::from_chars(begin, line.data() + line.size(), found.value);
  if (result.ec != std::errc() || found.value == 0) return std::nullopt;
  found.last = static_cast<std::size_t>(result.ptr - line.data());
  return found;
}

/// The places at which a name that ends at `end` may begin, the earliest first.
std::vector<std::size_t> starts_of_name(std::string_view line, std::size_t end) {
  constexpr std::string_view separators = " \t([<\"'=";
  std::vector<std::size_t> starts;
  bool is_start = true;
  for (std::size_t i = 0; i < end && starts.size() < most_candidates; ++i) {
    bool const separates = separators.find(line[i]) != separators.npos;
    if (is_start && !separates) starts.push_back(i);
    is_start = separates;
  }
  // The shortest counts more than those in between.
  std::size_t const last = line.substr(0, end).find_last_of(separators);
  std::size_t const shortest = last == line.npos ? 0 : last + 1;
  if (shortest < end && (starts.empty() || starts.back() < shortest)) starts.push_back(shortest);
  return starts;
}

class search {
 public:
  search(std::string_view line, std::function<bool(std::string const&)> const& is_file)
      : line_(line), is_file_(is_file) {}

  std::optional<output_place> run() {
    std::size_t marks = 0;
    for (std::size_t at = 0; (at = line_.find_first_of(":(l", at)) != line_.npos; ++at) {
      if (line_[at] != 'l' && ++marks > most_marks) break;
      if (auto const place = at_mark(at)) return place;
    }
    return std::nullopt;
  }

 private:
  std::optional<output_place> at_mark(std::size_t at) {
    if (line_[at] == 'l') return at_word(at);
    if (line_[at] == ':' && line_.substr(at).starts_with(": line ")) return std::nullopt;
    auto const number = number_at(line_, at + 1);
    if (!number) return std::nullopt;
    return line_[at] == ':' ? after_colon(at, *number) : in_parentheses(at, *number);
  }

  // NAME:LINE and NAME:LINE:COLUMN, followed by nothing that a name or a number goes on with.
  std::optional<output_place> after_colon(std::size_t at, number const& line_number) {
    std::size_t last = line_number.last, column = 0;
    if (last < line_.size() && line_[last] == ':') {
      if (auto const found = number_at(line_, last + 1); found && !goes_on(found->last)) {
        column = found->value;
        last = found->last;
      }
    }
    if (goes_on(last)) return std::nullopt;
    return named_before(at, {.line = line_number.value, .column = column, .last = last});
  }
  bool goes_on(std::size_t at) const {
    constexpr std::string_view ends = ":,)]>'\"; \t-=";
    return at < line_.size() && ends.find(line_[at]) == ends.npos;
  }

  // NAME(LINE) and NAME(LINE,COLUMN), which a colon follows.
  std::optional<output_place> in_parentheses(std::size_t at, number const& line_number) {
    std::size_t last = line_number.last, column = 0;
    if (last < line_.size() && line_[last] == ',') {
      auto const found = number_at(line_, last + 1);
      if (!found) return std::nullopt;
      column = found->value;
      last = found->last;
    }
    if (!line_.substr(last).starts_with("):")) return std::nullopt;
    return named_before(at, {.line = line_number.value, .column = column, .last = last + 1});
  }

  // The word "line" and a number, after the name.
  std::optional<output_place> at_word(std::size_t at) {
    if (!line_.substr(at).starts_with("line ") || at < 2) return std::nullopt;
    auto const number = number_at(line_, at + 5);
    if (!number) return std::nullopt;
    output_place const place{.line = number->value, .last = number->last};
    std::string_view const before = line_.substr(0, at);
    for (std::string_view const between : {"\", ", "' ", "\" ", ": ", " on ", ", ", " "})
      if (before.ends_with(between)) return named_before(at - between.size(), place);
    return std::nullopt;
  }

  std::optional<output_place> named_before(std::size_t end, output_place place) {
    for (std::size_t const start : starts_of_name(line_, end)) {
      std::string name(line_.substr(start, end - start));
      if (name.find('\0') != name.npos || !is_file_(name)) continue;
      place.file = std::move(name);
      place.first = start;
      return place;
    }
    return std::nullopt;
  }

  std::string_view const line_;
  std::function<bool(std::string const&)> const& is_file_;
};

/// Whether it could name a place at all, at the speed of a flood of output.
bool may_name_place(std::string_view line) {
  for (std::size_t at = 0; (at = line.find_first_of("0123456789", at)) != line.npos; ++at) {
    char const before = at == 0 ? '\0' : line[at - 1];
    if (before == ':' || before == '(' || (before == ' ' && at > 4 && line[at - 2] == 'e'))
      return true;
    while (at + 1 < line.size() && is_digit(line[at + 1])) ++at;
  }
  return false;
}

}  // namespace

std::optional<output_place> place_in_line(
    std::string_view line, std::function<bool(std::string const& name)> const& is_file) {
  if (line.size() > longest_line || !may_name_place(line)) return std::nullopt;
  return search(line, is_file).run();
}

place_finder::place_finder(std::string directory) : directory_(std::move(directory)) {}

std::optional<output_place> place_finder::place_in(std::string_view line) {
  follow_make(line);
  auto place =
      place_in_line(line, [this](std::string const& name) { return !path_of(name).empty(); });
  if (place) place->file = path_of(place->file);
  return place;
}

std::string const& place_finder::path_of(std::string const& name) {
  constexpr std::string_view scheme = "file://";
  std::string path = name;
  if (name.starts_with(scheme))
    path = platform::percent_decoded(name.substr(scheme.size())).value_or("");
  std::string const& folder = of_make_.empty() ? directory_ : of_make_.back();
  if (!path.starts_with('/')) path = path::join(folder, path);
  auto const known = known_.find(path);
  if (known != known_.end()) return known->second;
  if (known_.size() >= most_known) known_.clear();
  struct stat info;
  bool const is_file =
      path.starts_with('/') && stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
  std::string const normal = is_file ? path::normalize(path) : "";
  return known_.emplace(std::move(path), normal).first->second;
}

void place_finder::follow_make(std::string_view line) {
  if (line.find("ing directory '") == line.npos) return;
  constexpr std::string_view entering = ": Entering directory '", leaving = ": Leaving directory '";
  auto const at = line.find(entering);
  if (at != line.npos && line.ends_with('\'') && of_make_.size() < most_folders) {
    std::size_t const first = at + entering.size();
    of_make_.emplace_back(line.substr(first, line.size() - 1 - first));
  } else if (line.find(leaving) != line.npos && !of_make_.empty()) {
    of_make_.pop_back();
  }
}

}  // namespace commands
