#include "search/WynFindManager.h"

#include "platform/desktop.h"
#include "platform/event.h"
#include "platform/notification_center.h"
#include "platform/utf.h"
#include "regex/oniguruma_format.h"
#include "search/searched_view.h"
#include "search/view_find.h"
#include "settings/store.h"
#include "settings/table.h"
#include "text/views/view.h"

#include <algorithm>
#include <array>
#include <utility>

namespace {

constexpr std::size_t history_length = 10;

// By find_action, from 1.
constexpr std::array<char const*, 6> names_of_actions = {
    "findNext", "findPrevious", "replace", "replaceAndFind", "replaceAll", "count"};

constexpr char const* options_key = "WynFindPanelOptions";

plist::dictionary const& default_options() {
  static plist::dictionary const& options = settings::find(options_key)->standard.entries();
  return options;
}

// All that is kept for the next run.
plist::dictionary without_momentary(plist::dictionary options) {
  for (char const* key : {"findString", "inSelection", "action", "statusText"}) options.erase(key);
  return options;
}

// For keys that are missing: a macro shall do the same whatever the defaults of the panel are.
plist::dictionary const& plain_options() {
  static plist::dictionary const options = [] {
    plist::dictionary plain = default_options();
    plain.insert_or_assign("wrapAround", false);
    return plain;
  }();
  return options;
}

platform::find_panel& panel() {
  return platform::desktop::current().find();
}

plist::value at(plist::dictionary const& options, char const* key) {
  auto const found = options.find(key);
  return found == options.end() ? plist::value() : found->second;
}

std::vector<std::string> strings(plist::array const& list) {
  std::vector<std::string> result;
  for (plist::value const& entry : list) result.push_back(entry.string_or(""));
  return result;
}

}  // namespace

WynFindManager& WynFindManager::sharedInstance() {
  static WynFindManager manager;
  return manager;
}

WynFindManager::WynFindManager() : options_(default_options()) {
  for (auto const& [key, value] : settings::store().dictionary(options_key))
    if (key != "findString") options_.insert_or_assign(key, value);
}

void WynFindManager::readPasteboard() {
  auto& pboard = platform::desktop::current().find_pasteboard();
  if (pboard.change_count() == pboardCount_) return;
  pboardCount_ = pboard.change_count();
  std::string const string = pboard.get(platform::pasteboard_type::text).string_or("");
  if (string == at(options_, "findString").string_or("")) return;
  // Text copied elsewhere is not a pattern.
  options_.insert_or_assign("findString", string);
  options_.insert_or_assign("regularExpression", false);
  options_.insert_or_assign("findInProjectRegularExpression", false);
}

plist::dictionary const& WynFindManager::options() {
  readPasteboard();
  return options_;
}

platform::find_panel_values WynFindManager::findOptions() {
  readPasteboard();
  return {at(options_, "findString").string_or(""),
          at(options_, "replaceString").string_or(""),
          at(options_, "regularExpression").boolean_or(false),
          at(options_, "ignoreCase").boolean_or(false),
          at(options_, "wrapAround").boolean_or(false),
          at(options_, "wholeWords").boolean_or(false),
          at(options_, "inSelection").boolean_or(false)};
}

void WynFindManager::setOptions(plist::dictionary options) {
  readPasteboard();
  for (auto const& [key, value] : plain_options()) options.emplace(key, value);
  plist::dictionary const old = std::exchange(options_, std::move(options));
  std::string const find = at(options_, "findString").string_or("");
  if (find != at(old, "findString").string_or("")) {
    writeStringToFindPboard(find);
    remember("findHistory", find);
  }
  std::string const replacement = at(options_, "replaceString").string_or("");
  if (replacement != at(old, "replaceString").string_or(""))
    remember("replaceHistory", replacement);
  storeOptions();
  fillPanel();
  updateShownQuery();
}

void WynFindManager::setStatusText(std::string const& text) {
  options_.insert_or_assign("statusText", text);
}

void WynFindManager::storeOptions() const {
  plist::dictionary stored = without_momentary(options_);
  if (settings::store().get(options_key).entries() != stored)
    settings::store().set(options_key, std::move(stored));
}

void WynFindManager::writeStringToFindPboard(std::string const& string) {
  auto& pboard = platform::desktop::current().find_pasteboard();
  pboard.set({{std::string(platform::pasteboard_type::text), string}});
  pboardCount_ = pboard.change_count();
  if (at(options_, "findString").string_or("") != string) remember("findHistory", string);
  options_.insert_or_assign("findString", string);
  fillPanel();
  updateShownQuery();
}

std::string WynFindManager::findPboardString() {
  return platform::desktop::current()
      .find_pasteboard()
      .get(platform::pasteboard_type::text)
      .string_or("");
}

