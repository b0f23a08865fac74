#include "search/replace_all.h"

#include "platform/utf.h"
#include "regex/oniguruma_format.h"
#include "regex/replacement.h"
#include "search/patient_work.h"
#include "text/kill_buffer_guard.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

namespace search {
namespace {

using text::replacement;

// Up to as many replacements, and so sparse ones, are done one by one: that leaves the rest of the
// text, and what undo has to keep, untouched.
constexpr std::size_t few_replacements = 16;
constexpr std::size_t sparse_distance = 2000;  // units of text for each

// A replacement text of literal pieces and groups alone, which most are: without the state that
// changes of case and conditions need.
class plain_format {
 public:
  // Nothing if there is more to it, or it is no replacement text.
  static std::optional<plain_format> make(std::string const& text) {
    using kind = regex::replacement_node::kind;
    auto const tree = regex::parse_replacement(text);
    if (tree == nullptr) return {};
    plain_format result;
    std::string literal;
    for (regex::replacement_node const& node : *tree) {
      if (node.what == kind::text) {
        literal += node.text;
      } else if (node.what == kind::newline) {
        literal += '\n';
      } else if (node.what == kind::capture) {
        result.pieces_.push_back({unicode::to_utf16(literal), node.number});
        literal.clear();
      } else {
        return {};
      }
    }
    result.rest_ = unicode::to_utf16(literal);
    return result;
  }

  // By the rule for captures: a group that ends at the text's start is left out.
  void append_to(std::u16string& out, text::unit_view text, oniguruma::match_t const& match) const {
    for (piece const& p : pieces_) {
      out += p.before;
      if (!match.is_set(p.group) || match.end(p.group) == 0) continue;
      auto const begin = static_cast<std::size_t>(match.begin(p.group));
      out += text.substr(begin, static_cast<std::size_t>(match.end(p.group)) - begin);
    }
    out += rest_;
  }

 private:
  struct piece {
    std::u16string before;
    unsigned group;
  };
  std::vector<piece> pieces_;
  std::u16string rest_;
};

}  // namespace

// A search for all matches, which may outlive its caller.
struct replace_task {
  replace_task(text_query made, std::optional<oniguruma::format> replacement,
               std::u16string literal)
      : query(std::move(made)), format(std::move(replacement)), inserted(std::move(literal)) {}

  void run(std::atomic<bool> const& cancelled) {
    end = search_end::not_found;
    for (auto const& [first, last] : parts)
      if (!search_part(first, last, cancelled)) return;
    if (!ranges.empty()) end = search_end::found;
  }

  text_query query;
  std::optional<oniguruma::format> format;
  std::optional<plain_format> plain;  // of the format, if it is one
  std::u16string inserted;            // a text for all, or with a format those of all matches
  bool only_count = false;
  text::text_slice text;
  std::vector<std::pair<std::size_t, std::size_t>> parts;  // of the text, which are searched
  search_end end = search_end::not_found;
  std::size_t count = 0;
  replacement::range_list ranges;

 private:
  bool search_part(std::size_t first, std::size_t last, std::atomic<bool> const& cancelled) {
    text::unit_view const part = text.units.substr(first, last - first);
    text_searcher searcher(query, part, cancelled);
    for (std::size_t at = 0; at <= part.size();) {
      search_end const found = searcher.next(at, part.size());
      if (found == search_end::not_found) break;
      if (found != search_end::found || cancelled) {
        end = found == search_end::found ? search_end::cancelled : found;
        return false;
      }
      ++count;
      add(part, first, searcher);
      at = searcher.end() + (searcher.begin() == searcher.end() ? 1 : 0);
    }
    if (only_count && count > 0) end = search_end::found;
    return true;
  }

  void add(text::unit_view part, std::size_t offset, text_searcher const& searcher) {
    if (only_count) return;
    std::size_t length = inserted.size();
    if (format) {
      std::size_t const before = inserted.size();
      if (plain)
        plain->append_to(inserted, part, searcher.match());
      else
        inserted += expand(part, searcher);
      length = inserted.size() - before;
    }
    ranges.push_back({static_cast<std::uint32_t>(offset + searcher.begin()),
                      static_cast<std::uint32_t>(searcher.end() - searcher.begin()),
                      static_cast<std::uint32_t>(length)});
  }

