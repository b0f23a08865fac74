#include "app/command_line.h"

#include "plist/text_reader.h"

#include <getopt.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <set>

namespace app {

char const* const usage_text =
    "usage: quirnote [--new-instance] [FILE[:LINE[:COLUMN]] | FOLDER | PROJECT]...\n"
    "       quirnote --url URL\n"
    "       quirnote --batch [--set KEY=VALUE]... [--macro FILE|- | --item NAME|UUID [--repeat "
    "N]]...\n"
    "                [--answer TITLE=BUTTON]... [--save | --save-as PATH|-] [--print WHAT]... "
    "[-0]\n"
    "                [--diff] [--check] [--explain LINE:COLUMN] [--explain-key KEY LINE:COLUMN]\n"
    "                [--render PNG [--size COLUMNSxROWS]] [--strict]\n"
    "                [--] [FILE|-]...\n"
    "       quirnote --batch --item NAME|UUID --input FILE|- [--set KEY=VALUE]... [--strict]\n"
    "       quirnote --batch --find PATTERN [--fixed] [--ignore-case] [--scope SELECTOR]\n"
    "                [--count | --print matches | --replace TEXT] [--include GLOB]... "
    "[--exclude GLOB]...\n"
    "                [--gitignore] [-0] [--] FOLDER|PROJECT|FILE...\n"
    "       quirnote --batch --list-files | --go-to-file LETTERS [--include GLOB]... "
    "[--exclude GLOB]...\n"
    "                [--gitignore] [-0] [--] FOLDER|PROJECT|FILE...\n"
    "       quirnote --batch --check-bundle DIR [--check-bundle DIR]...\n"
    "       quirnote --help | --version | --list-settings\n"
    "WHAT is text, selection, state, scopes, styles, symbols or xml.\n";

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

// "true", "false", a number, the text dialect after "plist:", or else a string.
std::optional<plist::value> setting_value(std::string const& text) {
  if (text == "true" || text == "false") return plist::value(text == "true");
  if (auto const integer = number_from<std::int64_t>(text)) return plist::value(*integer);
  if (auto const real = number_from<double>(text)) return plist::value(*real);
  if (text.rfind("plist:", 0) != 0) return plist::value(text);
  plist::value const value = plist::convert(text.substr(6), nullptr);
  if (!value) return std::nullopt;
  return value;
}

// A cell takes some 150 pixels of four bytes each, with the largest fonts much more.
bool parse_size(std::string const& text, batch_options& options) {
  constexpr int max_cells = 250000;
  std::size_t const x = text.find('x');
  if (x == std::string::npos) return false;
  auto const columns = number_from<int>(text.substr(0, x));
  auto const rows = number_from<int>(text.substr(x + 1));
  if (!columns || !rows || *columns < 1 || *rows < 1 || *columns > max_cells / *rows) return false;
  options.columns = *columns;
  options.rows = *rows;
  return true;
}

bool take_place(batch_options& options, std::string const& place) {
  std::size_t const colon = place.find(':');
  if (colon == std::string::npos) return false;
  auto const line = number_from<std::uint32_t>(place.substr(0, colon));
  auto const column = number_from<std::uint32_t>(place.substr(colon + 1));
  if (line && column) options.explain = {*line, *column};
  return line && column;
}

// Whether the value is fit; options without a value get an empty one.
using taker = bool (*)(batch_options&, std::string const& value);

struct batch_option {
  char const* name;
  bool has_value;
  taker take;
};

constexpr batch_option batch_table[] = {
    {"set", true,
     [](batch_options& o, std::string const& text) {
       auto const pair = split_at_equals(text);
       auto const value = pair ? setting_value(pair->second) : std::nullopt;
       if (value) o.settings.emplace_back(pair->first, *value);
       return value.has_value();
     }},
    {"answer", true,
     [](batch_options& o, std::string const& text) {
       auto const pair = split_at_equals(text);
       if (pair) o.answers.push_back(*pair);
       return pair.has_value();
     }},
    {"macro", true,
     [](batch_options& o, std::string const& path) {
       o.macros.push_back({path});
       return !path.empty();
     }},
    {"item", true,
     [](batch_options& o, std::string const& name) {
       o.macros.push_back({.path = name, .is_item = true});
       return !name.empty();
     }},
    {"input", true,
     [](batch_options& o, std::string const& path) {
       o.input = path;
       return !path.empty();
     }},
    {"diff", false, [](batch_options& o, std::string const&) { return o.diff = true; }},
    {"check", false, [](batch_options& o, std::string const&) { return o.check = true; }},
    {"explain-key", true,
     [](batch_options& o, std::string const& key) {
       o.explain_key = key;
       return !key.empty();
     }},
    {"repeat", true,
     [](batch_options& o, std::string const& text) {
       auto const times = number_from<std::uint32_t>(text);
       if (times && !o.macros.empty()) o.macros.back().times = *times;
       return times.has_value();
     }},
    {"check-bundle", true,
     [](batch_options& o, std::string const& path) {
       o.check_bundles.push_back(path);
       return !path.empty();
     }},
    {"save", false, [](batch_options& o, std::string const&) { return o.save = true; }},
    {"save-as", true,
     [](batch_options& o, std::string const& path) {
       o.save_as = path;
       return !path.empty();
     }},
    {"print", true,
     [](batch_options& o, std::string const& what) {
       o.prints.push_back(what);
       static std::set<std::string> const parts = {"text",   "selection", "state", "scopes",
                                                   "styles", "symbols",   "xml",   "matches"};
       return parts.contains(what);
     }},
    {"find", true,
     [](batch_options& o, std::string const& pattern) {
       o.find.pattern = pattern;
       return !pattern.empty();
     }},
    {"fixed", false, [](batch_options& o, std::string const&) { return o.find.is_text = true; }},
    {"ignore-case", false,
     [](batch_options& o, std::string const&) { return o.find.ignore_case = true; }},
    {"scope", true,
     [](batch_options& o, std::string const& selector) {
       o.find.scope = selector;
       return !selector.empty();
     }},
    {"replace", true,
     [](batch_options& o, std::string const& text) {
       o.find.replacement = text;
       return true;
     }},
    {"count", false, [](batch_options& o, std::string const&) { return o.find.count = true; }},
    {"include", true,
     [](batch_options& o, std::string const& glob) {
       o.find.included.push_back(glob);
       return !glob.empty();
     }},
    {"exclude", true,
     [](batch_options& o, std::string const& glob) {
       o.find.excluded.push_back(glob);
       return !glob.empty();
     }},
    {"gitignore", false,
     [](batch_options& o, std::string const&) { return o.find.gitignore = true; }},
    {"list-files", false, [](batch_options& o, std::string const&) { return o.find.list = true; }},
    {"go-to-file", true,
     [](batch_options& o, std::string const& letters) {
       o.find.rank = letters;
       return !letters.empty();
     }},
    {"null", false, [](batch_options& o, std::string const&) { return o.null_separated = true; }},
    {"explain", true, take_place},
    {"render", true,
     [](batch_options& o, std::string const& path) {
       o.render = path;
       return !path.empty();
     }},
    {"size", true, [](batch_options& o, std::string const& text) { return parse_size(text, o); }},
    {"strict", false, [](batch_options& o, std::string const&) { return o.strict = true; }},
};

// What getopt_long gives for each: the table's rows, then those that all modes have.
constexpr int first_row = 256;
constexpr int rows = static_cast<int>(std::size(batch_table));
constexpr int batch_code = first_row + rows, help_code = 'h', version_code = batch_code + 1,
              list_settings_code = batch_code + 2, new_instance_code = batch_code + 3,
              url_code = batch_code + 4;
constexpr int null_code = '0', file_code = 1;

std::vector<option> long_options() {
  std::vector<option> all;
  for (int row = 0; row < rows; ++row)
    all.push_back({batch_table[row].name,
                   batch_table[row].has_value ? required_argument : no_argument, nullptr,
                   first_row + row});
  all.push_back({"batch", no_argument, nullptr, batch_code});
  all.push_back({"help", no_argument, nullptr, help_code});
  all.push_back({"new-instance", no_argument, nullptr, new_instance_code});
  all.push_back({"url", required_argument, nullptr, url_code});
  all.push_back({"version", no_argument, nullptr, version_code});
  all.push_back({"list-settings", no_argument, nullptr, list_settings_code});
  all.push_back({});
  return all;
}

std::string name_of(int code) {
  for (option const& o : long_options())
    if (o.name != nullptr && o.val == code) return std::string("--") + o.name;
  return {'-', static_cast<char>(code)};
}

batch_option const& row_of(int code) {
  if (code != null_code) return batch_table[code - first_row];
  return *std::find_if(std::begin(batch_table), std::end(batch_table),
                       [](batch_option const& o) { return std::string("null") == o.name; });
}

arguments_t take_session(arguments_t& arguments) {
  auto const end = std::find(arguments.begin(), arguments.end(), "--");
  auto const session = std::find(arguments.begin(), end, "-session");
  if (session == end || session + 1 == end) return {};
  arguments_t const taken(session, session + 2);
  arguments.erase(session, session + 2);
  return taken;
}

// What is wrong with the options of a run that looks for something in files, or for files.
std::string contradiction_of_find(batch_options const& o) {
  batch_find_options const& find = o.find;
  bool const has_matches = std::find(o.prints.begin(), o.prints.end(), "matches") != o.prints.end();
  bool const has_words = find.is_text || find.ignore_case || find.count || find.replacement ||
                         !find.scope.empty() || has_matches;
  bool const has_files = find.gitignore || !find.included.empty() || !find.excluded.empty();
  if (find.pattern.empty() && has_words) return "a search needs --find PATTERN";
  if (!find.is_wanted()) return has_files ? "there is nothing to look for in files" : "";
  if (!find.pattern.empty() + find.list + !find.rank.empty() > 1)
    return "--find, --list-files and --go-to-file exclude each other";
  if (find.count + find.replacement.has_value() + has_matches > 1)
    return "--count, --print matches and --replace exclude each other";
  bool const has_others = !o.macros.empty() || o.save || !o.save_as.empty() || !o.input.empty() ||
                          o.explain || !o.render.empty() || o.diff || o.check ||
                          o.prints.size() > (has_matches ? 1 : 0);
  if (has_others) return "a search is a run of its own, without macros, saving or printing";
  if (o.files.empty()) return "a search needs a folder, a project or a file";
  if (std::find(o.files.begin(), o.files.end(), "-") != o.files.end())
    return "a search reads files, not standard input; a file of that name is ./-";
  return "";
}

std::string contradiction(batch_options const& o) {
  if (std::string fault = contradiction_of_find(o); !fault.empty()) return fault;
  bool const has_many = o.files.size() > 1;
  bool const prints = !o.prints.empty() || o.explain || o.null_separated;
  auto const from_input =
      std::count(o.files.begin(), o.files.end(), "-") + (o.input == "-" ? 1 : 0);
  bool const has_item = std::any_of(o.macros.begin(), o.macros.end(),
                                    [](batch_macro_option const& macro) { return macro.is_item; });
  auto const macros_from_input =
      std::count_if(o.macros.begin(), o.macros.end(),
                    [](auto const& macro) { return macro.path == "-" && !macro.is_item; });
  if ((o.diff || o.check) && (o.save || !o.save_as.empty()))
    return "--diff and --check write nothing: no --save with them";
  if (!o.explain_key.empty() && !o.explain) return "--explain-key needs KEY and LINE:COLUMN";
  if (!o.save_as.empty() && o.save) return "--save and --save-as exclude each other";
  if (!o.save_as.empty() && has_many) return "--save-as takes one file";
  if (!o.render.empty() && has_many) return "--render takes one file";
  if (!o.input.empty() && !o.files.empty()) return "--input takes the place of files";
  if (!o.input.empty() && !has_item) return "--input needs an --item";
  if (!o.input.empty() && (o.save || !o.save_as.empty() || o.diff || o.check))
    return "with --input the output of the item is printed, and nothing saved or compared";
  if (o.save && from_input != 0) return "--save needs a file, not standard input";
  if (from_input + macros_from_input > 1) return "standard input can be read only once";
  if (o.save_as == "-" && prints)
    return "--save-as - leaves no room on standard output for anything else";
  return "";
}

// Whatever else is asked for.
bool is_answered_at_once(command_line::purpose what) {
  using purpose = command_line::purpose;
  return what == purpose::help || what == purpose::version || what == purpose::list_settings;
}

class parser {
 public:
  explicit parser(arguments_t arguments) : arguments_(std::move(arguments)) {}

