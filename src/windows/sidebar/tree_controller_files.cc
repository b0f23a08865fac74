#include <algorithm>
#include <cerrno>
#include <utility>

#include "documents/printable_name.h"
#include "path/file_system.h"
#include "path/path.h"
#include "platform/desktop.h"
#include "platform/utf.h"
#include "projects/trash.h"
#include "windows/sidebar/tree_controller.h"

namespace windows {
namespace {

using documents::printable_name;
using platform::quoted;
using projects::item_kind;
using projects::operation_error;

std::string why(path::file_error const& error) {
  if (error.code == EEXIST) return "There is something with this name already.";
  if (error.code == EINVAL) return "A folder can't be put into itself.";
  return error.message + ".";
}

// Before the extension, which mostly stays.
std::size_t stem_length(std::string const& name, bool is_file) {
  std::size_t const dot = name.rfind('.');
  bool const has_extension = is_file && dot != name.npos && dot != 0;
  return unicode::to_utf16(has_extension ? name.substr(0, dot) : name).size();
}

std::string several(std::vector<std::string> const& paths) {
  if (paths.size() == 1) return quoted(printable_name(paths.front()));
  return std::to_string(paths.size()) + " items";
}

}  // namespace

void tree_controller::tell(std::string const& title, std::string const& text) const {
  platform::desktop::current().alerts().run({title, text, {"Continue"}});
}

// `done` and the alert come when nothing else waits.
void tree_controller::run(std::string title, std::function<operation_error()> work,
                          std::function<void()> done) {
  background_.run([this, title = std::move(title), work = std::move(work), done = std::move(done),
                   lives = std::weak_ptr<char>(lives_)]() -> projects::background::answer {
    operation_error const error = work();
    return [this, title, done, lives, error] {
      platform::desktop::current().waits().deliver(lives, [this, title, done, error] {
        if (error)
          tell(title, why(*error));
        else
          done();
      });
    };
  });
}

void tree_controller::refreshFolder(std::string const& path) {
  item* const folder = tree_.item_with_path(path);
  if (folder != nullptr && folder->kind() == item_kind::folder) tree_.refresh_folder(*folder);
}

std::vector<std::string> tree_controller::selectedPaths() {
  std::vector<std::string> paths;
  for (item* const each : topmostSelected())
    if (each->kind() != item_kind::group) paths.push_back(each->path());
  return paths;
}

std::vector<projects::project_item*> tree_controller::topmostSelected() {
  std::vector<std::pair<std::size_t, item*>> found;
  for (item* const each : selected()) {
    bool is_in_other = false;
    for (item* above = each->parent(); above != nullptr; above = above->parent())
      is_in_other = is_in_other || above->is_selected;
    if (!is_in_other) found.emplace_back(rows_.row_of(*each).value_or(0), each);
  }
  std::sort(found.begin(), found.end());
  std::vector<item*> result;
  for (auto const& [row, each] : found) result.push_back(each);
  return result;
}

projects::project_item* tree_controller::onlySelected() {
  return selected().size() == 1 ? selected().front() : nullptr;
}

// The folder that is selected, or that a selected file is in; without one the first of the project.
projects::project_item* tree_controller::folderForNew() {
  item* at = onlySelected();
  if (at == nullptr) at = current();
  if (at != nullptr && at->kind() == item_kind::file) at = at->parent();
  if (at == nullptr || at->kind() == item_kind::group)
    for (auto const& root : tree_.roots())
      if (root->kind() == item_kind::folder) {
        at = root.get();
        break;
      }
  return at != nullptr && at->kind() == item_kind::folder && !at->is_missing ? at : nullptr;
}

// Names that are typed in the tree.

bool tree_controller::beginDraft(bool folder) {
  item* const in = folderForNew();
  if (in == nullptr || host_ == nullptr) return false;
  for (item* above = in; above != nullptr; above = above->parent()) setOpen(*above, true);
  is_renaming_ = false;
  draft_ = draft{in->lifetime(), in, folder};
  marksDidChange();
  auto const row = rowOfDraft();
  if (!row) return false;
  host_->show_row(*row);
  host_->edit_title(*row, "", 0);
  return true;
}

bool tree_controller::beginRename() {
  item* const of = onlySelected();
  if (of == nullptr || host_ == nullptr) return false;
  draft_.reset();
  setCurrent(of);
  auto const row = shownRow(*of);
  if (!row) return false;
  is_renaming_ = true;
  host_->show_row(*row);
  host_->edit_title(*row, documents::printable(of->name()),
                    stem_length(of->name(), of->kind() == item_kind::file));
  return true;
}

std::optional<std::size_t> tree_controller::edited_row() {
  if (draft_) return rowOfDraft();
  rows();  // the item may have gone
  return is_renaming_ ? current_row() : std::nullopt;
}

std::string tree_controller::fault_of_title(std::string const& title) {
  item* const renamed = is_renaming_ ? current() : nullptr;
  bool const is_group = renamed != nullptr && renamed->kind() == item_kind::group;
  if (is_group) return title.empty() ? "A name is needed." : "";
  if (std::string const fault = projects::fault_of_name(title); !fault.empty()) return fault;
  item const* const folder = renamed != nullptr                   ? renamed->parent()
                             : draft_ && !draft_->alive.expired() ? draft_->folder
                                                                  : nullptr;
  if (folder == nullptr || (renamed != nullptr && renamed->own() != nullptr)) return "";
  bool const is_taken = std::any_of(
      folder->children().begin(), folder->children().end(),
      [&](auto const& child) { return child.get() != renamed && child->name() == title; });
  return is_taken ? "There is something with this name already." : "";
}

void tree_controller::title_dropped() {
  draft_.reset();
  is_renaming_ = false;
  marksDidChange();
}

void tree_controller::title_edited(std::string const& title) {
  auto const made = rowOfDraft() ? std::exchange(draft_, std::nullopt) : std::nullopt;
  draft_.reset();
  item* const of = std::exchange(is_renaming_, false) ? current() : nullptr;
  marksDidChange();
  if (made) {
    std::string const folder = made->folder->path(), path = path::join(folder, title);
    return run(
        "The " + std::string(made->is_folder ? "folder " : "file ") + quoted(printable_name(path)) +
            " could not be made.",
        [path, is_folder = made->is_folder] {
          return is_folder ? projects::make_folder(path) : projects::make_file(path);
        },
        [this, folder, path, is_folder = made->is_folder] {
          target_ = path;
          refreshFolder(folder);
          followTarget();
          if (!is_folder && owner_.showTreeFile(path, true)) owner_.focusText();
        });
  }
  if (of == nullptr || title == documents::printable(of->name())) return;
  if (of->kind() == item_kind::group) {
    of->set_name(title);
    return changeRows();
  }
  std::string const from = of->path(), folder = path::parent(from), to = path::join(folder, title);
  run(
      "The name of " + quoted(printable_name(from)) + " could not be changed to " +
          quoted(printable_name(to)) + ".",
      [from, to] { return projects::move_file(from, to); },
      [this, from, folder, to] {
        tree_.follow_move(from, to);
        owner_.fileWasMoved(from, to);
        target_ = to;
        refreshFolder(folder);
        followTarget();
      });
}

// What is done to files.

bool tree_controller::duplicate() {
  auto const paths = selectedPaths();
  for (std::string const& path : paths) {
    std::string const folder = path::parent(path);
    auto const copy = std::make_shared<std::string>();
    run(
        "The item " + quoted(printable_name(path)) + " could not be duplicated.",
        [path, folder, copy] {
          *copy = projects::path_for_copy(folder, path::name(path), false);
          return projects::copy_file(path, *copy);
        },
        [this, folder, copy] {
          target_ = *copy;
          refreshFolder(folder);
          followTarget();
        });
  }
  return !paths.empty();
}

bool tree_controller::moveToTrash() {
  auto const paths = selectedPaths();
  if (paths.empty()) return false;
  bool const is_edited = std::any_of(paths.begin(), paths.end(), [this](auto const& path) {
    return owner_.stateOfFile(path).is_edited;
  });
  platform::alert const question{
      "Do you want to move " + several(paths) + " to the trash?",
      is_edited ? "Changes that aren't saved stay in the tab." : "You can restore it from there.",
      {"Move to Trash", "Cancel"},
      1};
  if (platform::desktop::current().alerts().run(question) != 0) return true;
  for (std::string const& path : paths)
    run(
        "The item " + quoted(printable_name(path)) + " could not be moved to the trash.",
        [path] { return projects::move_to_trash(path); },
        [this, folder = path::parent(path)] {
          refreshFolder(folder);
          owner_.filesWereRemoved();
        });
  return true;
}

bool tree_controller::confirmMove(std::vector<std::string> const& paths,
                                  std::string const& folder) const {
  platform::alert const question{
      "Do you want to move " + several(paths) + " to " + quoted(printable_name(folder)) + "?",
      "The files are moved on the disk.",
      {"Move", "Cancel"},
      1};
  return platform::desktop::current().alerts().run(question) == 0;
}

// Puts files and folders into a folder on the disk.
void tree_controller::bring(std::vector<std::string> paths, std::string const& folder, bool moves) {
  for (std::string const& from : paths) {
    std::string const parent = path::parent(from);
    if (moves && parent == folder) continue;
    auto const to = std::make_shared<std::string>(path::join(folder, path::name(from)));
    run(
        "The item " + quoted(printable_name(from)) + " could not be " +
            (moves ? "moved" : "copied") + " to " + quoted(printable_name(folder)) + ".",
        [from, to, folder, moves] {
          if (moves) return projects::move_file(from, *to);
          *to = projects::path_for_copy(folder, path::name(from), true);
          return projects::copy_file(from, *to);
        },
        [this, from, to, parent, folder, moves] {
          if (moves) {
            tree_.follow_move(from, *to);
            owner_.fileWasMoved(from, *to);
            refreshFolder(parent);
          }
          target_ = *to;
          refreshFolder(folder);
          followTarget();
        });
  }
}

bool tree_controller::copyFiles(bool cut) {
  auto const paths = selectedPaths();
  if (paths.empty()) return false;
  plist::array files;
  std::string text;
  for (std::string const& path : paths) {
    files.emplace_back(path);
    text += (text.empty() ? "" : "\n") + path;
  }
  platform::desktop::current().general_pasteboard().set(
      {{std::string(platform::pasteboard_type::file_list), std::move(files)},
       {std::string(platform::pasteboard_type::text), text}});
  cut_ = cut ? paths : std::vector<std::string>();
  return true;
}

bool tree_controller::paste() {
  item* const folder = folderForNew();
  std::vector<std::string> paths;
  for (plist::value const& path : platform::desktop::current()
                                      .general_pasteboard()
                                      .get(platform::pasteboard_type::file_list)
                                      .elements())
    if (std::string const each = path.string_or(""); !each.empty()) paths.push_back(each);
  if (folder == nullptr || paths.empty()) return false;
  bool const moves = paths == cut_;
  cut_.clear();
  bring(std::move(paths), folder->path(), moves);
  return true;
}

bool tree_controller::copyPaths(bool relative) {
  auto const paths = selectedPaths();
  std::string const base = owner_.treeDirectory();
  std::string text;
  for (std::string const& path : paths) {
    bool const is_relative = relative && !base.empty();
    text += (text.empty() ? "" : "\n") + (is_relative ? projects::relative_path(path, base) : path);
  }
  if (!paths.empty())
    platform::desktop::current().general_pasteboard().set(
        {{std::string(platform::pasteboard_type::text), text}});
  return !paths.empty();
}

bool tree_controller::showInFileManager() {
  auto const paths = selectedPaths();
  if (!paths.empty()) platform::desktop::current().show_in_file_manager(paths);
  return !paths.empty();
}

}  // namespace windows
