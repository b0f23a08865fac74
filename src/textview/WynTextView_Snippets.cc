#include "bundles/BundleItem.h"
#include "bundles/BundleManager.h"
#include "commands/environment.h"
#include "commands/shell.h"
#include "layout/geometry.h"
#include "platform/desktop.h"
#include "platform/log.h"
#include "platform/utf.h"
#include "settings/store.h"
#include "snippets/parse_snippet.h"
#include "snippets/session.h"
#include "text/cluster.h"
#include "text/views/view.h"
#include "textview/WynTextView.h"
#include "textview/item_names.h"
#include "textview/view_will_change.h"

#include <algorithm>
#include <memory>

// Bundle items at the caret: tab triggers, snippets, and the fields of the one that is being filled
// in.

namespace {

constexpr char const* expand_on_tab_key = "WynTextViewExpandSnippetsOnTab";
constexpr char const* menu_font_size_key = "WynBundleManagerDisambiguateMenuFontSize";

std::u16string indentation_of(text::unit_view line) {
  std::size_t const end = line.find_first_not_of(u" \t");
  return std::u16string(line.substr(0, end));
}

// What triggers of up to `most` bytes are looked for in: they have no more units than that, and a
// whole character counts that stands before them.
text::unit_view end_of(text::unit_view line, std::size_t most) {
  if (line.size() <= most) return line;
  return line.substr(text::previous_cluster(line, line.size() - most));
}

// Once the user has cancelled one, no more code runs.
std::string output_of(std::string const& code, commands::variables const& variables,
                      std::string const& name, bool& is_cancelled) {
  if (is_cancelled) return {};
  commands::shell_request const request{
      .script = code, .environment = variables, .directory = commands::directory_for(variables)};
  commands::shell_result const result = commands::run_shell(request);
  is_cancelled = result.cancelled;
  if (!result.error.empty()) platform::log_once(name + result.error);
  bool const is_text = unicode::to_utf8(unicode::to_utf16(result.output)) == result.output;
  return is_text ? result.output : std::string();
}

// The one inserted last, since macros insert a snippet again and again.
class parsed_snippet {
 public:
  static constexpr std::size_t longest = 10'000;  // bytes of its text

  parsed_snippet(std::string content, snippet::parse_options const& options,
                 snippet::snippet_t const& parsed)
      : snippet(parsed),
        content_(std::move(content)),
        indent_(options.indent),
        tab_size_(options.tab_size),
        soft_tabs_(options.soft_tabs) {}
  bool is_of(std::string const& content, snippet::parse_options const& options) const {
    return content_ == content && indent_ == options.indent && tab_size_ == options.tab_size &&
           soft_tabs_ == options.soft_tabs;
  }

  snippet::snippet_t const snippet;

 private:
  std::string content_, indent_;
  std::size_t tab_size_;
  bool soft_tabs_;
};

// Whether there may be a variable or code in it.
bool asks_for_variables(std::string_view content) {
  for (std::size_t at = 0; (at = content.find_first_of("`$", at)) != content.npos; ++at) {
    if (content[at] == '`') return true;
    std::size_t const name = at + 1 + (content.substr(at + 1).starts_with('{') ? 1 : 0);
    if (name < content.size() && (content[name] < '0' || content[name] > '9')) return true;
  }
  return false;
}

}  // namespace

void WynTextView::addSnippetMethods() {
  addMethod("insertSnippetWithOptions:", [this](plist::value const& options) {
    return plist::value(view_ != nullptr && insertSnippet(options));
  });
  addMethod("insertSnippet:", [this](plist::value const& options) {
    return plist::value(view_ != nullptr && insertSnippet(options));
  });
  addMethod("nextSnippetField:",
            [this](plist::value const&) { return plist::value(goToSnippetField(true)); });
  addMethod("previousSnippetField:",
            [this](plist::value const&) { return plist::value(goToSnippetField(false)); });
  addMethod("expandCodeSnippet:", [this](plist::value const&) {
    return plist::value(view_ != nullptr && expandCodeSnippet());
  });
  addMethod("deleteTabTrigger:", [this](plist::value const& trigger) {
    if (view_ == nullptr) return plist::value(false);
    deleteTabTrigger(trigger.string_or(""));
    return plist::value();
  });
  addMethod("executeBundleItem:", [this](plist::value const& uuid) {
    return plist::value(
        BundleManager::sharedInstance().executeItemWithUUID(uuid.string_or(""), *this));
  });
  addMethod("canExecuteBundleItem", [this](plist::value const& uuid) {
    auto const item = BundleManager::sharedInstance().bundleItemForUUID(uuid.string_or(""));
    return plist::value(item != nullptr && BundleManager::canExecuteItem(*item, this));
  });
}