  std::optional<command_line> run(std::string& error) {
    line_.session = take_session(arguments_);
    read(error);
    if (is_answered_at_once(line_.what)) return line_;
    if (error.empty()) error = complaint();
    return error.empty() ? std::optional(line_) : std::nullopt;
  }

 private:
  void read(std::string& error) {
    std::string program = "quirnote";
    std::vector<char*> argv = {program.data()};
    for (std::string& argument : arguments_) argv.push_back(argument.data());
    int const argc = static_cast<int>(argv.size());
    argv.push_back(nullptr);
    std::vector<option> const options = long_options();
    optind = 0;  // another run in this process begins again
    opterr = 0;
    // Files come in their places (-), a missing value is told from an unknown option (:).
    for (int code; (code = getopt_long(argc, argv.data(), "-:h0", options.data(), nullptr)) != -1;)
      if (!take(code, argv, error)) return;
    line_.batch.files.insert(line_.batch.files.end(), argv.begin() + optind, argv.end() - 1);
  }

  // False at the end of what is to be read.
  bool take(int code, std::vector<char*> const& argv, std::string& error) {
    if (code == file_code && !line_.batch.explain_key.empty() && !line_.batch.explain) {
      if (!take_place(line_.batch, optarg))
        error = std::string("bad place for --explain-key: ") + optarg;
    } else if (code == file_code) {
      line_.batch.files.emplace_back(optarg);
    } else if (code == batch_code) {
      line_.what = command_line::purpose::batch;
    } else if (code == help_code || code == version_code || code == list_settings_code) {
      line_.what = code == help_code      ? command_line::purpose::help
                   : code == version_code ? command_line::purpose::version
                                          : command_line::purpose::list_settings;
      return false;
    } else if (code == new_instance_code) {
      line_.new_instance = true;
    } else if (code == url_code) {
      line_.url = optarg;
    } else if (code == ':') {
      error = name_of(optopt) + " needs a value";
    } else if (code == '?') {
      error = optopt >= first_row ? name_of(optopt) + " takes no value"
              : optopt != 0       ? "unknown option " + name_of(optopt)
                                  : "unknown option " + std::string(argv[optind - 1]);
    } else {
      error = take_batch_option(code, optarg != nullptr ? optarg : "");
    }
    return error.empty();
  }

