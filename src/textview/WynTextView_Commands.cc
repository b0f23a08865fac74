#include "bundles/BundleManager.h"
#include "commands/WynExecuteCommandManager.h"
#include "commands/environment.h"
#include "commands/output_text.h"
#include "commands/shell.h"
#include "documents/WynDocument.h"
#include "grammar/scope_selector.h"
#include "grammar/tokenize_filter.h"
#include "layout/geometry.h"
#include "path/path.h"
#include "platform/desktop.h"
#include "platform/utf.h"
#include "styles/scope_ranges.h"
#include "text/views/view.h"
#include "textview/WynTextView.h"
#include "textview/command_execution.h"
#include "textview/view_will_change.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <limits>

// Commands of bundles on the text, the selected text as a command, and selecting by scopes.

namespace {

std::string names_of(std::uint32_t modifiers) {
  namespace modifier = platform::modifier;
  constexpr std::pair<std::uint32_t, char const*> names[] = {{modifier::shift, "SHIFT"},
                                                             {modifier::control, "CONTROL"},
                                                             {modifier::option, "OPTION"},
                                                             {modifier::command, "COMMAND"}};
  std::string result;
  for (auto const& [bit, name] : names)
    if (modifiers & bit) result += (result.empty() ? "" : "|") + std::string(name);
  return result;
}

// What a tool tip has room for: a command may write any amount.
std::u16string beginning_of(std::u16string_view text) {
  constexpr std::size_t most_lines = 60, longest_line = 300;  // units
  std::u16string result;
  for (std::size_t lines = 0; !text.empty(); ++lines) {
    if (lines == most_lines) return result + u'\u2026';
    std::u16string_view const line = text.substr(0, text.find(u'\n'));
    std::size_t end = std::min(line.size(), longest_line);
    if (end < line.size() && (line[end - 1] & 0xFC00) == 0xD800) --end;
    result += line.substr(0, end);
    if (end < line.size()) result += u'\u2026';
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    if (!text.empty()) result += u'\n';
  }
  return result;
}

// Only where they have more than the root in common.
std::string seen_from(std::string const& folder, std::string const& path) {
  std::filesystem::path const from(folder), to(path);
  bool const is_near = from.begin() != from.end() && std::next(from.begin()) != from.end() &&
                       std::next(to.begin()) != to.end() &&
                       *std::next(from.begin()) == *std::next(to.begin());
  return is_near ? to.lexically_relative(from).string() : path;
}

}  // namespace

void WynTextView::addCommandMethods() {
  auto const add = [this](char const* selector, auto perform) {
    addMethod(selector, [this, perform](plist::value const& argument) {
      return plist::value(view_ != nullptr && perform(argument));
    });
  };
  add("executeCommandWithOptions:", [this](plist::value const& command) {
    return textview::command_execution(*this, command, commandOwner_).run();
  });
  add("selectCurrentScope:", [this](auto const&) { return selectCurrentScope(); });
  add("extendSelectionInScope:", [this](plist::value const& selector) {
    extendSelectionInScope(selector.string_or(""));
    return true;
  });
  add("selectCommandResult:",
      [this](plist::value const& place) { return selectCommandResult(place); });
  add("orderFrontExecuteCommandPanel:", [this](auto const&) {
    auto const filter = WynExecuteCommandManager::askForFilter();
    return !filter || tryToPerformWith("executeCommandWithOptions:", *filter);
  });
  add("executeCommandWithTag:", [this](plist::value const& number) {
    auto const filters = WynExecuteCommandManager::history();
    auto const n = static_cast<std::size_t>(number.integer_or(-1));
    if (n >= filters.size()) return false;
    WynExecuteCommandManager::addToHistory(filters[n]);
    return tryToPerformWith("executeCommandWithOptions:", filters[n]);
  });
  add("performExecuteCommand:", [this](auto const&) {
    return tryToPerformWith("executeCommandWithOptions:", WynExecuteCommandManager::options());
  });
  struct execution {
    char const *selector, *title, *selection_title, *line_title;
    bool at_end, replace;
  };
  constexpr execution executions[] = {
      {"executeSelectionInsertingOutput:", "executeSelectionInsertingOutputMenuTitle",
       "Execute Selection Inserting Result", "Execute Line Inserting Result", false, false},
      {"executeSelectionAppendingOutput:", "executeSelectionAppendingOutputMenuTitle",
       "Execute Selection Appending Result", "Execute Line Appending Result", true, false},
      {"executeSelectionReplacingSelection:", "executeSelectionReplacingSelectionMenuTitle",
       "Execute Selection and Replace With Result", "Execute Line and Replace With Result", false,
       true}};
  for (execution const& each : executions) {
    add(each.selector, [this, at_end = each.at_end, replace = each.replace](auto const&) {
      return executeSelection(at_end, replace);
    });
    addMethod(each.title, [this, each](plist::value const&) {
      return plist::value(hasSelection() ? each.selection_title : each.line_title);
    });
  }
}

std::u16string WynTextView::xmlRepresentation() const {
  if (view_ == nullptr) return {};
  return styles::scope_markup(*this, {}, view_->storage->end(-1).pos());
}

std::u16string WynTextView::xmlRepresentationForSelection() const {
  if (view_ == nullptr) return {};
  text::selection const& selection = view_->selection;
  return styles::scope_markup(*this, selection.first().base.pos(), selection.last().base.pos());
}

void WynTextView::selectRange(text::pos first, text::pos last) {
  textview::view_will_change const scope(*this, true);
  view_->selection.set_caret(view_->in_view({first, view_->storage}));
  view_->selection.select_to(view_->in_view({last, view_->storage}), false);
}

