#pragma once

#include "platform/responder.h"
#include "platform/tree/tree_panel.h"
#include "projects/background.h"
#include "projects/file_operations.h"
#include "projects/file_tree.h"
#include "projects/tree_rows.h"
#include "windows/sidebar/tree_owner.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace windows {

/// The logic of the tree in a side bar: which rows there are, what keys and the mouse do with them,
/// and what the user does to files there. What a disk may keep waiting is done by other threads;
/// the tree then shows what has come of it. As a responder it performs the actions for the tree.
///
/// Selected items are marked in the tree itself. An item that goes takes its marks along, so items
/// aren't held on to while events are handled: questions are asked by path.
class tree_controller final : public platform::tree_client, public platform::responder {
 public:
  /// Both must outlive it.
  tree_controller(tree_owner& owner, projects::file_tree& tree);
  ~tree_controller() override;

  /// The items have changed, by whatever cause.
  void treeDidChange();
  /// Tabs have come or gone, or their documents have changed.
  void marksDidChange();
  /// Opens the folders on the way to a file or folder, and selects it once they have been read.
  /// False if it can't be in the tree.
  bool reveal(std::string const& path);
  /// From top to bottom, without what is in another one.
  std::vector<std::string> selectedPaths();
  /// Whether something that the user does to files isn't done yet.
  bool is_busy() const { return background_.is_busy(); }

  // tree_client
  void set_host(platform::tree_host* host) override { host_ = host; }
  std::size_t count() override;
  platform::tree_row row(std::size_t index) override;
  bool key_down(platform::key_event const& event) override;
  void mouse_down(std::size_t row, std::uint32_t modifiers) override;
  void mouse_up(std::size_t row, std::uint32_t modifiers) override;
  void double_click(std::size_t row) override;
  void mouse_down_outside() override;
  void toggle(std::size_t row, bool all) override;
  std::vector<platform::menu_item> context_menu(std::optional<std::size_t> row) override;
  std::optional<std::size_t> current_row() override;
  std::optional<std::size_t> edited_row() override;
  std::string fault_of_title(std::string const& title) override;
  void title_edited(std::string const& title) override;
  void title_dropped() override;
  plist::dictionary drag_content() override;
  platform::drop_answer dragging_updated(platform::tree_drop const& drop) override;
  bool perform_drop(platform::tree_drop const& drop) override;
  void focus_changed() override { marksDidChange(); }

 private:
  using item = projects::project_item;
  /// A file or folder that the user is giving its name.
  struct draft {
    std::weak_ptr<char> alive;  // of the folder
    item* folder = nullptr;
    bool is_folder = false;
  };
  /// Where things are put: into a folder on the disk, or into a group or, without an item, among
  /// the roots.
  struct target {
    item* folder = nullptr;
    item* group = nullptr;
    std::size_t index = 0;  // in the group
  };

  projects::tree_rows& rows();
  void settle();
  std::optional<std::size_t> rowOfDraft();
  /// Of a row as it is shown; null for that of a draft.
  item* itemAt(std::size_t row);
  std::optional<std::size_t> shownRow(item const& of);
  void changeRows();

  void setCurrent(item* to);
  void setAnchor(item* to);
  void selectOnly(std::size_t row);
  void selectTo(std::size_t row);
  void goTo(std::size_t row, bool extends);
  void deselectAll();
  void setOpen(item& of, bool open);
  bool typed(std::u16string const& characters);
  bool goOut(std::uint32_t modifiers);
  bool goIn(std::uint32_t modifiers);
  bool openCurrent();
  void followTarget();
  std::string detailOf(item const& of);

  void add(char const* selector, std::function<bool()> action);
  void addActions();
  void addFileActions();
  void addGroupActions();
  item* current();
  std::vector<item*> const& selected() { return rows(), selected_; }
  void setSelected(item& of, bool selected);
  /// What the selection is of, without what is in another part of it.
  std::vector<item*> topmostSelected();
  item* onlySelected();
  item* folderForNew();
  bool beginDraft(bool folder);
  bool beginRename();
  bool duplicate();
  bool moveToTrash();
  bool removeReferences();
  bool newGroup(bool of_selection);
  bool addFiles();
  bool copyFiles(bool cut);
  bool paste();
  bool copyPaths(bool relative);
  bool showInFileManager();
  bool collapseAll();
  target targetOf(item* at, platform::drop_place place);
  bool accepts(target const& to, std::vector<std::string> const& paths, bool from_tree,
               bool copies);
  bool confirmMove(std::vector<std::string> const& paths, std::string const& folder) const;
  void bring(std::vector<std::string> paths, std::string const& folder, bool moves);
  void run(std::string title, std::function<projects::operation_error()> work,
           std::function<void()> done);
  void refreshFolder(std::string const& path);
  void tell(std::string const& title, std::string const& text) const;

  tree_owner& owner_;
  projects::file_tree& tree_;
  projects::tree_rows rows_;
  projects::background background_;
  platform::tree_host* host_ = nullptr;
  // These may have gone when rows_ isn't valid.
  std::vector<item*> selected_;  // in any order
  item* current_ = nullptr;      // pinned
  item* anchor_ = nullptr;       // pinned
  std::size_t current_row_ = 0;
  std::optional<draft> draft_;
  bool is_renaming_ = false;  // the current item
  std::string typed_;
  double typed_at_ = 0;
  double opened_at_ = 0;  // when the user last opened a folder
  std::unique_ptr<platform::timer> opened_timer_;
  std::string target_;            // to be selected when it comes
  std::vector<std::string> cut_;  // files that pasting moves
  std::shared_ptr<char> const lives_ = std::make_shared<char>();
};

}  // namespace windows
