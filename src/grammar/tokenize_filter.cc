#include "grammar/tokenize_filter.h"

#include <algorithm>
#include <cstdio>

#include "platform/desktop.h"

namespace grammar {
namespace {

platform::run_loop* main_loop() {
  platform::desktop* const desktop = platform::desktop::current_or_null();
  return desktop ? &desktop->loop() : nullptr;
}

auto at(std::size_t index) {
  return static_cast<std::ptrdiff_t>(index);
}

}  // namespace

tokenize_filter::tokenize_filter(text::storage& storage)
    : storage_(storage),
      loop_(main_loop()),
      lines_(storage.lines()),
      last_dirty_(storage.lines()),
      reset_display_(std::make_shared<std::function<void()>>()),
      thread_([this] { work(); }) {}

tokenize_filter::~tokenize_filter() {
  {
    std::lock_guard lock(storage_.mutex);
    worker_should_ = command::stop;
    discard_ = true;
    worker_wait_.notify_one();
  }
  thread_.join();
}

bool tokenize_filter::set_rules(std::shared_ptr<catalogue const> all_rules, unsigned start_rule) {
  if (all_rules == all_rules_ && start_rule == start_rule_) return false;
  std::lock_guard lock(storage_.mutex);
  all_rules_ = std::move(all_rules);
  start_rule_ = start_rule;
  bool const is_grammar = all_rules_ && start_rule_ < all_rules_->size();
  paths_ = is_grammar ? std::make_shared<path_tree>(*all_rules_, start_rule_) : nullptr;
  lines_.assign(storage_.lines(), line_tokens());
  references_.clear();
  reparse_from(0, storage_.lines());
  return true;
}

void tokenize_filter::set_reset_display(std::function<void()> reset_display) {
  *reset_display_ = std::move(reset_display);
}

std::optional<std::pair<std::size_t, std::size_t>> tokenize_filter::take_redraw_range() {
  std::lock_guard lock(storage_.mutex);
  return std::exchange(redraw_, std::nullopt);
}

bool tokenize_filter::wait_for(std::size_t line, std::chrono::milliseconds limit) {
  std::unique_lock lock(storage_.mutex);
  auto const is_parsed = [&] {
    return !paths_ || first_dirty_ > line || first_dirty_ >= last_dirty_;
  };
  if (is_parsed()) return true;
  requested_line_ = line;
  bool const parsed = main_wait_.wait_for(lock, limit, is_parsed);
  requested_line_.reset();
  return parsed;
}

bit_stack::storage tokenize_filter::graph_path(text::pos at) const {
  if (!paths_) return {};
  if (at.line + 1 == storage_.lines() && at.column > 0 && at.column == storage_.size(at.line))
    --at.column;
  return paths_->path(lines_[at.line].at(at.column).path);
}

bit_stack::storage tokenize_filter::graph_path_for_selection(text::selection const& selection,
                                                             bool wait) {
  text::iterator const caret = selection.last_mark.base, first = selection.first_mark.base;
  if (wait) wait_for(caret.line);
  std::lock_guard lock(storage_.mutex);
  bit_stack::storage path = graph_path(caret.pos());
  if (!paths_ || selection.empty()) return path;
  auto const intersect = [&](text::iterator const& with) {
    path = intersect_bit_stack(path, graph_path(with.pos()), *all_rules_, start_rule_);
  };
  intersect(first);
  for (text::iterator const& mark : {caret, first})
    if (mark.line != 0 || mark.column != 0) intersect(mark - 1);
  return path;
}

std::vector<std::string> tokenize_filter::scopes(bit_stack::storage const& path) const {
  if (!paths_) return {};
  return expand_bit_stack(path, *all_rules_, start_rule_);
}

void tokenize_filter::reparse_from(std::size_t first, std::size_t last) {
  first_dirty_ = std::min(first_dirty_, first);
  last_dirty_ = std::max(last_dirty_, last);
  worker_should_ = command::changed;
  discard_ = true;
  worker_wait_.notify_one();
}

void tokenize_filter::did_insert(text::pos const& from, text::pos const& to) {
  std::size_t const added = to.line - from.line;
  line_tokens& tokens = lines_[from.line];
  auto const moved = tokens.from(from.column);
  path_tree::id const path = moved.empty() ? tokens.back().path : moved.front().path;
  tokens.erase_from(from.column);
  lines_.insert(lines_.begin() + at(from.line + std::size_t{1}), added, line_tokens(path));
  for (auto const& token : moved)
    lines_[to.line].set(token.column - from.column + to.column, token.path);
  if (lines_.size() != storage_.lines())
    std::printf("*** insert %zu (tokens) != %zu (storage)\n", lines_.size(), storage_.lines());
  if (added > 0 && !references_.empty()) insert_references(from, added);
  filter::did_insert(from, to);
  if (first_dirty_ < last_dirty_ && last_dirty_ > from.line) last_dirty_ += added;
  if (paths_) reparse_from(from.line, to.line + std::size_t{1});
}

void tokenize_filter::insert_references(text::pos const& from, std::size_t added) {
  std::size_t const first_moved = from.line + (from.column != 0 ? 1 : 0);
  std::map<std::size_t, reference_stack> moved;
  for (auto& [line, stack] : references_)
    moved.emplace(line < first_moved ? line : line + added, std::move(stack));
  references_ = std::move(moved);
  if (first_moved == 0) return;
  auto const source = references_.find(first_moved - 1);
  if (source == references_.end()) return;
  for (std::size_t i = 0; i < added; ++i) references_[first_moved + i] = source->second;
}

void tokenize_filter::will_erase(text::pos const& from, text::pos const& to) {
  filter::will_erase(from, to);
  auto moved = lines_[to.line].from(to.column);
  if (to.column > lines_[to.line].back().column) moved = {{to.column, lines_[to.line].back().path}};
  line_tokens& tokens = lines_[from.line];
  tokens.erase_from(from.column + 1);
  for (auto const& token : moved) tokens.set(token.column - to.column + from.column, token.path);
  lines_.erase(lines_.begin() + at(from.line + std::size_t{1}),
               lines_.begin() + at(to.line + std::size_t{1}));
  if (to.line != from.line && !references_.empty()) erase_references(from.line, to.line);
}

void tokenize_filter::erase_references(std::size_t from, std::size_t to) {
  std::map<std::size_t, reference_stack> kept;
  for (auto& [line, stack] : references_)
    if (line < from || line >= to)
      kept.emplace(line < from ? line : line - (to - from), std::move(stack));
  references_ = std::move(kept);
}

void tokenize_filter::did_erase(text::iterator const& at, int count) {
  filter::did_erase(at, count);
  if (lines_.size() != storage_.lines())
    std::printf("*** erase %zu (tokens) != %zu (storage)\n", lines_.size(), storage_.lines());
  if (paths_) reparse_from(at.line, at.line + std::size_t{1});
}

void tokenize_filter::work() {
  std::unique_lock lock(storage_.mutex);
  while (worker_should_ != command::stop) {
    if (!paths_ || first_dirty_ >= last_dirty_) {
      rest(lock);
    } else if (first_dirty_ >= storage_.lines()) {
      first_dirty_ = last_dirty_ = storage_.lines();
    } else {
      if (worker_should_ == command::changed) take_rules();
      parse_dirty_line(lock);
    }
  }
}

// The state in which the line before the dirty ones ends is all that is needed to go on from there.
void tokenize_filter::take_rules() {
  if (parser_paths_ != paths_) {
    parser_ = std::make_unique<line_parser>(all_rules_, start_rule_, paths_);
    parser_paths_ = paths_;
  }
  parser_->setup_stack(first_dirty_ == 0 ? 0 : lines_[first_dirty_ - 1].back().path);
}

void tokenize_filter::parse_dirty_line(std::unique_lock<std::recursive_mutex>& lock) {
  std::size_t const line = first_dirty_;
  bool const is_last = line + 1 == storage_.lines();
  std::u16string units(storage_.line_units(line));
  if (!is_last) units += u'\n';
  worker_should_ = command::go_on;
  discard_ = false;
  reference_stack references;
  if (auto const before = references_.find(line - 1); before != references_.end())
    references = before->second;
  line_tokens tokens;
  lock.unlock();
  parser_->parse_line(std::move(units), is_last, tokens, references, discard_);
  lock.lock();
  if (worker_should_ == command::go_on) store(line, std::move(tokens), std::move(references));
}

void tokenize_filter::dirty_next(std::size_t line) {
  last_dirty_ = std::max(last_dirty_, std::min(line + 2, storage_.lines()));
}

void tokenize_filter::store(std::size_t line, line_tokens tokens, reference_stack references) {
  auto const known = references_.find(line);
  if (references != (known == references_.end() ? reference_stack() : known->second)) {
    dirty_next(line);
    if (references.empty())
      references_.erase(known);
    else
      references_[line] = std::move(references);
  }
  if (tokens != lines_[line]) {
    first_change_ = std::min(first_change_, line);
    if (tokens.back().path != lines_[line].back().path) dirty_next(line);
    lines_[line] = std::move(tokens);
  }
  first_dirty_ = line + 1;
  if (requested_line_ && first_dirty_ > *requested_line_) main_wait_.notify_one();
}

void tokenize_filter::rest(std::unique_lock<std::recursive_mutex>& lock) {
  main_wait_.notify_one();
  if (paths_ && last_dirty_ > first_change_) {
    auto const [first, last] = redraw_.value_or(std::pair(first_change_, last_dirty_));
    redraw_ = {std::min(first, first_change_), std::max(last, last_dirty_)};
    post_redraw();
  }
  first_change_ = no_change;
  first_dirty_ = storage_.lines();
  last_dirty_ = 0;
  worker_should_ = command::idle;
  worker_wait_.wait(lock, [this] { return worker_should_ != command::idle; });
}

// The filter may be gone when the main thread gets there.
void tokenize_filter::post_redraw() {
  if (loop_ == nullptr) return;
  loop_->post([callback = std::weak_ptr(reset_display_)] {
    auto const reset_display = callback.lock();
    if (reset_display && *reset_display) (*reset_display)();
  });
}

}  // namespace grammar
