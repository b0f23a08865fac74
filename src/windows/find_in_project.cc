#include "windows/find_in_project.h"

#include "commands/output_results.h"
#include "documents/WynDocument.h"
#include "documents/WynDocumentCache.h"
#include "documents/printable_name.h"
#include "path/file_system.h"
#include "path/path.h"
#include "platform/desktop.h"
#include "platform/utf.h"
#include "search/WynFindManager.h"
#include "search/view_find.h"
#include "windows/WynProjectController.h"

#include <sys/stat.h>

#include <algorithm>
#include <utility>

namespace windows {
namespace {

constexpr std::size_t most_matches = 500'000;  // more are of no use, and take all memory
constexpr double pause = 0.001;                // seconds between files that are replaced
constexpr double slice = 0.02;                 // seconds for which files are replaced at once

platform::project_find_panel& panel() {
  return platform::desktop::current().project_find();
}

bool is_folder(std::string const& path) {
  struct stat info;
  return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

std::string counted(std::size_t count, char const* one, char const* many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::vector<std::string> strings(plist::array const& list) {
  std::vector<std::string> result;
  for (plist::value const& entry : list) result.push_back(entry.string_or(""));
  return result;
}

// A place that is in the text, which may have been changed.
text::pos within(text::storage const& storage, text::pos at) {
  if (at.line >= storage.lines()) return {storage.lines() - 1, storage.size(storage.lines() - 1)};
  return {at.line, std::min<std::size_t>(at.column, storage.size(at.line))};
}

}  // namespace

find_in_project::find_in_project(owner of) : owner_(std::move(of)) {}

find_in_project::~find_in_project() {
  if (auto* const desktop = platform::desktop::current_or_null())
    desktop->project_find().set_delegate(nullptr);
}

void find_in_project::orderFront() {
  panel().set_delegate(this);
  if (!panel().is_visible()) {
    fillPanel();
  } else {
    // The window in front may be another one.
    auto values = panel().values();
    auto const titles = titlesOfPlaces();
    if (titles[values.where].empty()) values.where = titles[project].empty() ? folder : project;
    panel().set_places(titles);
    panel().set_values(values);
  }
  // What is selected in a line is what is to be found.
  document_window* const front = owner_.front();
  text::view const* const view = front ? front->textView().view() : nullptr;
  if (view != nullptr && view->has_selection()) {
    auto const first = view->selection.first().base, last = view->selection.last().base;
    if (first.line == last.line && last.column - first.column <= 1000) {
      auto values = panel().values();
      std::u16string const selected(view->selection.begin(), view->selection.end());
      values.find =
          unicode::to_utf8(values.regular_expression ? search::pattern_for(selected) : selected);
      panel().set_values(values);
    }
  }
  panel().order_front();
  projectFindDidChange();
  showState();
}

void find_in_project::fillPanel() {
  WynFindManager& manager = WynFindManager::sharedInstance();
  manager.commitEditing();
  plist::value const options = manager.options();
  auto const flag = [&](char const* key) { return options[key].boolean_or(false); };
  auto const text = [&](char const* key) { return options[key].string_or(""); };
  auto const titles = titlesOfPlaces();
  platform::project_find_values values{.find = text("findString"),
                                       .replace = text("replaceString"),
                                       .regular_expression = flag("findInProjectRegularExpression"),
                                       .ignore_case = flag("findInProjectIgnoreCase"),
                                       .whole_words = flag("findInProjectWholeWords"),
                                       .included = text("findInProjectIncluded"),
                                       .excluded = text("findInProjectExcluded"),
                                       .gitignore = flag("findInProjectGitignore"),
                                       .scope = text("findInProjectScope"),
                                       .where = titles[project].empty() ? folder : project};
  panel().set_places(titles);
  panel().set_values(values);
  panel().set_histories(strings(manager.findHistory()), strings(manager.replaceHistory()));
}

void find_in_project::keepOptions() {
  WynFindManager& manager = WynFindManager::sharedInstance();
  platform::project_find_values const v = panel().values();
  plist::dictionary options = manager.options();
  options.insert_or_assign("findString", v.find);
  options.insert_or_assign("replaceString", v.replace);
  options.insert_or_assign("findInProjectRegularExpression", v.regular_expression);
  options.insert_or_assign("findInProjectIgnoreCase", v.ignore_case);
  options.insert_or_assign("findInProjectWholeWords", v.whole_words);
  options.insert_or_assign("findInProjectIncluded", v.included);
  options.insert_or_assign("findInProjectExcluded", v.excluded);
  options.insert_or_assign("findInProjectGitignore", v.gitignore);
  options.insert_or_assign("findInProjectScope", v.scope);
  manager.setOptions(std::move(options));
  panel().set_histories(strings(manager.findHistory()), strings(manager.replaceHistory()));
}

std::string find_in_project::folderInFront() const {
  document_window* const front = owner_.front();
  if (front == nullptr) return {};
  if (auto const& document = front->textDocument();
      document != nullptr && !document->filename().empty())
    return path::parent(document->filename());
  auto const* const of = dynamic_cast<WynProjectController*>(front);
  return of ? of->projectDirectory() : std::string();
}

std::vector<std::string> find_in_project::titlesOfPlaces() const {
  std::vector<std::string> titles(all_places);
  auto* const of = dynamic_cast<WynProjectController*>(owner_.front());
  if (of != nullptr) titles[project] = "Project " + of->displayName();
  if (std::string const path = folderInFront(); !path.empty())
    titles[folder] = "Folder " + documents::printable(path::abbreviate_with_tilde(path));
  if (!rootsOf(open_files).empty()) titles[open_files] = "Open files";
  if (!rootsOf(selection).empty()) titles[selection] = "Selection in the tree";
  return titles;
}

std::vector<projects::walk_root> find_in_project::rootsOf(std::size_t where) const {
  std::vector<projects::walk_root> roots;
  auto const standard = projects::filter_patterns::standard();
  auto* const of = dynamic_cast<WynProjectController*>(owner_.front());
  if (where == project && of != nullptr) return of->tree().walk_roots();
  if (where == folder && !folderInFront().empty())
    roots.push_back({folderInFront(), true, standard});
  if (where == open_files)
    for (auto const& document : WynDocumentCache::instance().documents())
      if (document->openCount() != 0) roots.push_back({document->filename(), false, {}});
  if (where == selection && of != nullptr)
    for (std::string const& path : of->selectedInTree())
      roots.push_back({path, is_folder(path), standard});
  return roots;
}

void find_in_project::projectFindAction(platform::project_find_action action) {
  using enum platform::project_find_action;
  switch (action) {
    case begin:
      return find();
    case stop:
      isStopped_ = true;
      if (find_ != nullptr) find_->stop();
      if (work_ != nullptr) didReplace();
      return;
    case replace_ticked:
      return replace();
    case undo_replace:
      return undoReplace();
    case open_as_document:
      return openAsDocument();
  }
}

bool find_in_project::checkPattern() {
  platform::project_find_values const v = panel().values();
  std::size_t wrong = std::string::npos;
  std::u16string const sought = unicode::to_utf16(v.find);
  try {
    if (!sought.empty())
      search::text_query(sought, {.regular_expression = v.regular_expression,
                                  .ignore_case = v.ignore_case,
                                  .whole_words = v.whole_words});
  } catch (std::invalid_argument const& error) {
    wrong = search::text_query::error_offset(sought);
    panel().set_status("regexp: " + search::text_query::message_of(error));
  }
  panel().mark_error(wrong);
  return wrong == std::string::npos;
}

void find_in_project::projectFindDidChange() {
  platform::project_find_values const v = panel().values();
  if (checkPattern() && !isBusy()) panel().set_status(showsMatches_ ? countOfMatches() : "");
  shown_.reset();
  if (!v.replace.empty()) shown_.emplace(v.replace, found_.regular_expression);
  if (shown_ && shown_->has_failed()) {
    shown_.reset();
    panel().set_status("Bad replacement string");
  }
  panel().rows_did_change();
}

void find_in_project::projectFindDidClose() {
  keepOptions();
  if (find_ != nullptr) find_->stop();
}

void find_in_project::find() {
  if (work_ != nullptr || panel().values().find.empty() || !checkPattern()) return platform::beep();
  keepOptions();
  platform::project_find_values const v = panel().values();
  std::string fault;
  project_text_search search = make_project_search(v, rootsOf(v.where), fault);
  if (!fault.empty()) return panel().set_status("Scope: " + fault);
  if (search.request.roots.empty()) return panel().set_status("There are no files to search");
  results_.clear();
  at_.reset();
  canReplace_ = isStopped_ = false;
  showsMatches_ = true;
  found_ = v;
  commands::output_results::shared().begin();
  run_ = commands::output_results::shared().runs();
  panel().rows_did_reset();
  search_.mementos = std::move(search.mementos);
  find_ = search::project_find::begin(std::move(search.request), std::move(search.texts),
                                      {.take = [this](auto found) { take(std::move(found)); },
                                       .end = [this](auto const& folders) { didFind(folders); }});
  projectFindDidChange();
  show(find_ ? "Searching\u2026" : "An earlier search has not ended yet; try again in a moment");
  showState();
}

void find_in_project::take(std::vector<search::file_result> found) {
  std::size_t const first = results_.files().size();
  for (search::file_result& result : found) search_.add(std::move(result), results_);
  if (results_.files().size() != first) panel().rows_were_added(first);
  if (results_.count() >= most_matches) find_->stop();
  show("Searching\u2026 " + countOfMatches());
  showState();
}

void find_in_project::didFind(std::vector<path::file_error> const& folders) {
  bool const has_failed = find_->has_failed();
  find_.reset();
  std::size_t const first = results_.files().size();
  for (path::file_error const& error : folders)
    results_.add_note(error.path, "could not be read: " + error.message);
  if (results_.files().size() != first) panel().rows_were_added(first);
  canReplace_ = results_.count() != 0;
  std::string status = countOfMatches();
  if (isStopped_) status = "Stopped: " + status;
  if (results_.count() >= most_matches) status += "; there are more, which are not shown";
  if (has_failed) status = "There is not enough memory; " + status;
  show(status);
  showState();
}

std::string find_in_project::countOfMatches() const {
  std::string const files = counted(results_.searched_files(), "file", "files");
  std::string count = "No matches in " + files;
  if (results_.count() != 0)
    count = counted(results_.count(), "match", "matches") + " in " +
            std::to_string(results_.files_with_matches()) + " of " + files;
  if (results_.binary_files() != 0)
    count += ", " + counted(results_.binary_files(), "binary file", "binary files") + " left out";
  return count;
}

void find_in_project::show(std::string const& status) {
  panel().set_status(status);
}

void find_in_project::showState() {
  panel().set_state({.is_running = isBusy(),
                     .can_replace = canReplace_ && !isBusy(),
                     .can_undo = replacing_ != nullptr && replacing_->can_undo() && !isBusy(),
                     .can_open = results_.count() != 0 && !isBusy()});
}

// Rows.

std::size_t find_in_project::projectFindMatches(std::size_t file) const {
  return results_.files()[file].matches.size();
}

platform::project_find_row find_in_project::projectFindRow(platform::project_find_place place) {
  platform::project_find_row row;
  if (!place.match) {
    row.text = results_.title(place.file);
    return row;
  }
  search::result_place const at{place.file, *place.match};
  auto const line = results_.line(at);
  row.text = line.text;
  row.first = line.first;
  row.last = line.last;
  if (shown_)
    if (auto const text = shown_->preview(results_.match(at)))
      row.replacement = unicode::to_utf8(*text);
  return row;
}

find_in_project::ticks find_in_project::projectFindTicks(platform::project_find_place place) const {
  auto const& ticked = results_.files()[place.file].ticked;
  if (place.match) return ticked[*place.match] ? ticks::all : ticks::none;
  auto const count = static_cast<std::size_t>(std::count(ticked.begin(), ticked.end(), true));
  return count == 0 ? ticks::none : count == ticked.size() ? ticks::all : ticks::some;
}

void find_in_project::projectFindTick(platform::project_find_place place, bool ticked) {
  if (place.match)
    results_.tick({place.file, *place.match}, ticked);
  else
    results_.tick_file(place.file, ticked);
}

void find_in_project::projectFindShow(platform::project_find_place place) {
  search::found_file const& file = results_.files()[place.file];
  if (place.match) at_ = {place.file, *place.match};
  document_window* const window = owner_.open(file.path);
  if (window == nullptr || !place.match || window->textView().view() == nullptr) return;
  text::storage const& storage = *window->textView().view()->storage;
  search::file_match const& match = results_.match(*at_);
  window->textView().showMatch(within(storage, match.first), within(storage, match.last));
}

bool find_in_project::isWalked() const {
  return results_.count() != 0 && run_ == commands::output_results::shared().runs();
}

bool find_in_project::step(bool backward) {
  // Back from the first one there is nothing, nor before the first step.
  auto const to = backward ? (at_ ? results_.previous(at_) : std::nullopt) : results_.next(at_);
  if (!to) return false;
  panel().select({to->file, to->match});
  projectFindShow({to->file, to->match});
  return true;
}

// Replacing.

// Files that aren't open are written.
bool find_in_project::confirm(std::vector<search::found_file> const& files,
                              std::string const& title) const {
  std::size_t closed = 0;
  for (search::found_file const& file : files)
    if (!file.memento &&
        std::find(file.ticked.begin(), file.ticked.end(), true) != file.ticked.end())
      ++closed;
  if (closed == 0) return true;
  platform::alert const question{
      title,
      counted(closed, "file that is not open", "files that are not open") +
          " will be written to disk. \u201cUndo Replace\u201d puts them back until you replace "
          "again.",
      {"Replace", "Cancel"},
      1};
  return platform::desktop::current().alerts().run(question) == 0;
}

void find_in_project::replace() {
  if (isBusy() || !canReplace_ || results_.ticked() == 0) return platform::beep();
  search::match_replacement replacement(panel().values().replace, found_.regular_expression);
  if (replacement.has_failed()) return show("Bad replacement string");
  if (!confirm(results_.files(), "Replace " + counted(results_.ticked(), "match", "matches") + "?"))
    return;
  keepOptions();
  canReplace_ = isStopped_ = false;
  refused_ = 0;
  replacing_ = std::make_unique<search::project_replace>(results_.files(), std::move(replacement));
  work();
}

void find_in_project::openAsDocument() {
  if (results_.count() == 0 || isBusy()) return platform::beep();
  auto const text = std::make_shared<search::results_text const>(results_);
  document_window& window = owner_.open_text(text::text_block::copy(text->text()));
  std::erase_if(documents_, [](results_document const& each) { return each.document.expired(); });
  documents_.push_back({window.textDocument(), text});
  window.showWindow();
}

bool find_in_project::canWriteBack() const {
  document_window* const front = owner_.front();
  return front != nullptr && !isBusy() &&
         std::any_of(documents_.begin(), documents_.end(), [&](results_document const& each) {
           return each.document.lock() == front->textDocument();
         });
}

// Once, as the lines are others then.
bool find_in_project::writeBack() {
  if (!canWriteBack()) return false;
  auto const document = owner_.front()->textDocument();
  auto const known =
      std::find_if(documents_.begin(), documents_.end(),
                   [&](results_document const& each) { return each.document.lock() == document; });
  std::size_t refused = 0;
  auto const files = known->text->changes(document->storage().whole_text(), refused);
  std::size_t lines = 0;
  for (search::found_file const& file : files) lines += file.matches.size();
  if (lines == 0 && refused == 0) return false;
  if (!confirm(files, "Write " + counted(lines, "line", "lines") + " back?")) return true;
  documents_.erase(known);
  canReplace_ = isStopped_ = false;
  refused_ = refused;
  replacing_ =
      std::make_unique<search::project_replace>(files, search::match_replacement("", false));
  panel().set_delegate(this);
  panel().order_front();
  work();
  return true;
}

void find_in_project::undoReplace() {
  if (isBusy() || replacing_ == nullptr || !replacing_->can_undo()) return platform::beep();
  isStopped_ = false;
  replacing_->begin_undo();
  work();
}

void find_in_project::work() {
  auto& loop = platform::desktop::current().loop();
  work_ = loop.schedule(pause, true, [this, &loop] {
    if (platform::desktop::current().waits().is_waiting()) return;
    double const until = loop.now() + slice;
    bool has_more = true;
    while (has_more && loop.now() < until) has_more = replacing_->step();
    show("Replacing\u2026 " + std::to_string(replacing_->report().size()) + " files");
    if (!has_more) didReplace();
  });
  showState();
}

void find_in_project::didReplace() {
  work_.reset();
  bool const undone = replacing_->is_undone();
  char const* const done = undone ? "put back" : "replaced";
  results_.clear();
  showsMatches_ = false;
  for (auto const& file : replacing_->report()) {
    std::string note = file.fault.empty() ? std::to_string(file.count) + " " + done
                                          : std::string("not ") + done + ", " + file.fault;
    if (file.fault.empty() && file.is_open) note += ", not saved";
    results_.add_note(file.path, std::move(note));
  }
  panel().rows_did_reset();
  std::size_t const faults = replacing_->faults();
  std::string status = std::to_string(replacing_->replaced()) + " " + done + " in " +
                       counted(replacing_->report().size() - faults, "file", "files");
  if (faults != 0)
    status += "; " + counted(faults, "file is", "files are") + " as before: see the list";
  if (refused_ != 0 && !undone)
    status += "; " + counted(refused_, "line", "lines") + " could not be told or were cut";
  if (isStopped_) status = "Stopped: " + status;
  show(status);
  showState();
}

}  // namespace windows
