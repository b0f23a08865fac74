#include "platform/desktop.h"
#include "platform/log.h"
#include "search/WynFindManager.h"
#include "search/find_highlights.h"
#include "search/find_scope.h"
#include "search/replace_all.h"
#include "search/view_find.h"
#include "text/views/mark_history.h"
#include "textview/WynTextView.h"
#include "textview/view_will_change.h"

// Finding and replacing. Searches come before the view_will_change scope, since they may handle
// events.

namespace {

// Of a macro that worked in a part of the text the selection is that part.
search::replace_request request_from(plist::value const& options,
                                     std::optional<search::text_range> scope) {
  bool const in_scope = options["inSelection"].boolean_or(false);
  bool const in_selection = options["replaceAllScope"].string_or("selection") != "document";
  return {
      .find = options["findString"].string_or(""),
      .replace = options["replaceString"].string_or(""),
      .options = {options["regularExpression"].boolean_or(false),
                  options["ignoreCase"].boolean_or(false), options["wholeWords"].boolean_or(false)},
      .in_selection = in_selection || in_scope,
      .within = in_scope && !in_selection ? scope : std::nullopt};
}

std::string status_for(search::find_answer const& answer, std::string const& nothing) {
  if (!answer.error.empty()) return answer.error;
  switch (answer.end) {
    case search::search_end::found:
      return "";
    case search::search_end::gave_up:
      return "Search stopped: the pattern takes too long";
    case search::search_end::cancelled:
      return "Cancelled";
    default:
      return nothing;
  }
}

}  // namespace

void WynTextView::addFindMethods() {
  auto const add = [this](char const* selector, std::function<bool()> find) {
    addMethod(selector, [this, find = std::move(find)](plist::value const&) {
      return plist::value(view_ != nullptr && find());
    });
  };
  add("findNext:", [this] { return findAgain(false); });
  add("findPrevious:", [this] { return findAgain(true); });
  add("replaceAndFind:", [this] { return replaceAndFind(); });
  actions_.add_action(&search::view_copy_selection_to_findpboard, "copySelectionToFindPboard:");
  auto const has_selection = [](text::view* view) { return view->has_selection(); };
  actions_.add_action(&search::view_copy_selection_to_replacepboard,
                      "copySelectionToReplacePboard:");
  actions_.add_action(has_selection, "canCopySelectionToFindPboard");
  actions_.add_action(has_selection, "canCopySelectionToReplacePboard");
  actions_.add_action(has_selection, "canReplaceAllInSelection");
  addMethod("findWithOptions:", [this](plist::value const& options) {
    return view_ == nullptr ? plist::value(false) : findWithOptions(options.entries());
  });
  addMethod("replaceAll:", [this](plist::value const&) { return replaceAllIn("document"); });
  addMethod("replaceAllInSelection:",
            [this](plist::value const&) { return replaceAllIn("selection"); });
  highlights_ = std::make_unique<search::find_highlights>();
  matchesToken_ = platform::notification_center::standard().observe(
      WynFindManager::matchesDidChange, [this](auto const&) { setNeedsDisplay(); });
}

std::vector<search::find_highlights::match> const& WynTextView::shownMatches() const {
  static std::vector<search::find_highlights::match> const none;
  auto const query = WynFindManager::sharedInstance().shownQuery();
  if (query == nullptr || host_ == nullptr) return none;
  platform::rect const seen = visibleTextRect();
  std::size_t const rows = view_->lines();
  std::size_t const first = std::min(layout_.row_at(seen.y), rows - 1);
  std::size_t const last = std::min(layout_.row_at(seen.bottom()), rows - 1);
  return highlights_->in_window(
      *view_, query,
      {first, last + 1, layout_.column_at(seen.x), layout_.column_at(seen.right()) + 1},
      findScope());
}

bool WynTextView::setFindScope(bool in_selection) {
  findScope_.reset();
  if (!in_selection) return true;
  text::selection const& selection = view_->selection;
  if (!view_->has_selection() || selection.column_mode) return false;
  findScope_ = std::make_unique<search::find_scope>(
      *view_->storage,
      search::text_range(selection.first().base.pos(), selection.last().base.pos()));
  return true;
}

std::optional<std::pair<text::pos, text::pos>> WynTextView::findScope() const {
  return findScope_ == nullptr ? std::nullopt : std::optional(findScope_->range());
}

void WynTextView::showMatch(text::pos first, text::pos last) {
  textview::view_will_change const scope(*this, true);
  search::found_match match;
  match.place = search::text_range(first, last);
  search::select_match(*view_, match);
}

void WynTextView::ticksDidChange() {
  if (host_ != nullptr) host_->set_ticks_need_display();
}

std::vector<std::size_t> WynTextView::scroll_ticks(std::size_t height) const {
  if (view_ == nullptr || host_ == nullptr) return {};
  auto const rows = static_cast<std::size_t>(host_->visible_rect().height / layout_.lineHeight());
  return WynFindManager::sharedInstance().ticks(*this, rows, height);
}