// All that the innermost scope at the caret covers.
bool WynTextView::selectCurrentScope() {
  constexpr std::chrono::seconds longest_wait{10};  // a guess would select something else
  if (tokenizer_ != nullptr)
    tokenizer_->wait_for(view_->selection.current_mark.base.line, longest_wait);
  auto const wanted = currentContext();
  if (wanted.empty()) return false;
  text::pos const caret = view_->selection.current_mark.base.pos();
  auto const [first, last] = styles::scope_extent(*this, caret, caret, [&](auto const& scopes) {
    return scopes.size() >= wanted.size() &&
           std::equal(wanted.begin(), wanted.end(), scopes.begin());
  });
  selectRange(first, last);
  return first != last;
}

void WynTextView::extendSelectionInScope(std::string const& selector) {
  if (view_ == nullptr) return;
  text::selection const& selection = view_->selection;
  auto const [first, last] = styles::scope_extent(
      *this, selection.first().base.pos(), selection.last().base.pos(),
      [&](auto const& scopes) { return scope::new_score_for_selector(selector, scopes) > 0; });
  selectRange(first, last);
}

// A "line" and perhaps a "column", from 1; without a column the rest of the line is selected.
bool WynTextView::selectCommandResult(plist::value const& place) {
  auto const number = [&](char const* key) {
    std::int64_t const value = place[key].integer_or(0);
    if (value > 0) return static_cast<std::size_t>(value);
    std::string const text = place[key].string_or("");
    return static_cast<std::size_t>(std::strtoul(text.c_str(), nullptr, 10));
  };
  std::size_t const line = number("line"), column = number("column");
  if (line == 0 || !goToLineAndColumn({line, std::max<std::size_t>(column, 1)})) return false;
  return column != 0 ||
         selectToLineAndColumn({line, std::numeric_limits<std::int32_t>::max()}, false);
}

void WynTextView::showToolTip(std::u16string_view text) {
  if (host_ == nullptr || view_ == nullptr) return;
  host_->show_tool_tip({beginning_of(text), layout::caret_rectangle(*this)});
}

// Of the selected text or, without any, of the caret's line, as a script.
std::optional<text::text_block> WynTextView::outputOfSelection() {
  text::iterator const caret = view_->selection.current_mark.base;
  commands::shell_request request{
      .script = unicode::to_utf8(hasSelection() ? std::u16string_view(view_->selection.units())
                                                : view_->storage->line_units(caret.line)),
      .environment = commands::environment_for(this)};
  request.directory = commands::directory_for(request.environment);
  text::view const* const view = view_;
  std::uint32_t const memento = view_->storage->current_memento;
  commands::output_text output;
  auto const result = commands::run_shell(request, commands::source_of(""),
                                          [&](auto piece) { output.append(piece); });
  auto text = output.take();
  std::string const trouble = !result.error.empty() ? result.error
                              : !text               ? "its output isn't valid UTF-8"
                                                    : "";
  if (!trouble.empty()) showToolTip(unicode::to_utf16("The command: " + trouble));
  bool const is_fit = trouble.empty() && !result.cancelled && view_ == view &&
                      view_->storage->current_memento == memento;
  return is_fit ? std::move(text) : std::nullopt;
}

bool WynTextView::executeSelection(bool at_end, bool replace) {
  auto const output = outputOfSelection();
  if (!output) return false;
  textview::view_will_change const scope(*this, true);
  text::view& view = *view_;
  std::size_t const line = view.selection.current_mark.base.line;
  text::iterator const end = view.storage->end(line);
  if (replace) {
    if (!view.has_selection()) {
      view.selection.set_caret({&view, view.storage->begin_of_line(line)});
      view.selection.select_to({&view, end}, false);
    }
    view.replace_selection(output->begin(), output->end());
    return true;
  }
  if (at_end)
    view.selection.set_caret(view.in_view(view.storage->end(-1)));
  else
    view.selection.set_caret(view.has_selection() ? view.selection.last()
                                                  : text::view_iterator(&view, end));
  if (output->empty()) return true;
  if (!at_end) view.insert(u"\n", u"\n" + 1);
  view.insert(output->begin(), output->end());
  return true;
}

bool WynTextView::dropFile(std::string const& path, std::uint32_t modifiers) {
  auto& manager = BundleManager::sharedInstance();
  auto const items = manager.bundleItemsForFileDrop(path, scopeAtCaret());
  if (items.empty()) return false;
  auto const item = manager.chooseItem(items, *this, true);
  if (item == nullptr || view_ == nullptr) return true;
  plist::dictionary command = item->content().entries();
  command.insert_or_assign("input", "none");
  recordMacroCommand("executeCommandWithOptions:", command);
  recording_suspended const unrecorded(*this);
  std::string const folder =
      document_->filename().empty() ? "" : path::parent(document_->filename());
  plist::value const options(std::move(command));
  textview::command_execution execution(*this, options, commandOwner_);
  execution.add_variables({{"QN_DROPPED_FILEPATH", path},
                           {"QN_DROPPED_FILE", folder.empty() ? path : seen_from(folder, path)},
                           {"QN_MODIFIER_FLAGS", names_of(modifiers)}});
  struct executing {
    BundleManager& manager;
    ~executing() { manager.popBundleItem(); }
  };
  manager.pushBundleItem(item);
  executing const on_stack{manager};
  if (!execution.run()) platform::desktop::current().beep();
  return true;
}
