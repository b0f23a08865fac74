#include "actions/WynPasteboardManager.h"

#include <algorithm>

#include "platform/decomposition.h"
#include "platform/desktop.h"
#include "settings/store.h"

namespace {

namespace type = platform::pasteboard_type;

platform::pasteboard& pasteboard() {
  return platform::desktop::current().general_pasteboard();
}

std::size_t limit(char const* key) {
  return static_cast<std::size_t>(std::max<std::int64_t>(0, settings::store().integer(key)));
}

std::size_t most_in_stack() {
  return limit("WynClipboardHistoryCount");
}

std::size_t bytes_in_stack() {
  return limit("WynClipboardHistoryBytes");
}

std::size_t bytes_of(actions::text_clip const& clip) {
  return clip.text.size() * sizeof(char16_t);
}

std::size_t units_in_clip() {
  return most_in_stack() > 0 ? bytes_in_stack() / 4 / sizeof(char16_t) : 0;
}

bool can_be_kept(actions::text_clip const& clip) {
  return !clip.text.empty() && clip.text.size() <= units_in_clip();
}

bool are_the_same(actions::text_clip const& a, actions::text_clip const& b) {
  return a.rectangular == b.rectangular && a.text == b.text;
}

}  // namespace

// Never destroyed, since it is saved when the display is lost.
WynPasteboardManager& WynPasteboardManager::sharedInstance() {
  static auto& instance = *new WynPasteboardManager;
  return instance;
}

bool WynPasteboardManager::isInStack() const {
  return state_.current != nullptr && state_.pasteIndex < state_.stack.size() &&
         state_.stack[state_.pasteIndex] == state_.current;
}

bool WynPasteboardManager::push(clip_pointer clip) {
  if (!can_be_kept(*clip)) return false;
  auto& stack = state_.stack;
  stack.push_front(std::move(clip));
  if (stack.size() > most_in_stack()) stack.resize(most_in_stack());
  std::size_t const most = bytes_in_stack();
  std::size_t bytes = 0, kept = 0;
  while (kept < stack.size() && (bytes += bytes_of(*stack[kept])) <= most) ++kept;
  stack.resize(kept);
  state_.pasteIndex = 0;
  state_.current = stack.front();
  ++version_;
  return true;
}

void WynPasteboardManager::declare(actions::text_clip const& clip) {
  if (state_.isPrivate) {
    state_.hasPrivateClip = true;
    return;
  }
  pasteboard().set(actions::pasteboard_types_of(clip));
  state_.changeCount = pasteboard().change_count();
}

void WynPasteboardManager::storeClip(actions::text_clip clip) {
  checkClipboard();
  auto const shared = std::make_shared<actions::text_clip const>(std::move(clip));
  // What is too large for the stack isn't held twice: the clipboard has it.
  if (!push(shared)) state_.current = state_.isPrivate ? shared : nullptr;
  declare(*shared);
}

void WynPasteboardManager::checkClipboard() {
  if (state_.hasPrivateClip || pasteboard().change_count() == state_.changeCount) return;
  state_.changeCount = pasteboard().change_count();
  state_.current = nullptr;
  if (pasteboard().get(type::secret).boolean_or(false)) return;
  auto clip = actions::clip_of(pasteboard(), units_in_clip());
  if (!clip || !can_be_kept(*clip)) return;
  bool const is_own = clip->rectangular || clip->origin || pasteboard().get(type::quirnote);
  if (!is_own && settings::store().integer("DisableClipboardPrecomposing") == 0)
    clip->text = unicode::compose(std::move(clip->text));
  // Some desktops report a change of what this program has put there itself.
  auto const& stack = state_.stack;
  if (state_.pasteIndex < stack.size() && are_the_same(*clip, *stack[state_.pasteIndex]))
    state_.current = stack[state_.pasteIndex];
  else
    push(std::make_shared<actions::text_clip const>(std::move(*clip)));
}

std::optional<actions::text_clip> WynPasteboardManager::currentClip() {
  checkClipboard();
  if (state_.current != nullptr) return *state_.current;
  return actions::clip_of(pasteboard());
}

// What is on the clipboard but not in the stack counts as newer than all that is.
std::optional<actions::text_clip> WynPasteboardManager::step(bool towards_older) {
  checkClipboard();
  if (isInStack()) {
    std::size_t const at = state_.pasteIndex;
    selectClip(towards_older ? std::min(at + 1, state_.stack.size() - 1)
                             : at - std::min<std::size_t>(at, 1));
  } else if (towards_older) {
    selectClip(0);
  }
  return currentClip();
}

bool WynPasteboardManager::selectClip(std::size_t index) {
  if (index >= state_.stack.size()) return false;
  state_.pasteIndex = index;
  state_.current = state_.stack[index];
  declare(*state_.current);
  return true;
}

void WynPasteboardManager::clear() {
  state_.stack.clear();
  state_.pasteIndex = 0;
  if (!state_.hasPrivateClip) state_.current = nullptr;
  ++version_;
}

void WynPasteboardManager::addEarlierClips(std::vector<actions::text_clip> clips) {
  std::size_t bytes = 0;
  for (auto const& clip : state_.stack) bytes += bytes_of(*clip);
  for (actions::text_clip& clip : clips) {
    bytes += bytes_of(clip);
    if (state_.stack.size() >= most_in_stack() || bytes > bytes_in_stack()) break;
    if (can_be_kept(clip))
      state_.stack.push_back(std::make_shared<actions::text_clip const>(std::move(clip)));
  }
  ++version_;
}

void WynPasteboardManager::setMemento(memento former) {
  state_ = std::move(former);
  ++version_;
}
