#include "textview/command_execution.h"

#include "commands/command_owner.h"
#include "commands/environment.h"
#include "commands/html_output.h"
#include "commands/output_results.h"
#include "commands/output_text.h"
#include "commands/text_source.h"
#include "documents/WynDocument.h"
#include "documents/replace_text.h"
#include "grammar/scope_selector.h"
#include "platform/log.h"
#include "platform/utf.h"
#include "styles/scope_ranges.h"
#include "text/kill_buffer_guard.h"
#include "text/views/view.h"
#include "textview/WynTextView.h"
#include "textview/view_will_change.h"

#include <algorithm>
#include <tuple>

namespace textview {

using commands::disposition;
using commands::fallback;
using commands::finished_command;
using commands::input_kind;

namespace {

constexpr char const* invalid_output = "its output isn't valid UTF-8";

text::selection range_in(text::view& view, text::iterator const& first,
                         text::iterator const& last) {
  text::selection range;
  range.set_caret({&view, first});
  range.select_to({&view, last}, false);
  return range;
}

text::selection fallback_range(WynTextView& text_view, commands::command_options const& command) {
  text::view& view = *text_view.view();
  text::view_iterator const caret = view.selection.current_mark;
  text::iterator first = caret.base, last = caret.base;
  switch (command.without_selection) {
    case fallback::character: {
      text::view_iterator next{&view, caret.base};
      last = (++next).base;
      break;
    }
    case fallback::word:
      std::tie(first, last) = text_view.wordRangeAtCaret();
      break;
    case fallback::line:
      first = view.storage->begin_of_line(caret.base.line);
      last = view.storage->end(caret.base.line);
      break;
    case fallback::scope: {
      auto const extent =
          styles::scope_extent(text_view, first.pos(), last.pos(), [&](auto const& scopes) {
            return scope::new_score_for_selector(command.scope, scopes) > 0;
          });
      first = {extent.first, view.storage};
      last = {extent.second, view.storage};
      break;
    }
    case fallback::none:
    case fallback::document:
      break;
  }
  return range_in(view, first, last);
}

bool replaces_text(disposition output) {
  return output == disposition::replace_selected_text || output == disposition::replace_document ||
         output == disposition::insert_as_snippet || output == disposition::replace_selection;
}

/// The rows of a rectangle, each without its end.
std::vector<text::unit_view> rows_of(text::unit_view units) {
  std::vector<text::unit_view> rows;
  while (!units.empty()) {
    std::size_t const end = std::min(units.find(u'\n'), units.size());
    rows.push_back(units.substr(0, end));
    units.remove_prefix(std::min(end + 1, units.size()));
  }
  return rows;
}

}  // namespace

command_input input_for_command(WynTextView& text_view, commands::command_options const& command) {
  text::view& view = *text_view.view();
  using part = command_input::part;
  bool const has_selection = view.has_selection();
  if (command.input == input_kind::none) return {};
  if (command.input == input_kind::document ||
      (!has_selection && command.without_selection == fallback::document))
    return {part::document, {}};
  if (has_selection) return {part::selection, view.selection.without_text()};
  return {part::fallback, fallback_range(text_view, command)};
}

command_execution::command_execution(WynTextView& text_view, plist::value const& command,
                                     commands::command_owner* owner)
    : text_view_(text_view),
      dictionary_(command),
      options_(commands::read_command(command)),
      owner_(owner) {}

bool command_execution::run() {
  find_environment();
  if (lacks_programs()) return false;
  if (owner_ != nullptr && !owner_->willExecuteCommand(options_)) {
    text_view_.commandWasRefused();
    return true;
  }
  // Saving may have given the document a name, and another language with that.
  if (options_.saves_first) find_environment();
  input_ = input_for_command(text_view_, options_);
  if (input_.what == command_input::part::document && !text_view_.hasSelection())
    add_place({text_view_.view(), text_view_.view()->storage->begin_of_line(0)});
  if (input_.what == command_input::part::fallback) add_place(input_.range.first());
  if (options_.output == disposition::show_as_html && show_page(nullptr)) return true;
  text::view const* const view = text_view_.view();
  std::uint32_t const memento = view->storage->current_memento;
  finished_command finished{.options = options_, .output = options_.output};
  if (options_.each_row && view->is_in_column_mode() && input_.range.column_mode)
    run_rows(finished);
  else
    run_once(finished);
  if (auto const wanted = commands::disposition_of_status(finished.status))
    finished.output = *wanted;
  if (owner_ != nullptr && owner_->takesOutput(finished)) return finished.error.empty();
  if (text_view_.view() != view || view->storage->current_memento != memento)
    return fail("the text has changed while it ran");
  return use(finished);
}

void command_execution::find_environment() {
  environment_ = commands::environment_for(&text_view_);
  for (auto const& [name, value] : more_) environment_.insert_or_assign(name, value);
}

bool command_execution::lacks_programs() {
  std::string const path = commands::child_path(environment_);
  auto const missing = commands::missing_programs(options_.required, path);
  if (!missing.empty()) fail(commands::report_of_missing(missing, path));
  return !missing.empty();
}

void command_execution::add_place(text::view_iterator const& at) {
  for (auto const& [name, value] : text_view_.variablesOfPlace(at, "QN_INPUT_START_"))
    environment_.insert_or_assign(name, value.string_or(""));
}

commands::shell_request command_execution::request() const {
  return {.script = options_.script,
          .environment = environment_,
          .directory = commands::directory_for(environment_)};
}

// In one piece: of markup, of rectangles, and for who doesn't take it in pieces.
std::string command_execution::input_text() const {
  text::storage const& storage = *text_view_.view()->storage;
  using part = command_input::part;
  if (input_.what == part::nothing) return "";
  bool const is_whole = input_.what == part::document;
  text::pos const end(storage.lines() - 1, storage.size(storage.lines() - 1));
  text::pos const first = is_whole ? text::pos() : input_.range.first().base.pos();
  text::pos const last = is_whole ? end : input_.range.last().base.pos();
  if (options_.as_markup) return unicode::to_utf8(styles::scope_markup(text_view_, first, last));
  if (input_.what == part::selection) return unicode::to_utf8(input_.range.units());
  commands::text_source source(storage, first, last);
  std::string text;
  for (std::string_view piece = source.next(); !piece.empty(); piece = source.next()) text += piece;
  return text;
}

void command_execution::run_once(finished_command& finished) {
  text::storage const& storage = *text_view_.view()->storage;
  bool const is_streamed = input_.what == command_input::part::document && !options_.as_markup;
  std::string const text = is_streamed ? "" : input_text();
  text::pos const end(storage.lines() - 1, storage.size(storage.lines() - 1));
  commands::text_source source(storage, {}, end);
  bool const is_compared = is_streamed && replaces_document(options_.output);
  commands::output_text output(is_streamed ? text_view_.document()->length() : text.size(),
                               is_compared ? &storage : nullptr);
  auto const input = is_streamed ? commands::input_source([&] { return source.next(); })
                                 : commands::source_of(text);
  auto result = commands::run_shell(request(), input, [&](auto piece) { output.append(piece); });
  finished.status = result.status;
  finished.cancelled = result.cancelled;
  finished.error = std::move(result.error);
  auto taken = output.take();
  if (!taken && finished.error.empty() && !finished.cancelled) finished.error = invalid_output;
  if (taken) {
    finished.rest = *std::move(taken);
    if (is_compared) finished.like = &storage;
  }
  finished.same = output.same();
}

// Each gives the first line of its output, so that the rectangle keeps its height.
void command_execution::run_rows(finished_command& finished) {
  std::u16string all;
  for (text::unit_view const row : rows_of(input_.range.units())) {
    commands::shell_request each = request();
    each.input = unicode::to_utf8(row);
    auto result = commands::run_shell(each);
    finished.status = result.status;
    finished.cancelled = result.cancelled;
    finished.error = std::move(result.error);
    if (finished.cancelled || !finished.error.empty()) return;
    std::u16string const units = unicode::to_utf16(result.output);
    if (unicode::to_utf8(units) != result.output) finished.error = invalid_output;
    if (!finished.error.empty()) return;
    all += units.substr(0, units.find(u'\n')) + u'\n';
  }
  finished.rest = text::text_block::copy(all);
}

bool command_execution::show_page(finished_command const* finished) {
  auto* const pages = commands::html_output::current();
  if (pages == nullptr) return false;
  commands::shell_request const what = request();
  if (finished != nullptr)
    pages->show_output(unicode::to_utf8(finished->text().view()), dictionary_, what.environment,
                       what.directory);
  else
    pages->run_command(dictionary_, input_text(), what.environment, what.directory);
  return true;
}

bool command_execution::use(finished_command const& finished) {
  if (!finished.error.empty()) return tell(finished.error);
  // A part of the output is no replacement for the text.
  if (finished.cancelled && replaces_text(finished.output)) return true;
  switch (finished.output) {
    case disposition::discard:
      return true;
    case disposition::show_as_tool_tip:
      note_places(finished);
      show_tool_tip(finished.text().view());
      return true;
    case disposition::show_as_html:
      if (show_page(&finished)) return true;
      [[fallthrough]];
    case disposition::open_as_new_document:
      note_places(finished);
      if (owner_ != nullptr) owner_->openAsNewDocument(finished.text());
      return owner_ != nullptr;
    default:
      return place(finished);
  }
}

// What is read, and doesn't become part of the text, is what Next Result is for.
void command_execution::note_places(finished_command const& finished) {
  commands::output_results::shared().take(unicode::to_utf8(finished.text().view()),
                                          request().directory);
}

bool command_execution::place(finished_command const& finished) {
  text::kill_buffer_guard const untouched(*text_view_.view()->storage);
  view_will_change const scope(text_view_, true);
  switch (finished.output) {
    case disposition::replace_document:
      replace_document(finished, false);
      break;
    case disposition::replace_selected_text:
      replace_read_text(finished);
      break;
    case disposition::after_selected_text:
      insert_after(finished.text().view());
      break;
    case disposition::insert_as_snippet:
      return insert_snippet(finished.text().view());
    default:
      select_read_text(true);
      replace_selection(finished.text().view());
  }
  return true;
}

bool command_execution::replaces_document(disposition output) const {
  return output == disposition::replace_document ||
         (output == disposition::replace_selected_text && !text_view_.hasSelection() &&
          input_.what == command_input::part::document);
}

// The caret stays where it is on the screen, or in its line and column.
void command_execution::replace_document(finished_command const& finished, bool in_view) {
  text::view& view = *text_view_.view();
  text::view_iterator const caret = view.selection.current_mark;
  std::size_t const line = in_view ? view.line_in_view(caret) : line_before_filters(caret);
  std::size_t const column = in_view ? view.column_in_view(caret) : column_before_wrap(caret);
  view.selection.set_caret(caret);
  documents::replace_text(*view.storage, finished.rest, finished.same);
  constexpr auto kind = text::freehanded_t::automatic;
  std::size_t const last_line = view.storage->lines() - 1;
  text::view_iterator const place =
      in_view ? iter_from_view_pos(&view, {line, column}, kind)
              : iter_from_hybrid_pos(&view, {std::min(line, last_line), column}, kind);
  view.make_visible(place.base);
  view.selection.set_caret(place);
}

void command_execution::replace_read_text(finished_command const& finished) {
  text::view& view = *text_view_.view();
  if (view.has_selection()) return replace_selection(finished.text().view());
  if (replaces_document(finished.output)) return replace_document(finished, true);
  select_read_text(false);
  view.erase_selection();
  text::text_block const text = finished.text();
  view.insert(text.begin(), text.end());
}

void command_execution::replace_selection(text::unit_view units) {
  text_view_.view()->replace_selection(units.begin(), units.end());
}

void command_execution::insert_after(text::unit_view units) {
  text::view& view = *text_view_.view();
  select_read_text(false);
  view.selection.set_caret(view.selection.last());
  view.insert(units.begin(), units.end());
}

bool command_execution::insert_snippet(text::unit_view units) {
  select_read_text(false);
  plist::dictionary const snippet{{"content", unicode::to_utf8(units)},
                                  {"disableAutoIndent", options_.keeps_indent ? 1 : 0}};
  return text_view_.performSelectorWithObject("insertSnippet:", snippet).boolean_or(true);
}

// Where nothing was selected. The whole document only if it is named: that a command reads it may
// be no more than a default.
void command_execution::select_read_text(bool also_document) {
  text::view& view = *text_view_.view();
  if (view.has_selection() || options_.input != input_kind::selection) return;
  if (input_.what == command_input::part::fallback) {
    view.in_view(input_.range.first().base);
    view.selection = input_.range;
  } else if (also_document || options_.names_document) {
    view.selection = range_in(view, view.storage->begin_of_line(0), view.storage->end(-1));
  }
}

bool command_execution::fail(std::string const& trouble) {
  finished_command const failed{
      .options = options_, .output = options_.output, .status = -1, .error = trouble};
  bool const is_told = owner_ != nullptr && owner_->takesOutput(failed);
  return !is_told && tell(trouble);
}

bool command_execution::tell(std::string const& trouble) {
  std::string const name =
      options_.name.empty() ? "The command" : "The command \u201c" + options_.name + "\u201d";
  std::string const text = name + ": " + trouble;
  platform::log_once(text);
  show_tool_tip(unicode::to_utf16(text));
  return false;
}

void command_execution::show_tool_tip(std::u16string_view text) {
  std::size_t const first = text.find_first_not_of(u'\n');
  if (first == text.npos) return;
  std::size_t const last = text.find_last_not_of(u'\n');
  text_view_.showToolTip(text.substr(first, last + 1 - first));
}

}  // namespace textview
