#pragma once

#include <string>
#include <vector>

#include "plist/value.h"

namespace settings {

/// What the values of a setting are.
struct value_type {
  enum class form {
    boolean,
    integer,
    real,
    text,
    choice,           // one of `choices`
    color,            // "#RRGGBB" or "#RRGGBBAA", or an empty text for none
    list,             // an array
    dictionary,       // a dictionary
    boolean_or_list,  // a boolean, or an array
  };

  form what = form::text;
  double least = 0, most = 0;  ///< of numbers, both included
  std::vector<std::string> choices;

  /// Whether the value can be used. What converts counts: "12" is a number, 1 and "yes" are true.
  bool accepts(plist::value const& value) const;
  /// In words that follow "takes", such as "an integer from 1 to 64".
  std::string description() const;
};

/// For whom a value holds.
enum class scope {
  program,   ///< for everything that the program shows
  language,  ///< for documents in languages without a value of their own
  document,  ///< for documents that are opened later: each may be given another value
};

/// Under which heading settings are listed.
enum class page { text_editing, fonts_and_colors, files, advanced, remembered };

/// The action that changes a setting from menus and keys.
struct action {
  std::string selector;  ///< empty if there is none
  /// The text view performs it by storing the opposite, and shows the value as a tick.
  bool is_switch = false;
};

/// One row of the table.
struct setting {
  std::string key;  ///< of the user default
  value_type type;
  plist::value standard;  ///< the default; nothing if there is none
  settings::scope scope = scope::program;
  std::string title;
  std::string help;  ///< sentences, as Markdown
  settings::action changed_by = {};
  settings::page on = page::advanced;  ///< set by the page that lists the row
};

/// What is wrong with a value of the setting, as a sentence without its full stop; empty for a good
/// one.
std::string fault_of(setting const& row, plist::value const& value);

}  // namespace settings