  std::u16string expand(text::unit_view part, text_searcher const& searcher) {
    auto captures = oniguruma::captures_of(searcher.match());
    captures.emplace(
        0, std::pair(static_cast<int>(searcher.begin()), static_cast<int>(searcher.end())));
    return format->expand(part, captures);
  }
};

namespace {

std::shared_ptr<replace_task> make_task(replace_request const& request) {
  text_query query(unicode::to_utf16(request.find), request.options);
  std::optional<oniguruma::format> format;
  std::u16string literal;
  if (request.options.regular_expression)
    format.emplace(request.replace.c_str());
  else
    literal = unicode::to_utf16(request.replace);
  auto task =
      std::make_shared<replace_task>(std::move(query), std::move(format), std::move(literal));
  if (task->format) task->plain = plain_format::make(request.replace);
  return task;
}

// The text that is searched, and its parts; a rectangle has one a line.
text::iterator set_text(replace_task& task, text::view& view, replace_request const& request) {
  text::storage& storage = *view.storage;
  text::iterator first = storage.begin_of_line(0), last = storage.end(-1);
  if (request.within) {
    first = {request.within->first, &storage};
    last = {request.within->second, &storage};
  } else if (request.in_selection) {
    first = view.selection.first().base;
    last = view.selection.last().base;
  }
  if (request.within || !request.in_selection || !view.selection.column_mode) {
    task.text = storage.slice(first, last);
    task.parts.emplace_back(0, task.text.units.size());
    return first;
  }
  text::box const box(&view);
  first = storage.begin_of_line(box.first_line);
  task.text = storage.slice(first, storage.end(box.last_line - 1));
  for (std::size_t line = box.first_line, start = 0; line < box.last_line; ++line) {
    auto const column = [&](std::size_t visual) {
      return start +
             iter_from_hybrid_pos(&view, {line, visual}, text::freehanded_t::off).base.column;
    };
    task.parts.emplace_back(column(box.first_column), column(box.last_column));
    start += storage.size(line) + 1;
  }
  return first;
}

bool is_sparse(replace_task const& task) {
  std::size_t const count = task.ranges.size();
  if (count <= few_replacements) return true;
  std::size_t const span = task.ranges.back().offset - task.ranges.front().offset;
  if (span / count < sparse_distance) return false;
  // Adding and removing many lines one by one would take the square of the time.
  auto const has_newline = [](text::unit_view units) { return units.find(u'\n') != units.npos; };
  return !has_newline(task.inserted) &&
         std::none_of(task.ranges.begin(), task.ranges.end(), [&](replacement::range const& r) {
           return has_newline(task.text.units.substr(r.offset, r.erased));
         });
}

void replace_one_by_one(text::storage& storage, text::iterator at, replace_task const& task) {
  std::vector<std::pair<text::iterator, text::iterator>> places;
  std::size_t seen = 0;
  for (replacement::range const& r : task.ranges) {
    at += static_cast<std::ptrdiff_t>(r.offset - seen);
    text::iterator const end = at + static_cast<std::ptrdiff_t>(r.erased);
    places.emplace_back(at, end);
    at = end;
    seen = std::size_t{r.offset} + r.erased;
  }
  std::size_t inserted_at = task.inserted.size();
  for (std::size_t n = places.size(); n-- > 0;) {
    replacement::range const& r = task.ranges[n];
    if (task.format) inserted_at -= r.inserted;
    char16_t const* const text = task.inserted.data() + (task.format ? inserted_at : 0);
    storage.erase(places[n].first, places[n].second);
    storage.insert(std::as_const(places[n].first), text, text + r.inserted);
  }
}

// The stretch with the replacements only, where that is much less than all of the text. Otherwise
// the whole is exchanged, and stands in one block as before.
void replace_at_once(text::storage& storage, text::iterator first, replace_task& task) {
  std::size_t const start = task.ranges.front().offset;
  std::size_t const end = std::size_t{task.ranges.back().offset} + task.ranges.back().erased;
  text::text_slice text = std::move(task.text);
  if (end - start < text.units.size() / 2) {
    first += static_cast<std::ptrdiff_t>(start);
    text.units = text.units.substr(start, end - start);
    for (replacement::range& r : task.ranges) r.offset -= static_cast<std::uint32_t>(start);
  }
  storage.replace(replacement::make(first.pos(), std::move(text), std::move(task.ranges),
                                    task.inserted, !task.format));
}

// Where the changed text ends, and where its first replacement does, from the start of `task.text`.
struct changed_places {
  explicit changed_places(replace_task const& task)
      : size(task.parts.back().second),
        first_end(std::size_t{task.ranges.front().offset} + task.ranges.front().inserted) {
    for (replacement::range const& r : task.ranges) size = size - r.erased + r.inserted;
  }
  std::size_t size, first_end;
};

}  // namespace

all_matches::all_matches(text::view& view, replace_request const& request, bool only_count)
    : view_(view), request_(request) {
  if (request.find.empty()) return;
  try {
    task_ = make_task(request);
  } catch (std::invalid_argument const& error) {
    answer_.error = "regexp: " + text_query::message_of(error);
    return;
  }
  if (!only_count && task_->format && task_->format->has_failed())
    answer_.error = "Bad replacement string";
  else
    search(only_count);
}

void all_matches::search(bool only_count) {
  task_->only_count = only_count;
  first_ = set_text(*task_, view_, request_);
  text::storage* const storage = view_.storage;
  auto const memento = storage->current_memento;
  auto const stops = task_->query.pattern() ? stopping::perhaps_late : stopping::soon;
  bool const done = do_patiently(
      stops, [task = task_](std::atomic<bool> const& cancelled) { task->run(cancelled); });
  bool const is_valid = done && storage->current_memento == memento;
  answer_.end = is_valid ? task_->end : search_end::cancelled;
  answer_.count = is_valid ? task_->count : 0;
}

void all_matches::replace() {
  if (answer_.end != search_end::found) return;
  text::storage& storage = *view_.storage;
  bool const columns = !request_.within && request_.in_selection && view_.selection.column_mode;
  text::pos const start(first_.pos());
  std::size_t const first_part = task_->parts.front().first;
  changed_places const changed(*task_);
  // What was typed in columns is not typed any more.
  view_.mirror_observer.remove_all_mirrors();
  text::kill_buffer_guard const guard(storage);
  if (is_sparse(*task_))
    replace_one_by_one(storage, first_, *task_);
  else
    replace_at_once(storage, first_, *task_);

  auto const at = [&](std::size_t offset) {
    return view_.in_view(text::iterator(start, &storage) + static_cast<std::ptrdiff_t>(offset));
  };
  if (request_.within || request_.in_selection) {
    text::view_iterator const from = at(first_part), to = at(changed.size);
    view_.selection.set_caret(to);
    view_.selection.select(from, to, columns);
  } else {
    view_.selection.set_caret(at(changed.first_end));
    view_.center_selection_pending = true;
  }
}

}  // namespace search
