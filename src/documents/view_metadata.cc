#include "documents/view_metadata.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <span>

#include "documents/file_metadata.h"
#include "text/cluster.h"
#include "text/tab_width.h"
#include "text/views/bookmark_filter.h"
#include "text/views/folding_filter.h"

namespace documents {
namespace {

constexpr char const* bookmarks_name = "com.quirnworks.bookmarked_lines";
constexpr char const* foldings_name = "com.quirnworks.foldings";
constexpr char const* caret_name = "com.quirnworks.caret";

using folding_t = class text::view::folding_filter::folding_t;

plist::value decimal(std::size_t number) {
  return std::to_string(number);
}

/// Nothing for a value that is no number, or a negative one.
std::optional<std::size_t> number(plist::value const& value) {
  std::int64_t const n = value.integer_or(-1);
  if (n < 0) return std::nullopt;
  return static_cast<std::size_t>(n);
}

text::iterator nearest(text::storage& storage, std::size_t line, std::size_t column) {
  line = std::min(line, storage.lines() - 1);
  column = std::min(column, storage.size(line));
  return {line, text::cluster_start_from(storage.line_units(line), column), &storage};
}

text::iterator at_offset(text::storage& storage, std::size_t offset) {
  std::size_t line = 0;
  for (; line + 1 < storage.lines() && offset > storage.size(line); ++line)
    offset -= storage.size(line) + 1;
  return nearest(storage, line, offset);
}

/// The elements of a list that may come from anywhere, as many of them as are looked at.
std::span<plist::value const> first_elements(plist::value const& list) {
  constexpr std::size_t most = 10000;
  return std::span(list.elements()).first(std::min(most, list.elements().size()));
}

void load_bookmarks(plist::value const& list, text::view& view) {
  for (plist::value const& element : first_elements(list))
    if (auto const line = number(element); line && *line < view.storage->lines())
      view.set_bookmark({*line, 0}, true);
}

plist::value bookmarks_of(text::view const& view) {
  plist::array lines;
  for (text::pos const mark : view.bookmark_filter->marks.list())
    lines.push_back(decimal(mark.line));
  return lines.empty() ? plist::value() : plist::value(lines);
}

void load_folds(plist::value const& list, text::view& view) {
  std::vector<folding_t> folds;
  for (plist::value const& element : first_elements(list)) {
    auto const field = [&](char const* key, char const* long_key) {
      return number(element[key] ? element[key] : element[long_key]);
    };
    auto const from = field("f", "from"), to = field("t", "to"), indent = field("i", "indent");
    if (!from || !to || !indent) continue;
    if (*from < *to && *to < view.storage->lines())
      folds.push_back({static_cast<uint32_t>(*from), static_cast<uint32_t>(*to)});
  }
  view.folding_filter->restore(folds);
}

plist::value folds_of(text::view const& view) {
  plist::array list;
  for (auto const& [from, to] : view.folding_filter->foldings) {
    size_t const indent =
        text::indent_width(view.storage->line_units(from), text::tab_stops(view.tab_size));
    list.push_back(plist::dictionary{
        {"from", decimal(from)}, {"to", decimal(to)}, {"indent", decimal(indent)}});
  }
  return list.empty() ? plist::value() : plist::value(list);
}

void load_caret(plist::value const& caret, text::view& view) {
  if (!caret.as_dictionary()) return;
  view.selection.set_caret(load_iterator(view, caret));
  view.first_visible_line = -1;
}

template <typename Number>
Number number_at(plist::data const& bytes, std::size_t offset) {
  Number result;
  std::memcpy(&result, bytes.data() + offset, sizeof result);
  return result;
}

}  // namespace

plist::dictionary savable_iterator(text::view_iterator const& it) {
  return {{"line", it.base.line}, {"column", it.base.column}};
}

text::view_iterator load_iterator(text::view& view, plist::value const& place) {
  return view.in_view(nearest(*view.storage, number(place["line"]).value_or(0),
                              number(place["column"]).value_or(0)));
}

plist::dictionary view_metadata(text::view const& view) {
  text::selection const& selection = view.selection;
  plist::dictionary result{{"caret", savable_iterator(selection.current_mark)},
                           {"firstVisibleLine", view.first_visible_line},
                           {"firstVisibleColumn", view.first_visible_column}};
  if (!selection.empty()) {
    result["selectFrom"] = savable_iterator(selection.first_mark);
    result["selectTo"] = savable_iterator(selection.last_mark);
    result["columnSelection"] = selection.column_mode;
  }
  return result;
}

void set_view_metadata(text::view& view, plist::value const& metadata) {
  if (metadata["caret"]) view.selection.set_caret(load_iterator(view, metadata["caret"]));
  if (metadata["selectFrom"] && metadata["selectTo"])
    view.selection.select(load_iterator(view, metadata["selectFrom"]),
                          load_iterator(view, metadata["selectTo"]),
                          metadata["columnSelection"].boolean_or(false));
  view.first_visible_line = std::max<std::int64_t>(metadata["firstVisibleLine"].integer_or(-1), -1);
  view.first_visible_column = number(metadata["firstVisibleColumn"]).value_or(0);
}

void load_view_attributes(std::string const& path, text::view& view) {
  attribute_file const file(path);
  load_bookmarks(file.get(bookmarks_name), view);
  load_folds(file.get(foldings_name), view);
  load_caret(file.get(caret_name), view);
}

void save_view_attributes(std::string const& path, path::file_version const& version,
                          text::view const& view) {
  attribute_file const file(path);
  if (!file.is(version)) return;
  file.set(bookmarks_name, bookmarks_of(view));
  file.set(foldings_name, folds_of(view));
  text::iterator const& caret = view.selection.current_mark.base;
  file.set(caret_name,
           plist::dictionary{{"line", decimal(caret.line)}, {"column", decimal(caret.column)}});
}

void go_to_position(text::view& view, plist::data const& record) {
  view.first_visible_line = -1;
  auto const line = number_at<std::int16_t>(record, 2);
  if (line >= 0) return go_to_line(view, static_cast<std::size_t>(line));
  auto const start = number_at<std::int32_t>(record, 4), end = number_at<std::int32_t>(record, 8);
  if (start < 0 || start > end) return;
  auto const at = [&](std::int32_t offset) {
    return view.in_view(at_offset(*view.storage, static_cast<std::size_t>(offset)));
  };
  view.selection.set_caret(at(start));
  view.selection.select(at(start), at(end), false);
}

void go_to_line(text::view& view, std::size_t line) {
  view.selection.set_caret(view.in_view(nearest(*view.storage, line, 0)));
  view.first_visible_line = -1;
}

}  // namespace documents