void WynFindManager::remember(char const* history, std::string const& entry) {
  if (entry.empty()) return;
  plist::array list = settings::store().array(history);
  if (!list.empty() && list.front() == plist::value(entry)) return;
  std::erase_if(list, [&](plist::value const& old) { return old.string_or("") == entry; });
  list.insert(list.begin(), entry);
  if (list.size() > history_length) list.resize(history_length);
  settings::store().set(history, list);
}

plist::array WynFindManager::findHistory() const {
  return settings::store().array("findHistory");
}

plist::array WynFindManager::replaceHistory() const {
  return settings::store().array("replaceHistory");
}

void WynFindManager::restoreFindString() {
  plist::array const history = findHistory();
  if (history.empty() || !findPboardString().empty()) return;
  std::string const last = history.front().string_or("");
  auto& pboard = platform::desktop::current().find_pasteboard();
  pboard.set({{std::string(platform::pasteboard_type::text), last}});
  pboardCount_ = pboard.change_count();
  options_.insert_or_assign("findString", last);
}

search::searched_view* WynFindManager::mainView() const {
  search::searched_view* const view = mainView_ ? mainView_() : nullptr;
  return view == nullptr || view->view() == nullptr ? nullptr : view;
}

void WynFindManager::orderFrontFindPanel(bool replace_field) {
  hasPanel_ = true;
  panel().set_delegate(this);
  if (scoped_ != mainView()) dropScope();
  fillPanel();
  takeSelection();
  panel().set_status("");
  panel().mark_error(std::string::npos);
  panel().order_front(replace_field);
  updateShownQuery();
}

// What is a match stays one: the pattern that found it is worth more than its text.
void WynFindManager::takeSelection() {
  constexpr std::size_t longest = 1000;  // units
  search::searched_view* const view = mainView();
  if (view == nullptr || !view->view()->has_selection()) return;
  text::selection const& selection = view->view()->selection;
  text::iterator const first = selection.first().base, last = selection.last().base;
  if (first.line != last.line || last.column - first.column > longest) return;
  platform::find_panel_values values = isEditing_ ? panel().values() : findOptions();
  try {
    std::u16string const sought = unicode::to_utf16(values.find);
    if (!sought.empty() &&
        search::selection_is_match(*view->view(), std::make_shared<search::text_query const>(
                                                      sought, search::query_options_of(values))))
      return;
  } catch (std::invalid_argument const&) {
  }
  std::u16string const selected(selection.begin(), selection.end());
  values.find =
      unicode::to_utf8(values.regular_expression ? search::pattern_for(selected) : selected);
  panel().set_values(values);
  objectDidBeginEditing();
}

bool WynFindManager::closeFindPanel() {
  bool const is_open = hasPanel_ && panel().is_visible();
  if (is_open) panel().close();
  return is_open;
}

void WynFindManager::fillPanel() {
  if (!hasPanel_) return;
  if (!isEditing_) panel().set_values(findOptions());
  panel().set_histories(strings(findHistory()), strings(replaceHistory()));
}

void WynFindManager::commitEditing() {
  if (!hasPanel_ || !isEditing_) return;
  isEditing_ = false;
  platform::find_panel_values const values = panel().values();
  plist::dictionary changed = options();
  changed.insert_or_assign("findString", values.find);
  changed.insert_or_assign("replaceString", values.replace);
  changed.insert_or_assign("regularExpression", values.regular_expression);
  changed.insert_or_assign("ignoreCase", values.ignore_case);
  changed.insert_or_assign("wrapAround", values.wrap_around);
  changed.insert_or_assign("wholeWords", values.whole_words);
  changed.insert_or_assign("inSelection", values.in_selection);
  setOptions(std::move(changed));
}

bool WynFindManager::performFindAction(search::searched_view& view, platform::find_action action,
                                       std::uint32_t modifiers) {
  auto const index = static_cast<std::size_t>(action) - 1;
  if (index >= names_of_actions.size()) {
    platform::desktop::current().beep();
    return false;
  }
  commitEditing();
  plist::dictionary asked = options();
  asked.insert_or_assign("action", names_of_actions[index]);
  if (action == replace_all || action == count) {
    bool const selection = (modifiers & (platform::modifier::option | platform::modifier::command));
    asked.insert_or_assign("replaceAllScope", selection ? "selection" : "document");
    if (selection) restoreSelection(view);
  }
  plist::value const answer = view.findWithOptions(asked);
  bool const found = answer["found"].boolean_or(false);
  if (!found) platform::desktop::current().beep();
  showStatus(answer);
  return found;
}

void WynFindManager::showStatus(plist::value const& answer) {
  if (!hasPanel_) return;
  panel().set_status(answer["statusText"].string_or(""));
}