std::string WynTextView::scopeAtCaret() const {
  std::string result;
  for (std::string const& name : currentContext()) result += (result.empty() ? "" : " ") + name;
  return result;
}

bool WynTextView::hasSelection() const {
  return view_ != nullptr && view_->has_selection();
}

std::optional<std::size_t> WynTextView::chooseFromMenu(
    std::vector<platform::menu_item> const& items, bool at_mouse) {
  if (host_ == nullptr || view_ == nullptr) return std::nullopt;
  platform::rect const caret = layout::caret_rectangle(*this);
  std::optional<platform::point> place;
  if (!at_mouse) place = platform::point{caret.x, caret.y + layout_.lineHeight()};
  std::int64_t const size = settings::store().integer(menu_font_size_key);
  return host_->choose_from_menu(items, place, size == 0 ? 12 : static_cast<double>(size));
}

snippet::session* WynTextView::runningSnippet() const {
  if (view_ == nullptr || !view_->snippet_observer || !view_->snippet_observer->is_running())
    return nullptr;
  return static_cast<snippet::session*>(view_->snippet_observer.get());
}

// Tab: to the next field, or what the letters before the caret stand for. False if they stand for
// nothing.
bool WynTextView::expandCodeSnippet() {
  if (runningSnippet() != nullptr) {
    recordMacroCommand("nextSnippetField:", {});
    return goToSnippetField(true);
  }
  if (view_->has_selection() || view_->is_in_column_mode() ||
      !settings::store().boolean(expand_on_tab_key))
    return false;
  text::iterator const caret = view_->selection.current_mark.base;
  text::unit_view const line = view_->storage->line_units(caret.line).substr(0, caret.column);
  auto& manager = BundleManager::sharedInstance();
  std::string const before = unicode::to_utf8(end_of(line, manager.longestTabTrigger()));
  if (manager.bundleItemsForTabTrigger(before).empty()) return false;
  auto const items = manager.bundleItemsForTabTrigger(before, scopeAtCaret());
  if (items.empty()) return false;
  auto const item = manager.chooseItem(items, *this, false);
  if (item == nullptr) {
    stopMacro();
    return true;
  }
  std::string fault;
  if (item->kind() == bundles::item_kind::snippet &&
      !snippet::validate(item->content()["content"].string_or(""), fault)) {
    // The letters stay, and the reason is told.
    manager.executeItem(item, *this);
    return true;
  }
  textview::view_will_change const scope(*this, true);
  std::size_t const steps = isRecordingMacro() ? macroRecordingBuffer_->size() : 0;
  recordMacroCommand("deleteTabTrigger:", item->tabTrigger());
  deleteTabTrigger(item->tabTrigger());
  text::view& view = *view_;
  std::uint32_t const memento = view.storage->current_memento;
  auto const& waits = platform::desktop::current().waits();
  std::uint64_t const cancellations = waits.cancellations();
  std::uint64_t const refusals = refusals_;
  bool is_done = true;
  manager.executeItem(item, *this, &is_done);
  bool const came_to_nothing =
      !is_done || waits.cancellations() != cancellations || refusals_ != refusals;
  if (!came_to_nothing || view_ != &view || view.storage->current_memento != memento) return true;
  // Nothing stands in place of the letters, so they come back.
  view.storage->undo_manager.undo();
  view.selection.set_caret({&view, caret});
  if (isRecordingMacro()) macroRecordingBuffer_->resize(steps);
  return true;
}

void WynTextView::deleteTabTrigger(std::string const& trigger) {
  std::u16string const units = unicode::to_utf16(trigger);
  text::iterator const caret = view_->selection.current_mark.base;
  text::unit_view const line = view_->storage->line_units(caret.line).substr(0, caret.column);
  if (!line.ends_with(units)) return;
  textview::view_will_change const scope(*this, true);
  text::iterator const first = caret - static_cast<std::ptrdiff_t>(units.size());
  view_->storage->erase(first, caret);
  view_->selection.set_caret({view_, first});
}

