#include "app/batch_options.h"

#include "plist/text_reader.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <functional>
#include <map>
#include <set>

namespace {

using arguments_t = std::vector<std::string>;

std::optional<std::pair<std::string, std::string>> split_at_equals(std::string const& text) {
  std::size_t const equals = text.find('=');
  if (equals == std::string::npos || equals == 0) return std::nullopt;
  return std::pair(text.substr(0, equals), text.substr(equals + 1));
}

// Neither "inf" nor "nan" is one: these are words.
template <typename T>
std::optional<T> number_from(std::string const& text) {
  if (text.find_first_not_of("0123456789+-.eE") != std::string::npos) return std::nullopt;
  T number{};
  auto const result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (text.empty() || result.ec != std::errc() || result.ptr != text.data() + text.size())
    return std::nullopt;
  return number;
}

// "true", "false", a number, the text dialect behind "plist:", or else a string.
std::optional<plist::value> setting_value(std::string const& text) {
  if (text == "true" || text == "false") return plist::value(text == "true");
  if (auto const integer = number_from<std::int64_t>(text)) return plist::value(*integer);
  if (auto const real = number_from<double>(text)) return plist::value(*real);
  if (text.rfind("plist:", 0) != 0) return plist::value(text);
  plist::value const value = plist::convert(text.substr(6), nullptr);
  if (!value) return std::nullopt;
  return value;
}

bool parse_size(std::string const& text, batch_options& options) {
  std::size_t const x = text.find('x');
  if (x == std::string::npos) return false;
  auto const columns = number_from<int>(text.substr(0, x));
  auto const rows = number_from<int>(text.substr(x + 1));
  if (!columns || !rows || *columns < 1 || *rows < 1 || *columns > 10000 || *rows > 10000)
    return false;
  options.columns = *columns;
  options.rows = *rows;
  return true;
}

// Options that take a value; each tells whether the value is fit.
using taker = std::function<bool(batch_options&, std::string const&)>;

std::map<std::string, taker> const& takers() {
  static std::map<std::string, taker> const table = {
      {"--set",
       [](batch_options& o, std::string const& text) {
         auto const pair = split_at_equals(text);
         auto const value = pair ? setting_value(pair->second) : std::nullopt;
         if (value) o.settings.emplace_back(pair->first, *value);
         return value.has_value();
       }},
      {"--answer",
       [](batch_options& o, std::string const& text) {
         auto const pair = split_at_equals(text);
         if (pair) o.answers.push_back(*pair);
         return pair.has_value();
       }},
      {"--macro",
       [](batch_options& o, std::string const& path) {
         o.macros.push_back({path});
         return !path.empty();
       }},
      {"--repeat",
       [](batch_options& o, std::string const& text) {
         auto const times = number_from<std::uint32_t>(text);
         if (times) o.macros.back().times = *times;
         return times.has_value();
       }},
      {"--check-bundle",
       [](batch_options& o, std::string const& path) {
         o.check_bundles.push_back(path);
         return !path.empty();
       }},
      {"--save-as",
       [](batch_options& o, std::string const& path) {
         o.save_as = path;
         return !path.empty();
       }},
      {"--print",
       [](batch_options& o, std::string const& what) {
         o.prints.push_back(what);
         static std::set<std::string> const parts = {"text",   "selection", "state",
                                                     "scopes", "styles",    "symbols"};
         return parts.contains(what);
       }},
      {"--explain",
       [](batch_options& o, std::string const& place) {
         std::size_t const colon = place.find(':');
         if (colon == std::string::npos) return false;
         auto const line = number_from<std::uint32_t>(place.substr(0, colon));
         auto const column = number_from<std::uint32_t>(place.substr(colon + 1));
         if (line && column) o.explain = {*line, *column};
         return line && column;
       }},
      {"--render",
       [](batch_options& o, std::string const& path) {
         o.render = path;
         return !path.empty();
       }},
      {"--size", [](batch_options& o, std::string const& text) { return parse_size(text, o); }},
  };
  return table;
}

}  // namespace

std::optional<batch_options> parse_batch_options(arguments_t const& arguments, std::string& error) {
  batch_options options;
  bool only_files = false;
  for (std::size_t n = 0; n < arguments.size(); ++n) {
    std::string const& argument = arguments[n];
    if (only_files || argument.empty() || argument[0] != '-' || argument == "-") {
      options.files.push_back(argument);
    } else if (argument == "--") {
      only_files = true;
    } else if (argument == "--save") {
      options.save = true;
    } else if (argument == "--strict") {
      options.strict = true;
    } else if (auto const it = takers().find(argument); it == takers().end()) {
      error = "unknown option " + argument;
      return std::nullopt;
    } else if (argument == "--repeat" && options.macros.empty()) {
      error = "--repeat needs a --macro before it";
      return std::nullopt;
    } else if (n + 1 == arguments.size()) {
      error = argument + " needs a value";
      return std::nullopt;
    } else if (!it->second(options, arguments[++n])) {
      error = "bad value for " + argument + ": " + arguments[n];
      return std::nullopt;
    }
  }
  if (!options.save_as.empty() && options.save) error = "--save and --save-as exclude each other";
  if (!options.save_as.empty() && options.files.size() > 1) error = "--save-as takes one file";
  if (!options.render.empty() && options.files.size() > 1) error = "--render takes one file";
  if (!error.empty()) return std::nullopt;
  return options;
}
