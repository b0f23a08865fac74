#pragma once

#include "bundles/BundleManager.h"
#include "platform/picker.h"
#include "projects/BriskStringRanker.h"
#include "windows/program_actions.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace windows {

/// All keys and what they do, one a row: those of menus and bindings, then those of bundle items.
/// They are found by letters of what they do, or by the key: "ctrl+d", "F7". A row that is chosen
/// is performed. Made for one use; the manager must outlive it. Main thread only.
class shortcut_list final : public platform::picker_source {
 public:
  /// `first` and those after it perform what is chosen. Dynamic menus must have been filled in.
  shortcut_list(BundleManager& manager, std::vector<platform::menu_item> menus,
                plist::dictionary const& bindings, platform::responder& first);

  static platform::picker_request request() { return {.title = "Keyboard Shortcuts"}; }
  /// False if nothing performs it.
  bool accept(std::size_t row);

  // platform::picker_source
  void set_filter(std::string const& text) override;
  void take_key(platform::key_event const&) override {}
  std::size_t count() const override { return shown_.size(); }
  platform::picker_row row(std::size_t index) const override;
  std::string note() const override;

 private:
  struct shortcut {
    std::string title, detail;
    std::vector<std::string> keys;
    std::string name_of_keys;  // in small letters, without blanks
    program_action action;
    std::shared_ptr<BundleItem> item;  // else the action
    std::optional<BriskStringRanker> ranker;
  };

  void add(shortcut made);
  void add_items(BundleManager& manager);

  BundleManager& manager_;
  platform::responder& first_;
  std::vector<shortcut> all_;
  std::vector<std::size_t> shown_;  // of all_
  std::u16string prepared_;
};

}  // namespace windows