bool WynTextView::insertSnippet(plist::value const& options) {
  auto const* const content = options["content"].as_string();
  if (content == nullptr) return false;
  text::view& view = *view_;
  snippet::parse_options parsing;
  // Much of it is asked of the whole text, scopes for one.
  bool const is_constant = !asks_for_variables(*content);
  if (!is_constant) parsing.variables = commands::environment_for(this);
  text::iterator const first = view.selection.first().base;
  if (options["disableAutoIndent"].integer_or(0) == 0)
    parsing.indent = unicode::to_utf8(indentation_of(view.storage->line_units(first.line)));
  parsing.tab_size = tabSize();
  parsing.soft_tabs = treatsSpacesAsTabs();
  snippetName_ = textview::name_for_messages("snippet") + ": content: ";
  static std::unique_ptr<parsed_snippet const> last;
  if (is_constant && last != nullptr && last->is_of(*content, parsing)) {
    insertParsedSnippet(last->snippet);
    return true;
  }
  bool is_cancelled = false;
  parsing.run_command = [&](std::string const& code, commands::variables const& variables) {
    return output_of(code, variables, snippetName_, is_cancelled);
  };
  std::uint32_t const memento = view.storage->current_memento;
  std::string fault;
  std::vector<std::string> warnings;
  auto snippet = snippet::parse(*content, parsing, fault, warnings);
  for (std::string const& warning : warnings) tellOfFault(snippetName_ + warning);
  if (is_cancelled) return false;
  if (snippet == nullptr) {
    tellOfFault(snippetName_ + fault);
    return false;
  }
  // Code was waited for, and the text may be another one by now.
  if (view_ != &view || view.storage->current_memento != memento) return false;
  if (is_constant && warnings.empty() && content->size() <= parsed_snippet::longest)
    last = std::make_unique<parsed_snippet const>(*content, parsing, *snippet);
  insertParsedSnippet(std::move(*snippet));
  return true;
}

void WynTextView::insertParsedSnippet(snippet::snippet_t inserted) {
  text::view& view = *view_;
  abandonMarkedText();
  textview::view_will_change const scope(*this, true);
  leaveCodeSnippetEditing();
  std::u16string const text = inserted.text();
  // Each line of a column selection gets it, and what is typed then into one of them.
  text::iterator first = view.selection.first().base;
  if (view.is_in_column_mode()) {
    view.insert(text.begin(), text.end());
    first = view.selection.current_mark.base - static_cast<std::ptrdiff_t>(text.size());
  } else {
    if (view.has_selection()) view.erase_selection();
    first = make_base_iter(view.selection.current_mark);
    view.selection.set_caret({&view, first});
    view.storage->insert(std::as_const(first), text.begin(), text.end());
  }
  inserted.begin();
  bool const is_whole = inserted.is_at_end();
  auto session = std::make_unique<snippet::session>(view, first, std::move(inserted));
  auto const field = session->active_tab_stop();
  if (!is_whole) view.set_snippet_observer(std::move(session));
  selectSnippetField(field);
}

void WynTextView::selectSnippetField(text::iterator_observer::subset const& field) {
  text::iterator const first(field.first(), view_->storage), last(field.last(), view_->storage);
  view_->selection.set_caret(view_->in_view(first));
  view_->selection.select_to(view_->in_view(last), false);
  view_->scroll_caret_pending = true;
}

bool WynTextView::goToSnippetField(bool forward) {
  snippet::session* const session = runningSnippet();
  if (session == nullptr) return false;
  abandonMarkedText();
  textview::view_will_change const scope(*this, true);
  forward ? session->next() : session->previous();
  auto const field = session->active_tab_stop();
  selectSnippetField(field);
  if (forward && std::as_const(*session).state()->is_at_end()) leaveCodeSnippetEditing();
  setNeedsDisplay();
  return true;
}

void WynTextView::leaveCodeSnippetEditing() {
  if (runningSnippet() == nullptr) return;
  view_->set_snippet_observer(nullptr);
  setNeedsDisplay();
}

void WynTextView::publishSnippetField() {
  snippet::session const* const session = runningSnippet();
  std::string text;
  if (session != nullptr) {
    auto const [field, count] = session->state()->progress();
    text = "Field " + std::to_string(field) + " of " + std::to_string(count);
    std::string const& fault = session->state()->fault();
    if (!fault.empty()) {
      platform::log_once(snippetName_ + fault);
      text += ", but " + fault;
    }
  }
  if (text == shownSnippetField_) return;
  shownSnippetField_ = text;
  updateValueForKey(text, "snippetField");
}

std::vector<std::pair<text::iterator, text::iterator>> WynTextView::snippetFields() const {
  std::vector<std::pair<text::iterator, text::iterator>> result;
  if (runningSnippet() == nullptr) return result;
  auto const field = view_->snippet_observer->active_tab_stop();
  result.emplace_back(text::iterator(field.first(), view_->storage),
                      text::iterator(field.last(), view_->storage));
  return result;
}
