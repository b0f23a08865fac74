#include "search/WynFindManager.h"

#include "platform/desktop.h"
#include "platform/event.h"
#include "platform/notification_center.h"
#include "platform/utf.h"
#include "search/searched_view.h"
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
  for (char const* key : {"findString", "action", "statusText"}) options.erase(key);
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
  return {at(options_, "findString").string_or(""), at(options_, "replaceString").string_or(""),
          at(options_, "regularExpression").boolean_or(false),
          at(options_, "ignoreCase").boolean_or(false),
          at(options_, "wrapAround").boolean_or(false)};
}

void WynFindManager::setOptions(plist::dictionary options) {
  readPasteboard();
  for (auto const& [key, value] : default_options()) options.emplace(key, value);
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

void WynFindManager::orderFrontFindPanel(bool replace_field) {
  hasPanel_ = true;
  panel().set_delegate(this);
  fillPanel();
  panel().set_status("");
  panel().mark_error(std::string::npos);
  panel().order_front(replace_field);
  updateShownQuery();
}

void WynFindManager::closeFindPanel() {
  if (hasPanel_) panel().close();
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
  setOptions(std::move(changed));
}

void WynFindManager::performFindAction(search::searched_view& view, platform::find_action action,
                                       std::uint32_t modifiers) {
  auto const index = static_cast<std::size_t>(action) - 1;
  if (index >= names_of_actions.size()) return platform::desktop::current().beep();
  commitEditing();
  plist::dictionary asked = options();
  asked.insert_or_assign("action", names_of_actions[index]);
  if (action == replace_all || action == count) {
    bool const selection = (modifiers & (platform::modifier::option | platform::modifier::command));
    asked.insert_or_assign("replaceAllScope", selection ? "selection" : "document");
  }
  plist::value const answer = view.findWithOptions(asked);
  if (!answer["found"].boolean_or(false)) platform::desktop::current().beep();
  showStatus(answer);
}

void WynFindManager::showStatus(plist::value const& answer) {
  if (!hasPanel_) return;
  panel().set_status(answer["statusText"].string_or(""));
}

void WynFindManager::findPanelAction(platform::find_action action, std::uint32_t modifiers,
                                     bool by_key) {
  search::searched_view* const view = mainView_ ? mainView_() : nullptr;
  if (view == nullptr || view->view() == nullptr) return platform::desktop::current().beep();
  objectDidBeginEditing();
  performFindAction(*view, action, modifiers);
  bool const searched = action == find_next || action == find_previous;
  // Return says that one continues in the text; a button that one stays.
  if (by_key && searched && view->view()->has_selection() &&
      at(options_, "statusText").string_or("").empty())
    closeFindPanel();
}

// While one types the matches are shown, and what is wrong with a pattern, but nothing is taken
// over.
void WynFindManager::findPanelDidChange() {
  objectDidBeginEditing();
  updateShownQuery();
}

void WynFindManager::findPanelDidClose() {
  commitEditing();
  updateShownQuery();
}

void WynFindManager::updateShownQuery() {
  if (!hasPanel_) return;
  shown_.reset();
  if (panel().is_visible()) {
    platform::find_panel_values const values = isEditing_ ? panel().values() : findOptions();
    std::u16string const sought = unicode::to_utf16(values.find);
    std::size_t wrong = std::string::npos;
    std::string status;
    try {
      if (!sought.empty())
        shown_ = std::make_shared<search::text_query const>(sought, values.regular_expression,
                                                            values.ignore_case);
    } catch (std::invalid_argument const& error) {
      wrong = search::text_query::error_offset(sought);
      status = "regexp: " + search::text_query::message_of(error);
    }
    panel().mark_error(wrong);
    panel().set_status(status);
  }
  platform::notification_center::standard().post(matchesDidChange, this);
}
