#include "documents/document_alerts.h"

#include <cerrno>
#include <utility>

#include "documents/printable_name.h"
#include "path/file_system.h"
#include "path/path.h"
#include "platform/desktop.h"
#include "platform/system/library_folders.h"
#include "platform/utf.h"

namespace documents {
namespace {

constexpr std::size_t first_button = 0, second_button = 1;

bool ask(platform::alert question, std::size_t wanted) {
  question.safe_button = wanted == first_button ? second_button : first_button;
  return platform::desktop::current().alerts().run(question) == wanted;
}

constexpr char const* still_open =
    " Its text is still open here; it can be saved elsewhere with Save As.";
constexpr char const* like_to_overwrite = " Would you like to overwrite it?";

bool may_overwrite(std::string title, std::string text) {
  return ask({std::move(title), std::move(text), {"Don't Overwrite", "Overwrite"}}, second_button);
}

void tell(std::string title, std::string text, bool critical = false) {
  platform::desktop::current().alerts().run(
      {std::move(title), std::move(text), {"Continue"}, first_button, critical});
}

std::string name_of(std::string const& path) {
  std::string const name = printable_name(path);
  return quoted(name.empty() ? printable(path) : name);
}

std::string cause_of(path::file_error const& error, std::string const& path) {
  std::string const folder = path::parent(path);
  if (error.code == ENOENT && !path::exists(folder))
    return "The folder " + quoted(printable(path::abbreviate_with_tilde(folder))) +
           " does not exist.";
  return error.message + ".";
}

platform::alert changed_outside(std::string const& path) {
  return {"File Changed on Disk",
          "The file for the document at " + printable(path::abbreviate_with_tilde(path)) +
              " has been modified by another application. There are also unsaved changes in "
              "Quirnote. Do you want to keep the Quirnote version or revert to the version on "
              "disk?",
          {"Keep Quirnote Version", "Revert"}};
}

}  // namespace

void tell_out_of_memory(std::string const& path) {
  tell("Out of Memory", "There was not enough memory to load the document " + name_of(path) + ".",
       true);
}

void tell_could_not_open(path::file_error const& error, std::string const& path) {
  tell("Couldn't Open", "The file " + name_of(path) + " could not be read. " + error.message + ".");
}

void tell_could_not_save(path::write_error const& error, std::string const& path) {
  std::string text = "The file " + name_of(path) + " could not be saved. " + cause_of(error, path);
  if (error.target_damaged)
    text += " The file on disk is incomplete. The full text is still open here, unsaved.";
  else if (!error.is_in_place)
    text += still_open;
  if (error.is_in_place) text += " It was written, but may be lost in a power failure. Save again.";
  tell("Couldn't Save", text, error.target_damaged);
}

bool ask_to_save_as_utf8(std::string const& name, encoding::charset_t charset,
                         std::optional<lost_character> const& lost) {
  std::string reason;
  if (lost)
    reason = ", which has no " + quoted(printable(unicode::to_utf8(lost->character))) +
             " as in line " + std::to_string(lost->line + 1);
  return ask({"Encoding Error",
              "The document " + quoted(name) + " cannot be saved using the " +
                  encoding::charset_title[charset] + " encoding" + reason +
                  ". Would you like to save it using UTF-8 instead?",
              {"Save as UTF-8", "Cancel"}},
             first_button);
}

bool ask_to_save_lone_surrogate(std::string const& name, std::size_t line) {
  return ask(
      {"Encoding Error",
       "The document " + quoted(name) +
           " contains an invalid character (a lone surrogate) in line " + std::to_string(line) +
           ", which is not valid in UTF-8. Other programs may refuse to read the file. Would "
           "you like to save it nevertheless?",
       {"Don't Save", "Save Anyway"}},
      second_button);
}

bool ask_to_lose_bytes(std::string const& path, encoding::charset_t charset) {
  return may_overwrite("Encoding Error", "The file " + name_of(path) +
                                             " holds bytes that are not valid " +
                                             encoding::charset_title[charset] +
                                             " text. Saving would lose them." + like_to_overwrite);
}

bool ask_to_change_binary_file(std::string const& path) {
  return may_overwrite("Encoding Error",
                       "The file " + name_of(path) +
                           " does not seem to be text. Saving would change bytes in it that look "
                           "like line endings." +
                           like_to_overwrite);
}

bool ask_to_lose_unloaded_file(std::string const& path) {
  return may_overwrite("Couldn't Save", "The file " + name_of(path) +
                                            " was changed by another application and could not "
                                            "be loaded again. Saving would lose what it holds." +
                                            like_to_overwrite);
}

bool ask_to_overwrite(std::string const& path) {
  return may_overwrite("Couldn't Save",
                       "The file " + name_of(path) + " is read-only." + like_to_overwrite);
}

bool ask_to_lose_attributes(std::string const& path, std::string const& lost) {
  return may_overwrite("Couldn't Save",
                       "Saving would remove " + lost + " from the file " + name_of(path) +
                           ", and you are not permitted to undo that." + like_to_overwrite);
}

bool ask_to_save_without_copy(std::string const& path, path::file_error const& error) {
  return ask({"No Safety Copy",
              "No safety copy of the file " + name_of(path) + " could be made in " +
                  quoted(printable(path::abbreviate_with_tilde(platform::state_folder()))) + ". " +
                  error.message +
                  ". If saving is interrupted, what the file holds may be lost. Would you like to "
                  "save it all the same?",
              {"Cancel", "Save Anyway"}},
             second_button);
}

bool ask_to_revert(std::string const& path) {
  return ask(changed_outside(path), second_button);
}

overwriting ask_to_overwrite_changes(std::string const& path) {
  platform::alert question = changed_outside(path);
  question.buttons.push_back("Cancel");
  question.safe_button = static_cast<std::size_t>(overwriting::cancel);
  return static_cast<overwriting>(platform::desktop::current().alerts().run(question));
}

}  // namespace documents
