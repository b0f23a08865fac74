#include "actions/clipboard.h"

#include <algorithm>
#include <cstdint>

#include "actions/WynPasteboardManager.h"
#include "platform/utf.h"

namespace actions {
namespace {

namespace type = platform::pasteboard_type;

/// The text with all line ends as `\n`. In its place: it may be very large.
std::u16string with_line_feeds(std::u16string text) {
  std::size_t kept = std::min(text.find(u'\r'), text.size());
  for (std::size_t at = kept; at < text.size(); ++at) {
    bool const is_followed_by_line_feed = at + 1 < text.size() && text[at + 1] == u'\n';
    if (text[at] != u'\r')
      text[kept++] = text[at];
    else if (!is_followed_by_line_feed)
      text[kept++] = u'\n';
  }
  text.resize(kept);
  return text;
}

}  // namespace

std::optional<text_clip> clip_of(platform::pasteboard_content const& source, std::size_t most) {
  constexpr std::size_t most_bytes_of_unit = 3;
  auto const own = source.get(type::quirnote);
  auto const content = own["Content"] ? own["Content"] : source.get(type::text);
  if (!content.as_string() || content.as_string()->size() / most_bytes_of_unit > most)
    return std::nullopt;
  text_clip clip{with_line_feeds(unicode::to_utf16(*content.as_string())),
                 own["Rectangular"].string_or("NO") == "YES", std::nullopt};
  if (own["Indent"] && own["Column"])
    clip.origin = {static_cast<std::size_t>(std::max<std::int64_t>(0, own["Indent"].integer_or(0))),
                   static_cast<std::size_t>(std::max<std::int64_t>(0, own["Column"].integer_or(0))),
                   static_cast<std::ptrdiff_t>(own["Excess"].integer_or(0))};
  return clip;
}

plist::dictionary pasteboard_types_of(text_clip const& clip) {
  plist::value const text = unicode::to_utf8(clip.text);
  plist::dictionary own{{"Content", text}, {"Rectangular", clip.rectangular ? "YES" : "NO"}};
  if (clip.origin) {
    own["Indent"] = static_cast<std::int64_t>(clip.origin->indent);
    own["Column"] = static_cast<std::int64_t>(clip.origin->column);
    own["Excess"] = static_cast<std::int64_t>(clip.origin->excess);
  }
  return {{std::string(type::text), text}, {std::string(type::quirnote), own}};
}

struct private_clipboard::former_state {
  WynPasteboardManager::memento memento;
};

private_clipboard::private_clipboard()
    : former_(new former_state{WynPasteboardManager::sharedInstance().currentMemento()}) {
  WynPasteboardManager::sharedInstance().beginPrivateUse();
}

private_clipboard::~private_clipboard() {
  WynPasteboardManager::sharedInstance().setMemento(std::move(former_->memento));
}

std::optional<text_clip> current_clip() {
  return WynPasteboardManager::sharedInstance().currentClip();
}

void set_current_clip(text_clip clip) {
  WynPasteboardManager::sharedInstance().storeClip(std::move(clip));
}

bool view_copy(text::view* view) {
  if (!view->has_selection()) return false;
  set_current_clip({std::u16string(view->selection.begin(), view->selection.end()),
                    view->is_in_column_mode(), std::nullopt});
  return true;
}

bool view_paste(text::view* view) {
  return view_paste_without_reindent(view);
}

bool view_paste_next(text::view* view) {
  return view_paste_clip(view, WynPasteboardManager::sharedInstance().nextClip());
}

bool view_paste_previous(text::view* view) {
  return view_paste_clip(view, WynPasteboardManager::sharedInstance().previousClip());
}

bool view_paste_without_reindent(text::view* view) {
  return view_paste_clip(view, current_clip());
}

bool view_paste_clip(text::view* view, std::optional<text_clip> const& clip) {
  if (!clip) return false;
  if (clip->rectangular)
    view->insert_column(clip->text.begin(), clip->text.end(), {}, false);
  else
    view->insert(clip->text.begin(), clip->text.end());
  return true;
}

void view_yank(text::view* view) {
  auto const killed = view->storage->kill_buffer.data;  // a copy: inserting may erase a selection
  view->insert(killed.begin(), killed.end());
}

void view_insert(text::view* view, text::char_t unit) {
  view->insert(&unit, &unit + 1);
}

}  // namespace actions
