#pragma once

#include "commands/command_options.h"
#include "commands/finished_command.h"
#include "commands/shell.h"
#include "plist/value.h"
#include "text/views/selection.h"

#include <string>
#include <utility>

class WynTextView;
namespace commands {
class command_owner;
}

namespace textview {

/// A part of a text that a command reads, and where that is.
struct command_input {
  enum class part { nothing, document, selection, fallback };

  part what = part::nothing;
  text::selection range;  ///< of the selection and of a fallback
};

/// What the command would read of the view, which must show a document. The selection stays as it
/// is.
command_input input_for_command(WynTextView& text_view, commands::command_options const& command);

/// One run of a command on a text view: what it reads, where its output goes. One step of undo.
/// Events are handled while it runs; nothing changes the text then.
class command_execution {
 public:
  /// `owner` may be null: then nothing is saved, and there are no new documents.
  command_execution(WynTextView& text_view, plist::value const& command,
                    commands::command_owner* owner);
  /// Beside what the view tells it.
  void add_variables(commands::variables more) { more_ = std::move(more); }

  /// False if it could not be run or its output could not be used; the user has been told.
  bool run();

 private:
  using variables = commands::variables;

  void find_environment();
  bool lacks_programs();
  void add_place(text::view_iterator const& at);
  std::string input_text() const;
  void run_rows(commands::finished_command& finished);
  void run_once(commands::finished_command& finished);
  commands::shell_request request() const;
  bool show_page(commands::finished_command const* finished);
  bool use(commands::finished_command const& finished);
  void note_places(commands::finished_command const& finished);
  bool place(commands::finished_command const& finished);
  bool fail(std::string const& trouble);
  bool tell(std::string const& trouble);
  void show_tool_tip(std::u16string_view text);

  bool replaces_document(commands::disposition output) const;
  void replace_document(commands::finished_command const& finished, bool in_view);
  void replace_read_text(commands::finished_command const& finished);
  void replace_selection(text::unit_view units);
  void insert_after(text::unit_view units);
  bool insert_snippet(text::unit_view units);
  void select_read_text(bool also_document);

  WynTextView& text_view_;
  plist::value const& dictionary_;
  commands::command_options const options_;
  commands::command_owner* const owner_;
  command_input input_;
  variables more_, environment_;
};

}  // namespace textview