search::find_answer WynTextView::findMatch(bool backward, bool is_part_of_change) {
  search::found_match const match = search::find_in_view(*view_, backward, findScope());
  if (match.end != search::search_end::found) return match;
  textview::view_will_change const scope(*this, true);
  if (is_part_of_change) {
    view_->saved_selection_pending = false;  // the end of this scope keeps the selection for redo
    view_->mark_history->continue_action();
  }
  search::select_match(*view_, match);
  return match;
}

search::find_answer WynTextView::replaceSelection() {
  search::found_replacement const replacement = search::replacement_for_selection(*view_);
  if (replacement.end != search::search_end::found) return replacement;
  textview::view_will_change const scope(*this, true);
  view_->replace_selection(replacement.text.begin(), replacement.text.end());
  return replacement;
}

// With what is sought now, since it may be something else when the macro is played.
void WynTextView::recordFind(char const* action, char const* scope) {
  if (!isRecordingMacro()) return;
  plist::dictionary options = WynFindManager::sharedInstance().options();
  options.insert_or_assign("action", action);
  if (scope != nullptr) options.insert_or_assign("replaceAllScope", scope);
  recordMacroCommand("findWithOptions:", std::move(options));
}

bool WynTextView::replaceAndFind() {
  recordFind("replaceAndFind");
  std::uint32_t const memento = view_->storage->current_memento;
  search::find_answer const replaced = replaceSelection();
  if (!replaced.error.empty() || replaced.end == search::search_end::cancelled)
    return search::log_and_tell(replaced, "");
  bool const changed = view_->storage->current_memento != memento;
  return search::log_and_tell(findMatch(false, changed), "bad regexp: ");
}

// The status bar says why nothing came of it.
bool WynTextView::findAgain(bool backward) {
  recordFind(backward ? "findPrevious" : "findNext");
  search::find_answer const answer = findMatch(backward);
  std::string const sought = WynFindManager::sharedInstance().findPboardString();
  showFindNote(status_for(answer, sought.empty() ? "Nothing to find" : "Not found: " + sought));
  return search::log_and_tell(answer, "bad regexp: ");
}

// It stays until the next key press or click.
void WynTextView::showFindNote(std::string const& note) {
  if (note.empty() && !hasFindNote_) return;
  hasFindNote_ = !note.empty();
  updateValueForKey(note, "incrementalSearch");
}

void WynTextView::tellOfFault(std::string const& fault) {
  platform::log_once(fault);
  showFindNote(fault);
}

plist::value WynTextView::replaceAllIn(char const* scope) {
  if (view_ == nullptr) return false;
  WynFindManager& manager = WynFindManager::sharedInstance();
  manager.commitEditing();
  if (std::string_view(scope) == "selection") manager.restoreSelection(*this);
  recordFind("replaceAll", scope);
  plist::dictionary options = manager.options();
  options.insert_or_assign("replaceAllScope", scope);
  std::string error;
  return internalReplaceAllError(options, error) > 0;
}

std::size_t WynTextView::internalReplaceAllError(plist::value const& options, std::string& error) {
  abandonMarkedText();
  search::all_matches matches(*view_, request_from(options, findScope()));
  error = status_for(matches.answer(), "");
  if (matches.answer().end != search::search_end::found) return 0;
  textview::view_will_change const scope(*this, true);
  matches.replace();
  return matches.answer().count;
}

plist::value WynTextView::findWithOptions(plist::dictionary options) {
  WynFindManager& manager = WynFindManager::sharedInstance();
  if (isRecordingMacro()) recordMacroCommand("findWithOptions:", options);
  abandonMarkedText();
  manager.setOptions(std::move(options));
  plist::value const asked = manager.options();
  bool found = false;
  std::string const status = performFind(asked["action"].string_or("findNext"), asked, found);
  manager.setStatusText(status);
  return plist::dictionary{{"statusText", status}, {"found", found}};
}

std::string WynTextView::performFind(std::string const& action, plist::value const& options,
                                     bool& found) {
  if (action == "replaceAll") {
    std::string error;
    std::size_t const count = internalReplaceAllError(options, error);
    found = count > 0;
    if (!error.empty()) return error;
    return found ? std::to_string(count) + " replaced" : "Nothing replaced";
  }
  if (action == "count") {
    search::replace_answer const answer =
        search::all_matches(*view_, request_from(options, findScope()), true).answer();
    found = answer.end == search::search_end::found;
    if (!found) return status_for(answer, "Nothing found");
    return std::to_string(answer.count) + (answer.count == 1 ? " match" : " matches");
  }
  std::uint32_t const memento = view_->storage->current_memento;
  if (action == "replace" || action == "replaceAndFind") {
    search::find_answer const replaced = replaceSelection();
    found = replaced.end == search::search_end::found;
    if (action == "replace" || !replaced.error.empty() ||
        replaced.end == search::search_end::cancelled)
      return status_for(replaced, "");
  }
  bool const changed = view_->storage->current_memento != memento;
  search::find_answer answer = findMatch(action == "findPrevious", changed);
  if (!answer.error.empty()) answer.error = "regexp: " + answer.error;
  found = answer.end == search::search_end::found;
  return status_for(answer, "Not found");
}
