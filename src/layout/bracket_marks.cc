#include "layout/bracket_marks.h"

#include "grammar/tokenize_filter.h"
#include "layout/geometry.h"
#include "layout/laid_out_view.h"
#include "platform/desktop.h"
#include "text/views/view.h"

#include <algorithm>
#include <mutex>
#include <string_view>

namespace layout {
namespace {

constexpr std::size_t near = 3000;          // units that a key may wait for
constexpr std::size_t slice = 100'000;      // some tenths of a millisecond
constexpr std::size_t most = 8'000'000;     // units
constexpr double rest = 0.05, pause = 0.0;  // seconds before the first slice, and between others

bool may_be_bracket(text::char_t unit) {
  return unit > u' ' && !(u'0' <= unit && unit <= u'9') &&
         !(u'a' <= (unit | 0x20) && (unit | 0x20) <= u'z');
}

bool is_or_is_in(std::string_view scope, std::string_view name) {
  return scope.starts_with(name) && (scope.size() == name.size() || scope[name.size()] == '.');
}

}  // namespace

bracket_marks::bracket_marks(laid_out_view const& view, pairs_function pairs)
    : view_(view), pairs_(std::move(pairs)) {}

bracket_marks::~bracket_marks() = default;

void bracket_marks::reset() {
  search_.reset();
  timer_.reset();
  found_.reset();
  areas_.clear();
}

void bracket_marks::follow(bool wanted) {
  search_.reset();
  timer_.reset();
  auto const at = wanted ? bracket_at_caret() : std::nullopt;
  if (!at) return show(std::nullopt);
  begin(*at);
  go_on(near);
}

std::optional<bracket_marks::place_pair> bracket_marks::places() const {
  if (!found_ || view_.view()->storage->current_memento != memento_) return std::nullopt;
  return found_;
}

// The one after the caret, or else the one before.
std::optional<bracket_marks::bracket> bracket_marks::bracket_at_caret() const {
  text::view const& view = *view_.view();
  if (view.has_selection() || view.selection.current_mark.offset != 0) return std::nullopt;
  text::pos const caret = view.selection.current_mark.base.pos();
  text::unit_view const line = view.storage->line_units(caret.line);
  std::vector<styles::unit_pair> pairs;
  for (std::size_t const at : {std::size_t{caret.column}, caret.column - std::size_t{1}}) {
    if (at >= line.size() || !may_be_bracket(line[at])) continue;
    if (pairs.empty()) pairs = pairs_();
    for (styles::unit_pair const pair : pairs)
      if (pair.open != pair.close && (line[at] == pair.open || line[at] == pair.close))
        return bracket{{caret.line, at}, pair};
  }
  return std::nullopt;
}

// Not a part of a string or comment, but for code in those. Of paths that are known, a look-up.
bool bracket_marks::is_code(text::pos const& at) {
  auto* const tokenizer = view_.tokenizer();
  if (tokenizer == nullptr || tokenizer->paths() == nullptr) return true;
  grammar::path_tree const& tree = *tokenizer->paths();
  auto const path = tokenizer->tokens(at.line).at(at.column).path;
  if (path >= is_code_.size()) is_code_.resize(path + std::size_t{1}, -1);
  if (is_code_[path] < 0) {
    bool code = true;
    for (auto id = path; id != 0; id = tree.at(id).parent) {
      std::string_view const scope = tree.last_scope(id);
      bool const is_text = is_or_is_in(scope, "string") || is_or_is_in(scope, "comment");
      if (is_text) code = false;
      if (is_text || is_or_is_in(scope, "source") || is_or_is_in(scope, "meta.embedded")) break;
    }
    is_code_[path] = code;
  }
  return is_code_[path] != 0;
}

void bracket_marks::begin(bracket const& at) {
  text::storage& storage = *view_.view()->storage;
  if (view_.tokenizer() != nullptr) view_.tokenizer()->start();
  std::lock_guard const lock(storage.mutex);
  searched_from_ = at.at;
  memento_ = storage.current_memento;
  is_code_.clear();
  bool const code = is_code(at.at);
  search_ = std::make_unique<bracket_search>(
      storage, at.at, at.pair,
      [this, code](text::pos const& place) { return is_code(place) == code; });
}

void bracket_marks::go_on(std::size_t units) {
  text::storage& storage = *view_.view()->storage;
  if (storage.current_memento != memento_) return search_.reset();
  std::unique_lock lock(storage.mutex);
  auto const state = search_->go_on(units);
  lock.unlock();
  if (state == bracket_search::state::searching && search_->passed() < most) {
    show(std::nullopt);
    timer_ = platform::desktop::current().loop().schedule(units == near ? rest : pause, false,
                                                          [this] { go_on(slice); });
    return;
  }
  std::optional<place_pair> found;
  if (state == bracket_search::state::found) found.emplace(searched_from_, search_->partner());
  search_.reset();
  show(found);
}

void bracket_marks::show(std::optional<place_pair> const& found) {
  if (found == found_) return;
  found_ = found;
  std::vector<platform::rect> areas;
  text::view const& view = *view_.view();
  for (int n = 0; found && n < 2; ++n) {
    text::iterator const at(n == 0 ? found->first : found->second, view.storage);
    if (view.is_visible(at)) areas.push_back(character_rectangle(view_, {&view, at}));
  }
  areas.swap(areas_);
  if (view_.host() == nullptr) return;
  platform::rect const visible = visible_rect_of(view_);
  auto const mark_those_not_in = [&](auto const& others, auto const& of) {
    for (platform::rect const& area : of)
      if (std::find(others.begin(), others.end(), area) == others.end())
        view_.host()->set_needs_display(area.intersection(visible));
  };
  mark_those_not_in(areas, areas_);
  mark_those_not_in(areas_, areas);
}

}  // namespace layout
