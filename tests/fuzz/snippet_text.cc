#include <memory>

#include "fuzz/fuzz.h"
#include "snippets/parse_snippet.h"
#include "snippets/session.h"
#include "text/marked_text.h"
#include "text/views/view.h"

// A line of keys and the text of a snippet: whatever it is, it is refused with a reason, or
// inserted and filled in by the keys; then undo brings the text before it back, and redo what came
// of it.

namespace {

void press(text::view& view, snippet::session& session, char key) {
  auto& manager = view.storage->undo_manager;
  if (key == 'u') return manager.undo();
  if (key == 'r') return manager.redo();
  bool const is_step = key == '\t' || key == '\b';
  if (is_step && session.is_running()) {
    key == '\t' ? session.next() : session.previous();
    auto const field = session.active_tab_stop();
    view.selection.set_caret({&view, text::iterator(field.first(), view.storage)});
    view.selection.select_to({&view, text::iterator(field.last(), view.storage)}, false);
    return;
  }
  text::undo_group const group(manager);
  if (key == 'd') {
    view.erase_selection();
    return;
  }
  char16_t const unit = static_cast<unsigned char>(key);
  view.insert(&unit, &unit + 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::string content = input_text(data, size, 2048);
  std::string const keys = take_until('\n', content).substr(0, 64);

  std::string fault;
  std::vector<std::string> warnings;
  auto parsed =
      snippet::parse(content, {.indent = "  ", .variables = {{"NAME", "a b"}}}, fault, warnings);
  if (parsed == nullptr) {
    if (fault.empty()) std::abort();
    return 0;
  }
  text::storage storage;
  text::view view(storage);
  std::u16string const text = parsed->text();
  text::iterator const first(0, 0, &storage);
  {
    text::undo_group const group(storage.undo_manager);
    storage.insert(first, text.begin(), text.end());
  }
  auto owned = std::make_unique<snippet::session>(view, first, std::move(*parsed));
  snippet::session& session = *owned;
  view.set_snippet_observer(std::move(owned));
  if (session.is_running()) press(view, session, '\b');
  for (char const key : keys) press(view, session, key);

  std::u16string const after = marked_text::units_of(storage);
  while (view.can_undo()) storage.undo_manager.undo();
  if (storage.lines() != 1 || storage.size(0) != 0) std::abort();
  while (view.can_redo()) storage.undo_manager.redo();
  // What was undone by a key is redone here, too.
  if (keys.find('u') == keys.npos && marked_text::units_of(storage) != after) std::abort();
  return 0;
}
