#include "typing/typing_run.h"

#include "actions/word_units.h"
#include "platform/desktop.h"
#include "text/views/view.h"

namespace typing {
namespace {

double now() {
  return platform::desktop::current().loop().now();
}

// Whether the first of these units begins a word, or a line, at the caret.
bool starts_anew(text::view_iterator const& caret, text::unit_view typed) {
  if (typed.find(u'\n') != typed.npos) return true;
  return !typed.empty() && actions::is_word_char(unicode::code_point_at(typed, 0)) &&
         !actions::is_word_char(actions::character_before(caret));
}

}  // namespace

typed_key::typed_key(typing_run& run, text::view& view, key_kind kind, text::unit_view typed)
    : run_(run),
      view_(view),
      kind_(kind),
      memento_(view.storage->current_memento),
      continues_(continues(typed)) {}

bool typed_key::continues(text::unit_view typed) const {
  auto const& last = run_.last_;
  return last && last->kind == kind_ && last->memento == memento_ &&
         now() - last->time <= typing_run::longest_pause && view_.selection == last->selection &&
         !starts_anew(view_.selection.current_mark, typed);
}

typed_key::~typed_key() {
  text::storage& storage = *view_.storage;
  bool const changed = storage.current_memento != memento_;
  if (changed && continues_) storage.undo_manager.set_inside_run(memento_);
  run_.end();
  if (changed) run_.last_ = {kind_, storage.current_memento, view_.selection.without_text(), now()};
}

}  // namespace typing
