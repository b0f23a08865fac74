#include "actions/WynPasteboardManager.h"
#include "platform/desktop.h"
#include "platform/utf.h"
#include "textview/WynTextView.h"
#include "typing/line_indenter.h"

#include <algorithm>

// Copying, and pasting from the clipboard's history.

namespace {

constexpr std::size_t title_units = 120, preview_units = 4000;

// At most so many units, with no half of a surrogate pair at the end.
std::u16string_view beginning(std::u16string_view text, std::size_t most) {
  if (text.size() <= most) return text;
  bool const cuts_pair = (text[most - 1] & 0xfc00) == 0xd800;
  return text.substr(0, most - (cuts_pair ? 1 : 0));
}

// The first line with anything on it, without its indentation.
std::u16string title_of(std::u16string_view text) {
  std::size_t const begin = text.find_first_not_of(u" \t\n");
  if (begin == text.npos) return u"(blanks)";
  std::size_t const end = text.find(u'\n', begin);
  std::u16string title(beginning(text.substr(begin, end - begin), title_units));
  std::replace(title.begin(), title.end(), u'\t', u' ');
  return title;
}

platform::clip_entry entry_of(actions::text_clip const& clip) {
  platform::clip_entry entry;
  entry.title = unicode::to_utf8(title_of(clip.text));
  entry.preview = unicode::to_utf8(beginning(clip.text, preview_units));
  std::ptrdiff_t const breaks = std::count(clip.text.begin(), clip.text.end(), u'\n');
  std::ptrdiff_t const lines = breaks + (clip.text.ends_with(u'\n') ? 0 : 1);
  if (lines > 1 || clip.rectangular)
    entry.remark = std::to_string(lines) + (lines == 1 ? " line" : " lines");
  if (clip.rectangular) entry.remark = "rectangle, " + entry.remark;
  return entry;
}

}  // namespace

// Before the plain ones, which don't know the language.
void WynTextView::addClipboardMethods() {
  actions_.add_action([this](text::view*) { return indenter_->copy(); }, "copy:");
  actions_.add_action(
      [this](text::view* view) {
        if (!indenter_->copy()) return false;
        view->erase_selection();
        return true;
      },
      "cut:");
  auto& history = WynPasteboardManager::sharedInstance();
  actions_.add_action(
      [this, &history](text::view*) { return indenter_->paste(history.currentClip()); }, "paste:");
  actions_.add_action(
      [this, &history](text::view*) { return indenter_->paste(history.nextClip()); }, "pasteNext:");
  actions_.add_action(
      [this, &history](text::view*) { return indenter_->paste(history.previousClip()); },
      "pastePrevious:");
  addMethod("orderFrontPasteboardPanel:",
            [this](plist::value const&) { return plist::value(pasteFromHistory()); });
  for (char const* name : {"canPasteNext", "canPastePrevious", "canOrderFrontPasteboardPanel"})
    addMethod(name, [&history](plist::value const&) { return plist::value(history.hasClip()); });
}

// The clip that the user goes to is on the clipboard from then on, pasted or not. As an action of
// its own, pasting is a step of a macro that is being recorded.
bool WynTextView::pasteFromHistory() {
  auto& history = WynPasteboardManager::sharedInstance();
  if (view_ == nullptr) return false;
  history.checkClipboard();
  if (!history.hasClip()) return false;
  auto const clips = history.stack();  // others may be copied while the panel is open
  std::vector<platform::clip_entry> entries;
  for (auto const& clip : clips) entries.push_back(entry_of(*clip));
  auto const make_current = [&](std::size_t row) {
    auto const& stack = history.stack();
    auto const it = std::find(stack.begin(), stack.end(), clips[row]);
    return history.selectClip(static_cast<std::size_t>(it - stack.begin()));
  };
  auto const chosen =
      platform::desktop::current().clips().run(entries, history.pasteIndex(), make_current);
  if (!chosen || *chosen >= clips.size()) return true;
  return make_current(*chosen) && view_ != nullptr && tryToPerformWith("paste:", {});
}
