#include "app/batch_state.h"

#include "documents/WynDocument.h"
#include "encoding/charset.h"
#include "encoding/line_ending.h"
#include "text/views/bookmark_filter.h"
#include "text/views/folding_filter.h"
#include "textview/WynTextView.h"

#include <nlohmann/json.hpp>

namespace app {
namespace {

using json = nlohmann::ordered_json;

json mark(text::view_iterator const& it) {
  return {{"line", it.base.line}, {"column", it.base.column}, {"offset", it.offset}};
}

json selection_state(text::selection const& selection) {
  return {{"first", mark(selection.first_mark)},
          {"last", mark(selection.last_mark)},
          {"current", mark(selection.current_mark)},
          {"columnMode", selection.column_mode}};
}

json alert_list(std::vector<headless::scripted_alerts::record> const& alerts) {
  json list = json::array();
  for (auto const& alert : alerts)
    list.push_back({{"title", alert.title}, {"text", alert.text}, {"answer", alert.answer}});
  return list;
}

// The name, which may be any text.
json language(WynTextView const& text_view) {
  return text_view.languageUUID().empty() ? json() : json(text_view.currentMode());
}

json bookmark_lines(text::view const& view) {
  json lines = json::array();
  for (text::pos const mark : view.bookmark_filter->marks.list()) lines.push_back(mark.line);
  return lines;
}

json folded_lines(text::view const& view) {
  json pairs = json::array();
  for (auto const& [first, last] : view.folding_filter->foldings) pairs.push_back({first, last});
  return pairs;
}

}  // namespace

std::string batch_state(WynTextView const& text_view, int beeps,
                        std::vector<headless::scripted_alerts::record> const& alerts) {
  text::view const& view = *text_view.view();
  WynDocument const& document = *text_view.document();
  json const state = {
      {"lines", view.storage->lines()},
      {"viewLines", view.lines()},
      {"selection", selection_state(view.selection)},
      {"memento", view.storage->current_memento},
      {"canUndo", view.can_undo()},
      {"canRedo", view.can_redo()},
      {"isDocumentEdited", document.isDocumentEdited()},
      {"fileEncoding", encoding::charset_name[document.fileEncoding()]},
      {"lineEnding", line_ending::key[document.lineEnding()]},
      {"byteOrderMark", document.byteOrderMark()},
      {"tabSize", view.tab_size},
      {"softTabs", text_view.softTabs()},
      {"softWrap", view.soft_wrap},
      {"beeps", beeps},
      {"alerts", alert_list(alerts)},
      {"bookmarks", bookmark_lines(view)},
      {"foldings", folded_lines(view)},
      {"language", language(text_view)},
  };
  // File names in alerts may hold any bytes.
  return state.dump(-1, ' ', false, json::error_handler_t::replace);
}

}  // namespace app