void WynFindManager::findPanelAction(platform::find_action action, std::uint32_t modifiers,
                                     bool by_key) {
  search::searched_view* const view = mainView();
  if (view == nullptr) return platform::desktop::current().beep();
  objectDidBeginEditing();
  updateShownQuery();
  bool const replaces = action == replace || action == replace_and_find;
  bool const searches = action == find_next || action == find_previous;
  // Who types and presses Return goes to the second match, however long the first one takes.
  if ((replaces || searches) && live_.takeOver(*view) && !performFindAction(*view, find_next, 0))
    return;
  // What one sees marked is what gets replaced.
  if (replaces && shown_ != nullptr && !search::selection_is_match(*view->view(), shown_))
    action = find_next;
  performFindAction(*view, action, modifiers);
  // Return says that one continues in the text; a button that one stays.
  if (by_key && searches && view->view()->has_selection() &&
      at(options_, "statusText").string_or("").empty())
    closeFindPanel();
}

// While one types the matches are shown, and what is wrong with a pattern, but nothing is taken
// over.
void WynFindManager::findPanelDidChange() {
  objectDidBeginEditing();
  bool const has_scope = updateScope(panel().values().in_selection);
  updateShownQuery(true);
  if (!has_scope) panel().set_status("Nothing is selected to search in");
}

// Whether what is asked for can be.
bool WynFindManager::updateScope(bool in_selection) {
  search::searched_view* const view = mainView();
  if (!in_selection) dropScope();
  if (!in_selection || view == nullptr || view->findScope()) return true;
  dropScope();
  if (restoreSelection(*view) && view->setFindScope(true)) {
    scoped_ = view;
    return true;
  }
  platform::find_panel_values values = panel().values();
  values.in_selection = false;
  panel().set_values(values);
  platform::desktop::current().beep();
  return false;
}

bool WynFindManager::restoreSelection(search::searched_view& view) {
  auto const before = live_.selectionBefore(view);
  if (!before) return true;
  if (before->first == before->second) return false;
  view.showMatch(before->first, before->second);
  return true;
}

void WynFindManager::dropScope() {
  options_.erase("inSelection");
  if (scoped_ != nullptr) std::exchange(scoped_, nullptr)->setFindScope(false);
}

void WynFindManager::viewWillClose(search::searched_view const& view) {
  live_.forget(view);
  if (scoped_ != &view) return;
  dropScope();
  if (!isEditing_) return fillPanel();
  platform::find_panel_values values = panel().values();
  values.in_selection = false;
  panel().set_values(values);
}

void WynFindManager::findPanelDidClose() {
  commitEditing();
  dropScope();
  updateShownQuery();
}

void WynFindManager::updateShownQuery(bool select) {
  if (!hasPanel_) return;
  if (!panel().is_visible()) {
    shown_.reset();
  } else {
    platform::find_panel_values const values = isEditing_ ? panel().values() : findOptions();
    std::u16string const sought = unicode::to_utf16(values.find);
    std::size_t wrong = std::string::npos;
    std::string status;
    bool const is_same = shown_ != nullptr && values.find == shownValues_.find &&
                         search::query_options_of(values) == search::query_options_of(shownValues_);
    shownValues_ = values;
    try {
      if (!is_same) shown_.reset();
      if (!is_same && !sought.empty())
        shown_ =
            std::make_shared<search::text_query const>(sought, search::query_options_of(values));
    } catch (std::invalid_argument const& error) {
      wrong = search::text_query::error_offset(sought);
      status = "regexp: " + search::text_query::message_of(error);
    }
    panel().mark_error(wrong);
    panel().set_status(status);
  }
  search::searched_view* const view = mainView();
  if (view != nullptr && shown_ != nullptr)
    live_.seek(*view, shown_, select);
  else
    live_.stop();
  showLiveFind();
  platform::notification_center::standard().post(matchesDidChange, this);
}

void WynFindManager::showLiveFind() {
  if (!hasPanel_ || !panel().is_visible()) return;
  panel().set_count(live_.count());
  if (std::string const note = live_.note(); !note.empty()) panel().set_status(note);
  panel().set_preview(preview());
}

// Of what replacing the selected match would put there.
std::string WynFindManager::preview() const {
  search::searched_view* const view = mainView();
  if (view == nullptr || shown_ == nullptr || shown_->pattern() == nullptr) return {};
  std::string const& replacement = shownValues_.replace;
  if (oniguruma::format(replacement.c_str()).has_failed()) return "Bad replacement string";
  auto const text = search::preview_of_replacement(*view->view(), shown_, replacement);
  return text ? "\u2192 " + unicode::to_utf8(*text) : std::string();
}
