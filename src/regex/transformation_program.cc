#include "regex/transformation_program.h"

#include <algorithm>
#include <iterator>
#include <optional>

namespace regex {
namespace {

// The text up to the next delimiter, which is taken away too. What a backslash protects stays with
// it.
std::optional<std::string> take_until(char delimiter, std::string_view& text) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '\\') {
      ++at;
    } else if (text[at] == delimiter) {
      std::string taken(text.substr(0, at));
      text.remove_prefix(at + 1);
      return taken;
    }
  }
  return std::nullopt;
}

std::string take_options(std::string_view& text) {
  std::size_t count = 0;
  while (count < text.size() && 'a' <= text[count] && text[count] <= 'z') ++count;
  std::string const options(text.substr(0, count));
  text.remove_prefix(count);
  return options;
}

}  // namespace

transformation_program::transformation_program(std::string_view text) {
  auto const note = [this](std::string fault) {
    if (fault_.empty()) fault_ = std::move(fault);
  };
  while (!text.empty()) {
    char const command = text.front();
    text.remove_prefix(1);
    if (command == '#') text.remove_prefix(std::min(text.find('\n'), text.size()));
    if (command != 's' && std::string_view("#; \t\n\r").find(command) == std::string_view::npos)
      note("\"" + std::string(1, command) + "\" is no substitution");
    if (command != 's') continue;
    char const delimiter = text.empty() ? '\0' : text.front();
    text.remove_prefix(std::min<std::size_t>(1, text.size()));
    auto pattern = take_until(delimiter, text);
    auto format = pattern ? take_until(delimiter, text) : std::nullopt;
    if (!format) {
      note("the last substitution has no end");
      return;
    }
    std::string options = take_options(text);
    std::string reason;
    auto compiled =
        std::make_shared<onig::ptrn_t const>(pattern->data(), pattern->data() + pattern->size(),
                                             snippet::options_from_string(options), &reason);
    if (compiled->regex() == nullptr) {
      note("invalid regular expression: " + *pattern + " (" + reason + ")");
      continue;
    }
    substitutions_.push_back(
        {std::move(*pattern), std::move(*format), std::move(options), std::move(compiled)});
  }
}

std::string transformation_program::apply(std::string text) const {
  for (substitution const& s : substitutions_) {
    if (s.compiled->regex() == nullptr) continue;  // a fault costs no symbol its name
    std::string result;
    onig::replace(text.data(), text.data() + text.size(), s.format.data(),
                  s.format.data() + s.format.size(), *s.compiled,
                  snippet::options_from_string(s.options), "", 0, std::back_inserter(result));
    text = std::move(result);
  }
  return text;
}

}  // namespace regex
