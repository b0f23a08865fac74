#pragma once

#include <thread>

#include "headless/headless_desktop.h"
#include "path/path.h"
#include "path/temporary_folder.h"
#include "platform/own_defaults.h"
#include "test.h"
#include "windows/sidebar/tree_controller.h"

/// A tree without a window, over a real folder: what would be in the window is remembered here.
class tree_without_window : public testing::Test,
                            public windows::tree_owner,
                            public platform::tree_host {
 protected:
  tree_without_window() {
    tree.did_change = [this](auto*) { controller.treeDidChange(); };
    controller.set_host(this);
  }
  ~tree_without_window() override { controller.set_host(nullptr); }

  /// Until all that is under way has been answered.
  void wait() {
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while ((tree.is_busy() || controller.is_busy()) && std::chrono::steady_clock::now() < end) {
      desktop.loop().run_posted();
      std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    ASSERT_FALSE(tree.is_busy() || controller.is_busy());
  }
  void open_folder() {
    tree.add_files({folder.path()}, nullptr, 0);
    tree.set_expanded(*tree.roots().front(), true);
    wait();
  }
  /// The rows but for the folder's, a line each: two blanks a level, "/" after what opens, "*"
  /// after what is selected and "<" where the keyboard is.
  std::string drawn() {
    std::string text;
    bool const is_folder = tree.roots().size() == 1 && tree.roots()[0]->path() == folder.path();
    for (std::size_t n = 0; n < controller.count(); ++n) {
      platform::tree_row const row = controller.row(n);
      if (row.depth == 0 && is_folder) continue;
      text += std::string(2 * (row.depth - (is_folder ? 1 : 0)), ' ') + row.title +
              (row.can_open ? "/" : "") + (row.is_missing ? "?" : "") +
              (row.is_selected ? "*" : "") + (row.is_current ? "<" : "") + "\n";
    }
    return text;
  }
  std::size_t row_of(std::string const& title) {
    for (std::size_t n = 0; n < controller.count(); ++n)
      if (controller.row(n).title == title) return n;
    ADD_FAILURE() << "no row " << title << " in\n" << drawn();
    return 0;
  }
  void press(char16_t key, std::uint32_t modifiers = 0) {
    controller.key_down({std::u16string(1, key), std::u16string(1, key), modifiers, {}});
    wait();
  }
  void click(std::string const& title, std::uint32_t modifiers = 0) {
    std::size_t const row = row_of(title);
    controller.mouse_down(row, modifiers);
    controller.mouse_up(row, modifiers);
    wait();
  }
  void select(std::string const& title, std::uint32_t modifiers = 0) {
    controller.mouse_down(row_of(title), modifiers);
  }
  bool perform(char const* selector) {
    bool const done = !(controller.performSelectorWithObject(selector, {}) == plist::value(false));
    wait();
    return done;
  }
  /// What the field for a title is given, and left with by Return.
  void name(std::string const& title) {
    edited.reset();
    controller.title_edited(title);
    wait();
  }
  /// Drops what is dragged from the tree, or `files`.
  platform::drop_answer drop(std::string const& title, platform::drop_place place,
                             std::optional<strings> files = {}, bool copies = false) {
    plist::array list;
    for (std::string const& each : files.value_or(strings())) list.emplace_back(each);
    headless::memory_pasteboard content;
    content.set(files ? plist::dictionary{{"files", list}} : controller.drag_content());
    platform::tree_drop const what{.row = title.empty() ? controller.count() : row_of(title),
                                   .place = place,
                                   .operations = platform::drag_operation::copy,
                                   .is_from_this_view = !files,
                                   .wants_copy = copies,
                                   .content = content};
    auto const answer = controller.dragging_updated(what);
    EXPECT_EQ(controller.perform_drop(what), answer.operation != 0);
    wait();
    return answer;
  }

  // tree_owner
  file_state stateOfFile(std::string const& path) const override {
    return {false, edited_files.contains(path), false};
  }
  bool showTreeFile(std::string const& path, bool keeps) override {
    shown.push_back(std::filesystem::path(path).filename().string() + (keeps ? "!" : ""));
    return true;
  }
  void focusText() override { ++text_focused; }
  void fileWasMoved(std::string const& from, std::string const& to) override {
    moved.push_back(path::name(from) + " " + to.substr(folder.path().size() + 1));
  }
  void filesWereRemoved() override { ++removals; }
  std::string treeDirectory() const override { return folder.path(); }
  std::vector<platform::menu_item> treeMenu() override { return {}; }
  // tree_host
  void rows_changed() override {}
  void show_row(std::size_t row) override { EXPECT_LT(row, controller.count()); }
  std::size_t page_size() const override { return 3; }
  void edit_title(std::size_t row, std::string const& title, std::size_t selected) override {
    EXPECT_LT(row, controller.count());
    edited = title + ":" + std::to_string(selected);
  }
  void end_editing() override { edited.reset(); }
  void client_goes() override {}

  own_defaults const settings_;
  temporary_folder folder, outside;
  headless::headless_desktop desktop;
  projects::file_tree tree{desktop.loop(), desktop.files()};
  windows::tree_controller controller{*this, tree};
  strings shown, moved;
  std::set<std::string> edited_files;
  std::optional<std::string> edited;
  int text_focused = 0, removals = 0;
};
