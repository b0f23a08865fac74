#pragma once

#include <cstdint>
#include <deque>
#include <limits>
#include <memory>
#include <optional>

#include "actions/clipboard.h"

/// The clipboard with its history: a stack of what was copied here, and of the texts that other
/// programs had on the clipboard when this one became active or was about to paste. The user steps
/// through it with previousClip() and nextClip(), which put an earlier clip on the clipboard again.
///
/// What a password manager marks as secret is pasted but never kept. Neither is a clip of more than
/// a quarter of what the history may hold. The oldest clips go when there are more than
/// `WynClipboardHistoryCount` of them, or when they are larger than `WynClipboardHistoryBytes` (of
/// UTF-16) together. Main thread only.
class WynPasteboardManager {
 public:
  using clip_pointer = std::shared_ptr<actions::text_clip const>;

  static WynPasteboardManager& sharedInstance();

  /// The newest clip from now on, on the clipboard too.
  void storeClip(actions::text_clip clip);
  /// What the clipboard holds; nothing when that is no text.
  std::optional<actions::text_clip> currentClip();
  /// A step towards newer, or older, clips. At the end of the stack that is where it was.
  std::optional<actions::text_clip> nextClip() { return step(false); }
  std::optional<actions::text_clip> previousClip() { return step(true); }
  /// Puts the clip with that place in the stack on the clipboard. False if there is none.
  bool selectClip(std::size_t index);
  /// Whether the stack has any; what is on the clipboard isn't asked for.
  bool hasClip() const { return !state_.stack.empty(); }

  /// Takes in what another program has put on the clipboard since the last look. Its owner keeps
  /// it: other forms of it, such as pictures, stay available. Costs nothing if nothing has changed.
  void checkClipboard();

  /// Newest first.
  std::deque<clip_pointer> const& stack() const { return state_.stack; }
  /// The place in the stack of what is pasted now, if it has one.
  std::size_t pasteIndex() const { return state_.pasteIndex; }
  /// Forgets all clips. The clipboard itself stays as it is.
  void clear();
  /// Adds clips of an earlier run, newest first, as the oldest ones.
  void addEarlierClips(std::vector<actions::text_clip> clips);
  /// Another number for each change of the stack.
  std::uint64_t version() const { return version_; }

  /// The history at some time, to go back to.
  struct memento {
    std::deque<clip_pointer> stack;
    std::size_t pasteIndex = 0;
    clip_pointer current;  ///< on the clipboard; null if it is to be asked
    /// The clipboard's, when it was looked at.
    std::uint64_t changeCount = std::numeric_limits<std::uint64_t>::max();
    bool isPrivate = false;       ///< the clipboard itself isn't touched
    bool hasPrivateClip = false;  ///< nor looked at any more
  };
  memento const& currentMemento() const { return state_; }
  void setMemento(memento former);
  /// From now on, until a memento is set, what is copied stays off the clipboard.
  void beginPrivateUse() { state_.isPrivate = true; }

 private:
  std::optional<actions::text_clip> step(bool towards_older);
  bool isInStack() const;
  bool push(clip_pointer clip);
  void declare(actions::text_clip const& clip);

  memento state_;
  std::uint64_t version_ = 0;
};
