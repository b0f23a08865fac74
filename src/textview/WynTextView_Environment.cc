#include "actions/word_units.h"
#include "documents/WynDocument.h"
#include "path/path.h"
#include "platform/utf.h"
#include "text/views/view.h"
#include "textview/WynTextView.h"

// The variables that the view provides to commands and snippets.

// Lines and columns from 1; the index counts bytes of UTF-8 from 0.
plist::dictionary WynTextView::variablesOfPlace(text::view_iterator const& at,
                                                std::string const& prefix) const {
  std::string const number = prefix == "QN_" ? "_NUMBER" : "";
  text::unit_view const line = at.view->storage->line_units(at.base.line);
  std::string const before = unicode::to_utf8(line.substr(0, at.base.column));
  return {{prefix + "LINE" + number, std::to_string(at.base.line + 1)},
          {prefix + "COLUMN" + number, std::to_string(column_before_wrap(at) + 1)},
          {prefix + "LINE_INDEX", std::to_string(before.size())}};
}

std::pair<text::iterator, text::iterator> WynTextView::wordRangeAtCaret() const {
  text::iterator const caret = view_->selection.current_mark.base;
  text::unit_view const line = view_->storage->line_units(caret.line);
  std::size_t first = caret.column, last = caret.column;
  while (first > 0) {
    std::size_t const before = text::previous_cluster(line, first);
    if (!actions::is_word_char(unicode::code_point_at(line, before))) break;
    first = before;
  }
  while (last < line.size() && actions::is_word_char(unicode::code_point_at(line, last)))
    last = text::next_cluster(line, last);
  return {text::iterator(caret.line, first, caret.storage),
          text::iterator(caret.line, last, caret.storage)};
}

std::u16string WynTextView::wordAtCaret() const {
  if (view_ == nullptr) return {};
  auto const [first, last] = wordRangeAtCaret();
  text::unit_view const line = view_->storage->line_units(first.line);
  return std::u16string(line.substr(first.column, last.column - first.column));
}

plist::dictionary WynTextView::environmentVariables() const {
  if (view_ == nullptr) return {};
  plist::dictionary result;
  for (plist::value const& variable : stylesForCaretWait(true)["shellVariables"].elements()) {
    std::string const name = variable["name"].string_or("");
    if (!name.empty() && variable["enabled"].boolean_or(true))
      result.insert_or_assign(name, variable["value"].string_or(""));
  }
  text::selection const& selection = view_->selection;
  text::iterator const caret = selection.current_mark.base;
  result.insert_or_assign("QN_TAB_SIZE", std::to_string(tabSize()));
  result.insert_or_assign("QN_SOFT_TABS", treatsSpacesAsTabs() ? "YES" : "NO");
  result.insert_or_assign("QN_COLUMNS", std::to_string(selection.width()));
  for (auto& [name, value] : variablesOfPlace(selection.current_mark, "QN_"))
    result.insert_or_assign(name, value);
  result.insert_or_assign("QN_CURRENT_LINE",
                          unicode::to_utf8(view_->storage->line_units(caret.line)));
  result.insert_or_assign("QN_MODE", currentMode_);
  result.insert_or_assign("QN_SCOPE", scopeAtCaret());
  if (view_->has_selection()) {
    for (auto& [name, value] : variablesOfPlace(selection.first(), "QN_INPUT_START_"))
      result.insert_or_assign(name, value);
    result.insert_or_assign("QN_SELECTED_TEXT", unicode::to_utf8(selected_text()));
  }
  if (std::string const path = document_->filename(); !path.empty()) {
    result.insert_or_assign("QN_FILEPATH", path);
    result.insert_or_assign("QN_FILENAME", path::name(path));
    result.insert_or_assign("QN_DIRECTORY", path::parent(path));
  }
  if (std::u16string const word = wordAtCaret(); !word.empty())
    result.insert_or_assign("QN_CURRENT_WORD", unicode::to_utf8(word));
  return result;
}
