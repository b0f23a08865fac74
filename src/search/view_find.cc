#include "search/view_find.h"

#include "platform/log.h"
#include "platform/unicode.h"
#include "platform/utf.h"
#include "regex/onig_library.h"
#include "regex/oniguruma_format.h"
#include "search/WynFindManager.h"
#include "search/patient_work.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <vector>

namespace search {
namespace {

// A stretch to search, in units of the whole text, and in which direction.
struct leg {
  std::size_t first, last;
  bool backward;
};

// What a search that may outlive its caller owns.
struct search_task {
  search_task(text_query made, text::text_slice of) : query(std::move(made)), text(std::move(of)) {}

  // The first leg that finds something ends it.
  void run(std::atomic<bool> const& cancelled) {
    text_searcher searcher(query, text.units, cancelled);
    for (leg const& part : legs) {
      end = search(searcher, part);
      if (end == search_end::not_found) continue;
      first = searcher.begin();
      last = searcher.end();
      return;
    }
  }

  text_query query;
  text::text_slice text;
  std::vector<leg> legs;
  /// An empty match here is where the caret stands already.
  std::size_t stale_empty_match = std::u16string::npos;
  search_end end = search_end::not_found;
  std::size_t first = 0, last = 0;

 private:
  search_end search(text_searcher& searcher, leg const& part) const {
    if (part.backward) return searcher.previous(part.first, part.last);
    search_end const found = searcher.next(part.first, part.last);
    bool const is_stale = found == search_end::found && searcher.begin() == searcher.end() &&
                          searcher.begin() == stale_empty_match;
    if (!is_stale) return found;
    return part.first < part.last ? searcher.next(part.first + 1, part.last)
                                  : search_end::not_found;
  }
};

// The places of a text's selection, as offsets in a range, or where that ends.
struct selection_offsets {
  selection_offsets(text::view& view, text_range range) {
    auto const clamped = [&](text::view_iterator const& at) {
      return text::iterator(std::clamp(at.base.pos(), range.first, range.second), view.storage);
    };
    text::iterator const from = clamped(view.selection.first());
    first = static_cast<std::size_t>(from - text::iterator(range.first, view.storage));
    last = first + static_cast<std::size_t>(clamped(view.selection.last()) - from);
  }
  std::size_t first, last;
};

std::shared_ptr<search_task> make_task(text::view& view, text_query query, text_range range) {
  text::storage& storage = *view.storage;
  return std::make_shared<search_task>(
      std::move(query), storage.slice({range.first, &storage}, {range.second, &storage}));
}

text_range whole_text(text::view& view) {
  return {text::pos(), view.storage->end(-1).pos()};
}

// Runs it; a text that has changed while it was waited for makes what was found worthless.
search_end run(text::view& view, std::shared_ptr<search_task> const& task) {
  text::storage* const storage = view.storage;
  auto const memento = storage->current_memento;
  auto const stops = task->query.pattern() ? stopping::perhaps_late : stopping::soon;
  if (!do_patiently(stops, [task](std::atomic<bool> const& cancelled) { task->run(cancelled); }))
    return search_end::cancelled;
  return storage->current_memento == memento ? task->end : search_end::cancelled;
}

text::iterator position(text::view& view, std::size_t offset, text::pos base = {}) {
  return text::iterator(base, view.storage) + static_cast<std::ptrdiff_t>(offset);
}

std::vector<leg> legs_for(text_query const& query, selection_offsets const& at, std::size_t size,
                          bool backward, bool wrap) {
  bool const is_pattern = query.pattern() != nullptr;
  std::vector<leg> legs;
  if (backward) {
    legs.push_back({0, at.first, true});
    if (wrap) legs.push_back({is_pattern ? 0 : at.last, is_pattern ? size + 1 : size, true});
  } else {
    legs.push_back({at.last, size, false});
    if (wrap) legs.push_back({0, is_pattern ? size : at.first, false});
  }
  return legs;
}

std::optional<text_range> match_in_lines(text::view& view, text_query const& query,
                                         std::size_t lines) {
  constexpr std::size_t most_units = 100'000;
  text::storage& storage = *view.storage;
  text::iterator const from = view.selection.last().base;
  std::size_t const stop = std::min<std::size_t>(from.line + lines, storage.lines() - 1);
  std::size_t size = 0, line = from.line;
  while (line < stop && size < most_units) size += storage.size(line++) + 1;
  if (line == from.line || size >= most_units) return std::nullopt;
  text::text_slice const next = storage.slice(from, storage.begin_of_line(line));
  std::atomic<bool> const never = false;
  text_searcher searcher(query, next.units, never);
  if (searcher.next(0, next.units.size()) != search_end::found) return std::nullopt;
  auto const at = [&](std::size_t offset) {
    return (from + static_cast<std::ptrdiff_t>(offset)).pos();
  };
  return text_range(at(searcher.begin()), at(searcher.end()));
}

// The next match of a text as it stands, if it is in one of the next lines. An edited text is
// copied to be searched as a whole, which a search that ends soon, in a macro say, shall not cost.
std::optional<text_range> match_in_next_lines(text::view& view, text_query const& query) {
  if (query.pattern() != nullptr || query.whole_words()) return std::nullopt;
  for (std::size_t const lines : {std::size_t{8}, std::size_t{500}})
    if (auto const found = match_in_lines(view, query, lines)) return found;
  return std::nullopt;
}

}  // namespace

query_options query_options_of(platform::find_panel_values const& values) {
  return {values.regular_expression, values.ignore_case, values.whole_words};
}

bool log_and_tell(find_answer const& answer, char const* prefix) {
  if (!answer.error.empty()) platform::log(prefix + answer.error);
  return answer.end == search_end::found;
}

found_match find_in_view(text::view& view, bool backward, std::optional<text_range> within) {
  auto const options = WynFindManager::sharedInstance().findOptions();
  std::u16string const sought =
      unicode::to_utf16(WynFindManager::sharedInstance().findPboardString());
  if (sought.empty()) return {};
  text_range const range = within.value_or(whole_text(view));
  std::shared_ptr<search_task> task;
  try {
    text_query query(sought, query_options_of(options));
    if (auto const near = backward || within ? std::nullopt : match_in_next_lines(view, query))
      return {{search_end::found, {}}, 0, 0, near};
    task = make_task(view, std::move(query), range);
  } catch (std::invalid_argument const& error) {
    return {{search_end::not_found, text_query::message_of(error)}};
  }
  selection_offsets const at(view, range);
  task->legs = legs_for(task->query, at, task->text.units.size(), backward, options.wrap_around);
  if (at.first == at.last) task->stale_empty_match = at.first;
  search_end const end = run(view, task);
  if (end != search_end::found || !within) return {{end, {}}, task->first, task->last};
  text::iterator const first = position(view, task->first, range.first);
  text::iterator const last = first + static_cast<std::ptrdiff_t>(task->last - task->first);
  return {{end, {}}, 0, 0, text_range(first.pos(), last.pos())};
}

void select_match(text::view& view, found_match const& match) {
  text::iterator first, last;
  if (match.place) {
    first = {match.place->first, view.storage};
    last = {match.place->second, view.storage};
  } else {
    first = position(view, match.first);
    last = first + static_cast<std::ptrdiff_t>(match.last - match.first);
  }
  text::view_iterator const from = view.in_view(first), to = view.in_view(last);
  view.selection.set_caret(to);
  view.selection.select(from, to, false);
  view.center_selection_pending = true;
}

found_replacement replacement_for_selection(text::view& view) {
  auto const options = WynFindManager::sharedInstance().findOptions();
  if (!options.regular_expression)
    return {{search_end::found, {}}, unicode::to_utf16(options.replace)};
  std::u16string sought = unicode::to_utf16(options.find);
  if (sought.empty()) sought = u"^.*$";
  oniguruma::format expand(options.replace.c_str());
  std::shared_ptr<search_task> task;
  std::u16string const selected(view.selection.begin(), view.selection.end());
  try {
    task = std::make_shared<search_task>(
        text_query(sought, {.regular_expression = true, .ignore_case = options.ignore_case}),
        text::text_block::copy(selected));
  } catch (std::invalid_argument const& error) {
    return {{search_end::not_found, "regexp: " + text_query::message_of(error)}, {}};
  }
  if (expand.has_failed()) return {{search_end::not_found, "Bad replacement string"}, {}};
  auto captures = std::make_shared<oniguruma::captures_t>();
  auto const memento = view.storage->current_memento;
  bool const done =
      do_patiently(stopping::perhaps_late, [task, captures](std::atomic<bool> const& cancelled) {
        text_searcher searcher(task->query, task->text.units, cancelled);
        task->end = searcher.next(0, task->text.units.size());
        if (task->end != search_end::found) return;
        *captures = oniguruma::captures_of(searcher.match());
        // An empty match at the start has no entry there, and is group 0 all the same.
        captures->emplace(
            0, std::pair(static_cast<int>(searcher.begin()), static_cast<int>(searcher.end())));
      });
  if (!done || view.storage->current_memento != memento) return {{search_end::cancelled, {}}, {}};
  if (task->end != search_end::found) return {{task->end, {}}, {}};
  return {{search_end::found, {}}, expand.expand(selected, *captures)};
}

namespace {

constexpr std::size_t longest_examined = 100'000;  // units of a selection
constexpr auto patience = std::chrono::milliseconds(15);
constexpr unsigned long allowed_retries = 20000;  // some 0.2 ms

// A selection, and what a query finds from its beginning on.
struct examined_selection {
  void run(std::atomic<bool> const& cancelled) {
    text_searcher searcher(*query, units, cancelled);
    searcher.set_limits(std::chrono::steady_clock::now() + patience, allowed_retries);
    std::size_t const last_start = query->pattern() != nullptr ? 0 : units.size();
    if (searcher.next(0, last_start) != search_end::found) return;
    is_match = searcher.begin() == 0 && searcher.end() == units.size();
    if (query->pattern() == nullptr) return;
    captures = oniguruma::captures_of(searcher.match());
    captures.emplace(0, std::pair(0, static_cast<int>(searcher.end())));
  }

