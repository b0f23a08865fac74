#pragma once

#include "plist/value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace app {

/// A macro or a bundle item to perform, and how often.
struct batch_macro_option {
  std::string path;  // "-" is standard input; of an item its UUID or its name
  std::uint32_t times = 1;
  bool is_item = false;
  friend bool operator==(batch_macro_option const&, batch_macro_option const&) = default;
};

/// What is looked for in files and folders.
struct batch_find_options {
  std::string pattern;                          // --find; empty if nothing is
  std::optional<std::string> replacement;       // --replace
  std::string scope;                            // --scope: a selector
  bool is_text = false, ignore_case = false;    // --fixed, --ignore-case
  bool count = false, list = false;             // --count, --list-files
  bool gitignore = false;                       // --gitignore
  std::vector<std::string> included, excluded;  // --include, --exclude: globs
  std::string rank;                             // --go-to-file: names by what is typed
  bool is_wanted() const { return !pattern.empty() || list || !rank.empty(); }
};

/// What a run of batch mode is asked to do, in the order of the command line where that matters.
struct batch_options {
  std::vector<std::pair<std::string, plist::value>> settings;  // --set
  std::vector<batch_macro_option> macros;                      // --macro, --item, --repeat
  std::vector<std::pair<std::string, std::string>> answers;    // --answer: title and button
  bool save = false;
  std::string save_as;  // "-" is standard output
  std::string input;    // --input: in place of files; what items write is printed
  std::vector<std::string>
      prints;  // "text", "selection", "state", "scopes", "styles", "symbols", "xml"
  std::optional<std::pair<std::uint32_t, std::uint32_t>> explain;  // line and column, from 0
  std::string explain_key;  // --explain-key KEY LINE:COLUMN, a key string
  bool diff = false;        // prints what would be saved, and saves nothing
  bool check = false;       // beeps if anything would be
  std::string render;       // path of a PNG
  int columns = 80, rows = 24;
  bool strict = false;
  bool null_separated = false;             // -0: names as they are, ended by zero bytes
  std::vector<std::string> check_bundles;  // --check-bundle
  batch_find_options find;
  std::vector<std::string> files;  // "-" is standard input
};

}  // namespace app
