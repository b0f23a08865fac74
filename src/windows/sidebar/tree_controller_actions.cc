#include <algorithm>

#include "path/path.h"
#include "platform/desktop.h"
#include "windows/sidebar/tree_controller.h"

namespace windows {
namespace {

using projects::item_kind;

}  // namespace

void tree_controller::add(char const* selector, std::function<bool()> action) {
  addMethod(selector,
            [action = std::move(action)](plist::value const&) { return plist::value(action()); });
}

void tree_controller::addActions() {
  add("projectOpenFiles:", [this] {
    bool done = false;
    for (std::string const& path : selectedPaths()) done = owner_.showTreeFile(path, true) || done;
    if (done) owner_.focusText();
    return done;
  });
  add("canProjectOpenFiles", [this] {
    return std::any_of(selected().begin(), selected().end(),
                       [](item* each) { return each->kind() == item_kind::file; });
  });
  add("projectCopyPath:", [this] { return copyPaths(false); });
  add("projectCopyRelativePath:", [this] { return copyPaths(true); });
  add("projectShowInFileManager:", [this] { return showInFileManager(); });
  for (char const* query :
       {"canProjectCopyPath", "canProjectCopyRelativePath", "canProjectShowInFileManager",
        "canProjectDuplicateFiles", "canProjectMoveToTrash"})
    add(query, [this] { return !selectedPaths().empty(); });
  add("copy:", [this] { return copyFiles(false); });
  add("cut:", [this] { return copyFiles(true); });
  add("paste:", [this] { return paste(); });
  for (char const* query : {"canCopy", "canCut"})
    add(query, [this] { return !selectedPaths().empty(); });
  add("canPaste", [this] { return folderForNew() != nullptr; });
  add("selectAll:", [this] {
    if (count() == 0) return false;
    setAnchor(itemAt(0));
    return selectTo(count() - 1), true;
  });
  add("projectCollapseAll:", [this] { return collapseAll(); });
  add("projectRefresh:", [this] { return tree_.refresh(), true; });
}

void tree_controller::addFileActions() {
  add("projectNewFile:", [this] { return beginDraft(false); });
  add("projectNewFolder:", [this] { return beginDraft(true); });
  for (char const* query : {"canProjectNewFile", "canProjectNewFolder"})
    add(query, [this] { return folderForNew() != nullptr; });
  add("projectRename:", [this] { return beginRename(); });
  add("canProjectRename", [this] { return onlySelected() != nullptr; });
  add("projectDuplicateFiles:", [this] { return duplicate(); });
  add("projectMoveToTrash:", [this] { return moveToTrash(); });
}

void tree_controller::addGroupActions() {
  add("projectNewGroup:", [this] { return newGroup(false); });
  add("projectGroupFiles:", [this] { return newGroup(true); });
  add("projectAddFiles:", [this] { return addFiles(); });
  add("projectRemoveFiles:", [this] { return removeReferences(); });
  auto const are_own = [this] {
    return !selected().empty() && std::all_of(selected().begin(), selected().end(),
                                              [](item* each) { return each->own() != nullptr; });
  };
  for (char const* query : {"canProjectRemoveFiles", "canProjectGroupFiles"}) add(query, are_own);
  // What the Delete key does: a file goes to the trash, what the user has put in the project out of
  // the project alone.
  add("projectRemove:", [this, are_own] { return are_own() ? removeReferences() : moveToTrash(); });
}

bool tree_controller::collapseAll() {
  for (auto const& root : tree_.roots()) {
    projects::visit_items(root->children(), [&](item& each) {
      if (each.is_expanded) setOpen(each, false);
      return true;
    });
    if (tree_.roots().size() > 1) setOpen(*root, false);
  }
  return true;
}

// Groups, and what is in the project itself.

bool tree_controller::newGroup(bool of_selection) {
  std::vector<item*> const chosen = of_selection ? topmostSelected() : std::vector<item*>();
  target const at = targetOf(of_selection && !chosen.empty() ? chosen.front() : current(),
                             platform::drop_place::above);
  deselectAll();
  item& made = tree_.add_group("New Group", at.group, at.index);
  if (!chosen.empty()) tree_.move(chosen, &made, 0);
  made.is_expanded = true;
  changeRows();
  if (auto const row = shownRow(made)) {
    goTo(*row, false);
    beginRename();
  }
  return true;
}

bool tree_controller::addFiles() {
  platform::open_request request;
  request.title = "Add Files to Project";
  request.directory = owner_.treeDirectory();
  auto const paths = platform::desktop::current().panels().run_open(request);
  if (paths.empty()) return true;
  target const at = targetOf(current(), platform::drop_place::below);
  tree_.add_files(paths, at.group, at.index);
  return true;
}

bool tree_controller::removeReferences() {
  auto const chosen = topmostSelected();
  bool removed = false;
  for (item* const each : chosen) {
    if (each->own() == nullptr) continue;
    // Its marks go with it, and what is in it.
    rows();
    tree_.remove(*each);
    removed = true;
  }
  if (removed) owner_.filesWereRemoved();
  return removed;
}

// Dragging.

plist::dictionary tree_controller::drag_content() {
  plist::array files;
  for (std::string const& path : selectedPaths()) files.emplace_back(path);
  return {{std::string(platform::pasteboard_type::file_list), std::move(files)}};
}

tree_controller::target tree_controller::targetOf(item* at, platform::drop_place place) {
  using platform::drop_place;
  if (at == nullptr || place == drop_place::end) return {nullptr, nullptr, tree_.roots().size()};
  if (place == drop_place::on && at->kind() == item_kind::folder) return {at, nullptr, 0};
  if (place == drop_place::on && at->kind() == item_kind::group)
    return {nullptr, at, at->children().size()};
  // Below what is open is within it.
  if (place == drop_place::below && at->is_expanded && at->kind() == item_kind::group)
    return {nullptr, at, 0};
  if (at->own() == nullptr) {
    item* folder = at->parent();
    return {folder, nullptr, 0};
  }
  auto const& siblings = at->parent() != nullptr ? at->parent()->children() : tree_.roots();
  auto const found = std::find_if(siblings.begin(), siblings.end(),
                                  [&](auto const& each) { return each.get() == at; });
  auto const index = static_cast<std::size_t>(found - siblings.begin());
  return {nullptr, at->parent(), index + (place == drop_place::above ? 0 : 1)};
}

namespace {

std::vector<std::string> paths_in(platform::pasteboard_content const& content) {
  std::vector<std::string> paths;
  for (plist::value const& each : content.get(platform::pasteboard_type::file_list).elements())
    if (std::string const path = each.string_or(""); !path.empty() && path.front() == '/')
      paths.push_back(path);
  return paths;
}

}  // namespace

bool tree_controller::accepts(target const& to, std::vector<std::string> const& paths,
                              bool from_tree, bool copies) {
  bool const has_own = from_tree && std::any_of(selected().begin(), selected().end(),
                                                [](item* each) { return each->own() != nullptr; });
  if (to.folder == nullptr) return !paths.empty() || has_own;
  // What the user has put in the project isn't moved on the disk by moving it in the tree.
  if (paths.empty() || (has_own && !copies)) return false;
  std::string const folder = to.folder->path();
  return std::none_of(paths.begin(), paths.end(), [&](std::string const& path) {
    bool const is_into_itself = folder == path || folder.starts_with(path + "/");
    return is_into_itself || (from_tree && !copies && path::parent(path) == folder);
  });
}

platform::drop_answer tree_controller::dragging_updated(platform::tree_drop const& drop) {
  item* const at = drop.place == platform::drop_place::end ? nullptr : itemAt(drop.row);
  target const to = targetOf(at, drop.place);
  bool const copies = drop.wants_copy;
  if (!accepts(to, paths_in(drop.content), drop.is_from_this_view, copies)) return {};
  bool const moves = drop.is_from_this_view && !copies;
  std::uint32_t const operation =
      moves ? platform::drag_operation::generic : platform::drag_operation::copy;
  if (to.folder != nullptr)
    return {operation, shownRow(*to.folder).value_or(0), platform::drop_place::on};
  return {operation, drop.row, drop.place};
}

bool tree_controller::perform_drop(platform::tree_drop const& drop) {
  item* const at = drop.place == platform::drop_place::end ? nullptr : itemAt(drop.row);
  target const to = targetOf(at, drop.place);
  auto const paths = paths_in(drop.content);
  bool const copies = drop.wants_copy;
  if (!accepts(to, paths, drop.is_from_this_view, copies)) return false;
  if (to.folder != nullptr) {
    std::string const folder = to.folder->path();
    bool const moves = drop.is_from_this_view && !copies;
    if (moves && !confirmMove(paths, folder)) return true;
    return bring(paths, folder, moves), true;
  }
  std::vector<item*> own;
  if (drop.is_from_this_view) own = topmostSelected();
  std::erase_if(own, [](item* each) { return each->own() == nullptr; });
  if (own.empty()) {
    tree_.add_files(paths, to.group, to.index);
  } else {
    tree_.move(own, to.group, to.index);
  }
  return true;
}

// The menu.

std::vector<platform::menu_item> tree_controller::context_menu(std::optional<std::size_t> row) {
  if (row) {
    item* const at = itemAt(*row);
    if (at != nullptr && !at->is_selected) selectOnly(*row);
  } else {
    deselectAll();
    marksDidChange();
  }
  return owner_.treeMenu();
}

}  // namespace windows