  std::shared_ptr<text_query const> query;
  std::u16string units;
  bool is_match = false;
  oniguruma::captures_t captures;
};

std::shared_ptr<examined_selection const> examine_selection(
    text::view& view, std::shared_ptr<text_query const> query) {
  if (!view.has_selection() || view.selection.column_mode) return nullptr;
  auto const task = std::make_shared<examined_selection>();
  task->query = std::move(query);
  text::iterator const first = view.selection.first().base, last = view.selection.last().base;
  if (static_cast<std::size_t>(last - first) > longest_examined) return nullptr;
  task->units.assign(view.selection.begin(), view.selection.end());
  if (task->query->pattern() == nullptr) {
    task->run(false);
  } else if (!do_briefly(patience, [task](auto const& cancelled) { task->run(cancelled); })) {
    return nullptr;
  }
  return task->is_match ? task : nullptr;
}

}  // namespace

bool selection_is_match(text::view& view, std::shared_ptr<text_query const> query) {
  return examine_selection(view, std::move(query)) != nullptr;
}

std::optional<std::u16string> preview_of_replacement(text::view& view,
                                                     std::shared_ptr<text_query const> query,
                                                     std::string const& replacement) {
  auto const examined = examine_selection(view, std::move(query));
  if (examined == nullptr) return std::nullopt;
  return oniguruma::format(replacement.c_str()).expand(examined->units, examined->captures);
}

std::u16string pattern_for(std::u16string_view text) {
  constexpr std::u16string_view special = u"\\.[]{}()*+?^$|#";
  std::u16string pattern;
  for (char16_t const unit : text) {
    if (special.find(unit) != special.npos) pattern += u'\\';
    pattern += unit;
  }
  return pattern;
}

bool view_copy_selection_to_findpboard(text::view* view) {
  if (!view->has_selection()) return false;
  std::u16string const selected(view->selection.begin(), view->selection.end());
  WynFindManager::sharedInstance().writeStringToFindPboard(unicode::to_utf8(selected));
  return true;
}

bool view_copy_selection_to_replacepboard(text::view* view) {
  if (!view->has_selection()) return false;
  std::u16string const selected(view->selection.begin(), view->selection.end());
  WynFindManager& manager = WynFindManager::sharedInstance();
  manager.commitEditing();
  plist::dictionary options = manager.options();
  options.insert_or_assign("replaceString", unicode::to_utf8(selected));
  manager.setOptions(std::move(options));
  return true;
}

namespace {

text_query incremental_query(std::u16string const& string) {
  std::string const utf8 = unicode::to_utf8(string);
  return {string, {.ignore_case = unicode::lowercase(utf8) == utf8}};
}

text::iterator run_incremental(text::view& view, std::u16string const& string,
                               std::vector<leg> const& legs) {
  auto const task = make_task(view, incremental_query(string), whole_text(view));
  task->legs = legs;
  return run(view, task) == search_end::found ? position(view, task->first) : view.storage->end(-1);
}

}  // namespace

text::iterator find_forward(text::view* view, std::u16string const& string, bool from_end) {
  selection_offsets const at(*view, whole_text(*view));
  auto const size =
      static_cast<std::size_t>(view->storage->end(-1) - view->storage->begin_of_line(0));
  return run_incremental(*view, string,
                         {{from_end ? at.last : at.first, size, false}, {0, at.first, false}});
}

text::iterator find_backward(text::view* view, std::u16string const& string, bool from_start) {
  selection_offsets const at(*view, whole_text(*view));
  auto const size =
      static_cast<std::size_t>(view->storage->end(-1) - view->storage->begin_of_line(0));
  // What has just been found stays found while the string grows.
  bool const grows = !from_start && at.first != at.last;
  std::size_t const from = grows ? std::min(size, at.first + string.size()) : at.first;
  return run_incremental(*view, string, {{0, from, true}});
}

}  // namespace search
