#pragma once

#include "plist/value.h"

#include <optional>
#include <string>
#include <vector>

namespace commands {

/// What a command reads.
enum class input_kind { none, selection, document };
/// What it reads of a text without a selection, when it is to read that.
enum class fallback { none, document, character, word, line, scope };
/// Where its output goes.
enum class disposition {
  discard,
  replace_selected_text,  ///< in place of what it has read
  replace_document,
  after_selected_text,
  insert_as_snippet,
  show_as_html,
  show_as_tool_tip,
  open_as_new_document,
  replace_selection  ///< the same as the first, and selects it
};

/// A program without which a command can't work.
struct required_program {
  std::string name;
  std::string package = {};  ///< of Debian, that has it; may be empty
};

/// A command as its dictionary describes it.
struct command_options {
  std::string name;  ///< for messages; may be empty
  std::string script;
  input_kind input = input_kind::selection;
  fallback without_selection = fallback::document;
  bool names_document = false;  ///< the fallback is said to be that, not just by default
  std::string scope;            ///< a selector, for the fallback of that name
  bool as_markup = false;
  disposition output = disposition::discard;
  bool keeps_indent = false;  ///< a snippet is inserted without the indentation of its line
  bool each_row = false;      ///< of a column selection each row is read by a run of its own
  bool saves_first = false;
  std::vector<required_program> required;
  bool saves_all = false;  ///< of a project; others save what they have
};

/// Words that mean nothing here count as absent, and are reported once.
command_options read_command(plist::value const& command);

/// What an exit status says about the output, in place of the command.
std::optional<disposition> disposition_of_status(int status);
/// Whether the command has failed by its own account.
bool is_failure(int status);

/// Those of the programs that aren't in any folder of the PATH.
std::vector<required_program> missing_programs(std::vector<required_program> const& programs,
                                               std::string const& path);
/// That they are missing, and how they are installed, for the user. At least one.
std::string report_of_missing(std::vector<required_program> const& missing,
                              std::string const& path);

}  // namespace commands