  std::string take_batch_option(int code, std::string const& value) {
    batch_option const& row = row_of(code);
    std::string const name = name_of(code);
    if (first_batch_option_.empty()) first_batch_option_ = name;
    if (name == "--repeat" && line_.batch.macros.empty())
      return "--repeat needs a --macro or --item before it";
    if (row.take(line_.batch, value)) return "";
    return "bad value for " + name + ": " + value;
  }

  std::string complaint() const {
    bool const is_batch = line_.what == command_line::purpose::batch;
    if (is_batch && (line_.new_instance || !line_.url.empty()))
      return "--new-instance and --url are for windows, not for --batch";
    if (is_batch) return contradiction(line_.batch);
    if (!first_batch_option_.empty()) return first_batch_option_ + " needs --batch";
    auto const& files = line_.batch.files;
    if (std::find(files.begin(), files.end(), "-") != files.end())
      return "standard input is read with --batch only; a file of that name is ./-";
    if (!line_.url.empty() && !files.empty()) return "--url takes the place of files";
    return "";
  }

  arguments_t arguments_;
  command_line line_;
  std::string first_batch_option_;
};

}  // namespace

std::optional<command_line> parse_command_line(arguments_t const& arguments, std::string& error) {
  error.clear();
  return parser(arguments).run(error);
}

}  // namespace app
