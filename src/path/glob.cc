#include "path/glob.h"

#include <string_view>

#include "path/expand_braces.h"
#include "snippets/format_string.h"

namespace path {
namespace {

constexpr std::size_t max_bytes = 1 << 16;
constexpr std::string_view any_part = "(?:[^/.][^/]*)?";  ///< what "*" stands for

std::string regular_expression(std::string const& glob) {
  // Compiled patterns are for one thread at a time.
  thread_local regexp::pattern_t const special(
      "(?:(\\\\.)|(\\*\\*(/?))|(\\*)|(\\?)|(\\[.*?\\])|([\\\\|\\[().?*+{^$]))");
  // Groups don't capture, since there is one for each "*" of each alternative.
  thread_local format_string::format_string_t const format(
      "${1}${2:+(?:[^/.].*(?=/|$)$3)?}${4:+" + std::string(any_part) + "}${5:+.}${6}${7:+\\\\$7}");
  return format_string::replace(glob, special, format, true, {});
}

/// Whether no part of it can match a "/", so that it is for names alone.
bool is_of_one_component(std::string const& glob) {
  return glob.find_first_of("/?[") == glob.npos && glob.find("**") == glob.npos;
}

}  // namespace

void glob_t::setup(std::string glob) {
  negated_ = glob.starts_with('!');
  if (negated_) glob.erase(0, 1);
  of_names_ = true;
  std::string starred, others;  // a "*" before many alternatives is tried once for all
  for (auto const& text : expand_braces(glob, max_bytes)) {
    of_names_ &= is_of_one_component(text);
    std::string const expression = regular_expression(text);
    if (expression.starts_with(any_part))
      starred += "|" + expression.substr(any_part.size());
    else
      others += "|" + expression;
  }
  if (starred.size() + others.size() > max_bytes) return;
  if (!starred.empty()) others += "|" + std::string(any_part) + "(?:" + starred.substr(1) + ")";
  pattern_ = regexp::pattern_t((of_names_ ? "^(?:" : "^(?:.*/)?(?:") + others.substr(1) + ")$");
}

bool glob_t::does_match(std::string const& path) const {
  // Else each "/" would be tried.
  char const* const first = path.data() + (of_names_ ? path.rfind('/') + 1 : 0);
  auto const found = regexp::search(pattern_, first, path.data() + path.size());
  if (found.gave_up()) pattern_ = {};  // it would on the next paths, too
  return bool(found) != negated_;
}

}  // namespace path
