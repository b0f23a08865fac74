#pragma once

#include "keys/key_binding_target.h"
#include "platform/event.h"
#include "plist/value.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

/// Turns keys into actions by the user's key bindings. Main thread only.
///
/// A binding file is a property list from key string to an action, to an array of actions that are
/// performed one after the other, or to a dictionary in which the next key is looked up. In an
/// array, "insertText:" has the element after it inserted. The action "noop:" does nothing, which
/// takes a key's binding away.
class WynKeyBindingManager {
 public:
  /// With the bindings of allKeyBindingFiles(); faults in these are reported on standard error.
  static WynKeyBindingManager& sharedInstance();
  /// With the bindings of these files; under a key that comes twice the later file holds.
  explicit WynKeyBindingManager(std::vector<std::string> const& files);

  /// The files that exist: the program's own, then "KeyBindings.dict" of each library domain from
  /// the system's to the user's.
  static std::vector<std::string> allKeyBindingFiles();

  plist::dictionary const& keyBindings() const { return keyBindings_; }

  /// The action of a key that is bound to a single one.
  std::optional<std::string> selectorForEvent(platform::key_event const& event) const;

  /// Performs what the key is bound to, or hands it to the platform's text input. False when the
  /// only action bound to it is one that is unknown.
  bool interpretKeyEventForTextView(platform::key_event const& event,
                                    keys::key_binding_target& view);

  /// Drops the first keys of a binding over several, and says whether there were any. Must be
  /// called before a view goes that has seen a key.
  bool forgetTextView(keys::key_binding_target const& view) { return pending_.erase(&view) > 0; }

 private:
  void performAll(plist::array const& actions, keys::key_binding_target& view);

  plist::dictionary keyBindings_;
  struct begun {
    plist::value table;  // where the next key is looked up
    std::string keys;    // as they are shown
  };
  std::map<keys::key_binding_target const*, begun> pending_;
};
