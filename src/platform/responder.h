#pragma once

#include "platform/string_table.h"
#include "plist/value.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

struct menu_item;

/// An object that performs actions by name. Menus, key bindings, macros and scripts all
/// come in here: a selector such as "undo:" is looked up in the object's own table, and then in
/// those of the objects after it (view, window controller, application).
class responder {
 public:
  /// Gets the argument, gives the result. An action that could not be done gives false; any other
  /// result counts as done.
  using method = std::function<plist::value(plist::value const& argument)>;

  virtual ~responder() = default;

  responder* nextResponder() const { return next_; }
  void setNextResponder(responder* next) { next_ = next; }

  /// Whether this object itself knows `selector`.
  virtual bool respondsToSelector(std::string_view selector) const;

  /// All names that this object itself knows, in order; those of queries are among them.
  virtual std::vector<std::string> selectors() const;

  /// Runs the method, which must be known here; a result of false makes the desktop beep. An
  /// unknown name gives nothing, without a beep.
  virtual plist::value performSelectorWithObject(std::string_view selector,
                                                 plist::value const& object);

  /// Performs the selector here or at the next responder that knows it; false if none does.
  virtual bool tryToPerformWith(std::string_view selector, plist::value const& object);

  /// The variables that this object itself provides to commands: names such as QN_FILEPATH,
  /// strings.
  virtual plist::dictionary environmentVariables() const { return {}; }

  /// Sets title, check mark and enabled state of an item whose selector this object knows. For
  /// "undo:" the names asked for are "canUndo", "undoMenuTitle" and "undoIsChecked:".
  virtual void validateMenuItem(menu_item& item);

 protected:
  /// Enters `selector` in the table; the first entry of a name wins.
  void addMethod(std::string selector, method m);

  /// Runs the method of this object as performSelectorWithObject does; nothing when it is unknown.
  std::optional<plist::value> performOwn(std::string_view selector, plist::value const& object);

  /// The result of a query such as "canUndo"; nothing when the name isn't known.
  virtual plist::value query(std::string_view name, plist::value const& argument);

 private:
  // Shared: a method may end the object that owns the table, as closing a window does.
  string_table<std::shared_ptr<method const>> methods_;
  responder* next_ = nullptr;
};

/// The object that would perform `selector`, starting at `first`; null if none knows it.
responder* target_for_selector(responder* first, std::string_view selector);

}  // namespace platform
