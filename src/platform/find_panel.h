#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace platform {

/// What the fields and check boxes of the find panel hold.
struct find_panel_values {
  std::string find, replace;  // UTF-8
  bool regular_expression = false, ignore_case = false, wrap_around = false;
  bool whole_words = false, in_selection = false;

  friend bool operator==(find_panel_values const&, find_panel_values const&) = default;
};

/// What the panel's buttons do. Menus hand the numbers to performFindAction:.
enum class find_action {
  find_next = 1,
  find_previous,
  replace,
  replace_and_find,
  replace_all,
  count
};

class find_panel_delegate {
 public:
  virtual ~find_panel_delegate() = default;

  /// A button, or a key that stands for one. `modifiers` as in platform/event.h.
  virtual void findPanelAction(find_action action, std::uint32_t modifiers, bool by_key) = 0;
  /// The values have changed, maybe in the midst of typing.
  virtual void findPanelDidChange() = 0;
  virtual void findPanelDidClose() = 0;
};

/// The panel in which one says what to find and to replace: a bar below the text of the window for
/// which it was asked last, in which one can go on working. Main thread only.
class find_panel {
 public:
  virtual ~find_panel() = default;

  virtual void set_delegate(find_panel_delegate* delegate) = 0;  // not owned
  /// Shows it, with the keys going to the find field or the replace field.
  virtual void order_front(bool replace_field) = 0;
  virtual void close() = 0;
  virtual bool is_visible() const = 0;

  virtual find_panel_values values() const = 0;
  virtual void set_values(find_panel_values const& v) = 0;  // the delegate is not notified
  /// Earlier entries of the fields, latest first.
  virtual void set_histories(std::vector<std::string> const& find,
                             std::vector<std::string> const& replace) = 0;
  virtual void set_status(std::string const& text) = 0;
  /// Which of how many matches is selected, in words.
  virtual void set_count(std::string const& text) = 0;
  /// What the selected match would be replaced by; nothing is shown if empty.
  virtual void set_preview(std::string const& text) = 0;
  /// Marks the find field from this unit on as wrong; its whole text is right with npos.
  virtual void mark_error(std::size_t offset) = 0;
};

}  // namespace platform
