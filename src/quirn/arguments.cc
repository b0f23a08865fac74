#include "quirn/arguments.h"

#include "wire/named_place.h"

#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

namespace quirn {

char const* const usage_text =
    "usage: quirn [--wait] [--line LINE[:COLUMN]] [--recent] [--change-dir] [--new-window]\n"
    "             [--environment] [--] [FILE[:LINE[:COLUMN]] | +LINE[:COLUMN] FILE | FOLDER | "
    "-]...\n"
    "       quirn --diff [--wait] [--] FILE FILE\n"
    "       quirn --help | --version\n"
    "\n"
    "Opens files in Quirnote, which is started if it isn't running.\n"
    "\n"
    "  -w, --wait         wait until the files are closed: status 0 if they hold the text as it\n"
    "                     was then, 1 if changes were not saved\n"
    "  -l, --line PLACE   the line, or line and column, of the next file\n"
    "  -r, --recent       enter the files in the list of recent files\n"
    "  -d, --change-dir   let open panels begin in the folder of the file\n"
    "  -n, --new-window   open a window for each file\n"
    "  -e, --environment  let commands in the window have the environment of this process\n"
    "  -D, --diff         show how the second file differs from the first one\n"
    "\n"
    "Without a file, and for -, standard input is the text of a new document; with --wait its\n"
    "text comes out on standard output when it is closed.\n";

namespace {

struct flag {
  char letter;
  char const* name;
  void (*set)(arguments&);
};

constexpr flag flags[] = {
    {'w', "--wait", [](arguments& a) { a.request.waits = true; }},
    {'r', "--recent", [](arguments& a) { a.request.adds_to_recent = true; }},
    {'d', "--change-dir", [](arguments& a) { a.request.changes_directory = true; }},
    {'D', "--diff", [](arguments& a) { a.request.shows_differences = true; }},
    {'n', "--new-window", [](arguments& a) { a.request.in_new_window = true; }},
    {'e', "--environment", [](arguments& a) { a.passes_environment = true; }},
    {'h', "--help", [](arguments& a) { a.what = arguments::purpose::help; }},
    {'V', "--version", [](arguments& a) { a.what = arguments::purpose::version; }},
};

// LINE or LINE:COLUMN, both from 1.
bool is_place(std::string_view text) {
  std::size_t const colon = text.find(':');
  auto const is_number = [](std::string_view digits) {
    return !digits.empty() && digits.size() < 19 && digits[0] != '0' &&
           digits.find_first_not_of("0123456789") == std::string_view::npos;
  };
  return is_number(text.substr(0, colon)) &&
         (colon == std::string_view::npos || is_number(text.substr(colon + 1)));
}

class parser {
 public:
  explicit parser(std::string& error) : error_(error) {}

  std::optional<arguments> run(std::vector<std::string> const& words) {
    bool files_only = false;
    for (std::size_t n = 0; n < words.size() && error_.empty(); ++n) {
      std::string const& word = words[n];
      if (files_only || word.size() < 2 || (word[0] != '-' && word[0] != '+')) {
        take_file(word);
      } else if (word == "--") {
        files_only = true;
      } else if (word[0] == '+') {
        take_plus(word);
      } else if (word == "--line" || word == "-l") {
        if (n + 1 == words.size())
          error_ = word + " needs LINE or LINE:COLUMN";
        else
          take_place(words[++n]);
      } else if (word.starts_with("--line=")) {
        take_place(word.substr(std::strlen("--line=")));
      } else {
        take_flags(word);
      }
      if (result_.what != arguments::purpose::open) return result_;
    }
    if (error_.empty() && !place_.empty()) error_ = "no file follows the line " + place_;
    auto const& request = result_.request;
    if (request.shows_differences && (request.files.size() != 2 || result_.reads_input))
      error_ = "--diff takes two files";
    return error_.empty() ? std::optional(result_) : std::nullopt;
  }

 private:
  void take_flags(std::string const& word) {
    bool const is_long = word.starts_with("--");
    for (std::size_t at = is_long ? 0 : 1; at < word.size(); ++at) {
      bool found = false;
      for (flag const& each : flags) {
        if (is_long ? word != each.name : word[at] != each.letter) continue;
        each.set(result_);
        found = true;
      }
      if (!found) error_ = "unknown option " + word;
      if (!found || is_long) return;
    }
  }

  void take_place(std::string const& place) {
    if (is_place(place))
      place_ = place;
    else
      error_ = "bad line: " + place;
  }

  // An existing file of that name is meant.
  void take_plus(std::string const& word) {
    if (is_place(std::string_view(word).substr(1)))
      place_ = word.substr(1);
    else
      take_file(word);
  }

  void take_file(std::string const& word) {
    if (word == "-") {
      if (result_.reads_input) error_ = "standard input can be read only once";
      result_.reads_input = true;
      return;
    }
    if (word.empty()) {
      error_ = "a file has a name";
      return;
    }
    wire::file_to_open file;
    if (!place_.empty()) {
      file = {absolute(word), std::exchange(place_, "")};
    } else {
      auto const named = wire::parse_named_place(word, [&](std::string_view name) {
        struct stat info;
        return ::stat(std::string(name).c_str(), &info) == 0;
      });
      file.path = absolute(named.name);
      if (named.line != 0) file.line = std::to_string(named.line);
      if (named.column != 0) file.line += ":" + std::to_string(named.column);
    }
    if (error_.empty()) result_.request.files.push_back(file);
  }

  std::string absolute(std::string_view name) {
    if (name.starts_with('/')) return std::string(name);
    char folder[PATH_MAX];
    if (::getcwd(folder, sizeof folder) != nullptr)
      return std::string(folder) + "/" + std::string(name);
    error_ = "the working folder: " + std::string(std::strerror(errno));
    return "";
  }

  std::string& error_;
  arguments result_;
  std::string place_;  // of the next file
};

}  // namespace

std::optional<arguments> parse_arguments(std::vector<std::string> const& words,
                                         std::string& error) {
  error.clear();
  return parser(error).run(words);
}

}  // namespace quirn
