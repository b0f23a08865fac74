#include "grammar/tokenize_filter.h"

#include <algorithm>
#include <new>

#include "platform/desktop.h"
#include "platform/log.h"
#include "platform/system/start_thread.h"

namespace grammar {
namespace {

// What the worker parses at one go, in lines and code units.
constexpr std::size_t max_batch_lines = 256, max_batch_units = 8192;
// What it looks at under the mutex before it tests whether another thread waits for that.
constexpr std::size_t max_plain_lines = 256, max_plain_units = 16384;
// While it has more to do, the first part is to be drawn soon, and then as often as the eye sees.
constexpr auto first_redraw = std::chrono::milliseconds(5);
constexpr auto redraw_interval = std::chrono::milliseconds(30);

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
      reset_display_(std::make_shared<std::function<void()>>()) {}

tokenize_filter::~tokenize_filter() {
  if (!thread_.joinable()) return;
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
  references_.clear();
  if (keeps_tokens()) forget_tokens();
  return true;
}

void tokenize_filter::set_reset_display(std::function<void()> reset_display) {
  *reset_display_ = std::move(reset_display);
}

std::optional<std::pair<std::size_t, std::size_t>> tokenize_filter::take_redraw_range() {
  std::lock_guard lock(storage_.mutex);
  return std::exchange(redraw_, std::nullopt);
}

void tokenize_filter::forget_tokens() {
  lines_.assign(storage_.lines(), line_tokens());
  reparse_from(0, storage_.lines());
}

void tokenize_filter::start() {
  if (!keeps_tokens()) {
    std::lock_guard lock(storage_.mutex);
    forget_tokens();
  }
  // One that can't be had is asked for again the next time.
  if (!thread_.joinable()) (void)platform::start_thread(thread_, [this] { work(); });
}

bool tokenize_filter::wait_for(std::size_t line, std::chrono::milliseconds limit) {
  start();
  std::unique_lock lock(storage_.mutex);
  auto const is_parsed = [&] {
    return !paths_ || first_dirty_ > line || first_dirty_ >= last_dirty_;
  };
  if (is_parsed()) return true;
  if (!thread_.joinable()) {
    auto const until = clock::now() + limit;
    while (!is_parsed() && clock::now() < until) parse_some(lock);
    return is_parsed();
  }
  requested_line_ = line;
  bool const parsed = main_wait_.wait_for(lock, limit, is_parsed);
  requested_line_.reset();
  return parsed;
}

bit_stack::storage tokenize_filter::graph_path(text::pos at) const {
  if (!paths_ || !keeps_tokens()) return {};
  if (at.line + 1 == storage_.lines() && at.column > 0 && at.column == storage_.size(at.line))
    --at.column;
  return paths_->path(lines_[at.line].at(at.column).path);
}

bit_stack::storage tokenize_filter::graph_path_between(text::pos at) const {
  if (!paths_ || !keeps_tokens() || (at.line == 0 && at.column == 0)) return graph_path(at);
  bool const begins_line = at.column == 0;
  line_tokens const& before = lines_[begins_line ? at.line - 1 : at.line];
  std::size_t const column = begins_line ? storage_.size(at.line - 1) : at.column - 1;
  bit_stack::storage const path = paths_->path(before.at(column).path);
  if (!begins_line && at.column == storage_.size(at.line)) return path;
  return intersect_bit_stack(path, paths_->path(lines_[at.line].at(at.column).path), *all_rules_,
                             start_rule_);
}

bit_stack::storage tokenize_filter::graph_path_for_selection(text::selection const& selection,
                                                             bool wait) {
  text::iterator const caret = selection.last_mark.base, first = selection.first_mark.base;
  start();
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

std::size_t tokenize_filter::memory() const {
  std::size_t sum = lines_.capacity() * sizeof(line_tokens);
  for (line_tokens const& line : lines_) sum += line.memory();
  return sum;
}

void tokenize_filter::reparse_from(std::size_t first, std::size_t last) {
  first_dirty_ = std::min(first_dirty_, first);
  last_dirty_ = std::max(last_dirty_, last);
  worker_should_ = command::changed;
  discard_ = true;
  worker_wait_.notify_one();
}

void tokenize_filter::did_insert(text::pos const& from, text::pos const& to) {
  if (!keeps_tokens()) return filter::did_insert(from, to);
  std::size_t const added = to.line - from.line;
  token_list before = lines_[from.line].list();
  auto const moved = before.from(from.column);
  path_tree::id const path = moved.empty() ? before.tokens().back().path : moved.front().path;
  before.erase_from(from.column);
  lines_[from.line] = line_tokens(before);
  lines_.insert(lines_.begin() + at(from.line + std::size_t{1}), added, line_tokens(path));
  token_list after = lines_[to.line].list();
  for (auto const& token : moved) after.set(token.column - from.column + to.column, token.path);
  lines_[to.line] = line_tokens(after);
  check_line_count("insert");
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
  if (!keeps_tokens()) return;
  token const last = lines_[to.line].back();
  auto moved = lines_[to.line].list().from(to.column);
  if (to.column > last.column) moved = {{to.column, last.path}};
  token_list tokens = lines_[from.line].list();
  tokens.erase_from(from.column + 1);
  for (auto const& token : moved) tokens.set(token.column - to.column + from.column, token.path);
  lines_[from.line] = line_tokens(tokens);
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

void tokenize_filter::check_line_count(std::string const& after) const {
  if (lines_.size() == storage_.lines()) return;
  platform::log_text("*** " + after + " " + std::to_string(lines_.size()) +
                     " (tokens) != " + std::to_string(storage_.lines()) + " (storage)\n");
}

void tokenize_filter::did_erase(text::iterator const& at, int count) {
  filter::did_erase(at, count);
  if (!keeps_tokens()) return;
  check_line_count("erase");
  if (paths_) reparse_from(at.line, at.line + std::size_t{1});
}

void tokenize_filter::work() {
  std::unique_lock lock(storage_.mutex);
  next_redraw_ = clock::now() + first_redraw;
  while (worker_should_ != command::stop) try {
      if (!paths_ || first_dirty_ >= last_dirty_)
        rest(lock);
      else
        parse_some(lock);
    } catch (std::bad_alloc const&) {
      if (!lock.owns_lock()) lock.lock();
      give_up();
    }
}

// What isn't parsed by now stays as it is until the text around it changes.
void tokenize_filter::give_up() {
  lacks_memory_ = true;
  parser_.reset();
  parser_paths_.reset();
  first_dirty_ = storage_.lines();
  last_dirty_ = 0;
  first_change_ = no_change;
}

void tokenize_filter::parse_some(lock_type& lock) {
  if (first_dirty_ >= storage_.lines()) {
    first_dirty_ = last_dirty_ = storage_.lines();
    return;
  }
  if (worker_should_ == command::changed) take_rules();
  if (!pass_plain_lines(lock)) parse_dirty_lines(lock);
}

// The state in which the line before the dirty ones ends is all that is needed to continue from
// there.
void tokenize_filter::take_rules() {
  if (parser_paths_ != paths_) {
    parser_ = std::make_unique<line_parser>(all_rules_, start_rule_, paths_);
    parser_paths_ = paths_;
  }
  parser_->setup_stack(first_dirty_ == 0 ? 0 : lines_[first_dirty_ - 1].back().path);
}

// In a long comment or text there may be nothing to find line after line. Such lines are passed
// where they stand, without a copy, so that all of a large text is right in a blink.
bool tokenize_filter::pass_plain_lines(lock_type& lock) {
  std::size_t const first = first_dirty_;
  if (references_.count(first - 1) != 0) return false;
  worker_should_ = command::go_on;
  std::size_t const end = std::min(storage_.lines() - 1, first + max_plain_lines);
  path_tree::id const path = parser_->plain_path();
  std::size_t left = max_plain_units;
  for (std::size_t line = first; line < end && line < last_dirty_; ++line) {
    text::unit_view const units = storage_.line_units(line);
    if (units.size() > left || !parser_->is_plain(units)) break;
    left -= units.size();
    line_tokens plain(path);
    store(line, plain, {});
  }
  if (first_dirty_ == first) return false;
  batch_size_ = 1;
  tell_progress();
  if (!storage_.mutex.is_wanted()) return true;
  lock.unlock();
  while (storage_.mutex.is_wanted()) std::this_thread::yield();
  lock.lock();
  return true;
}

void tokenize_filter::tell_progress() {
  if (requested_line_ && first_dirty_ > *requested_line_) main_wait_.notify_one();
  if (clock::now() >= next_redraw_ && first_dirty_ < last_dirty_) ask_for_redraw(first_dirty_);
}

// Lines that aren't dirty are copied too, for often the line before makes them so; as this is
// unknown, there are few at first.
void tokenize_filter::copy_dirty_lines() {
  copy_.clear();
  batch_.clear();
  std::size_t const end = std::min(storage_.lines(), first_dirty_ + batch_size_);
  for (std::size_t line = first_dirty_; line < end && copy_.size() < max_batch_units; ++line) {
    bool const is_last = line + 1 == storage_.lines();
    std::size_t const begin = copy_.size();
    copy_ += storage_.line_units(line);
    if (!is_last) copy_ += u'\n';
    batch_.push_back({begin, copy_.size() - begin, is_last, line_tokens(), {}});
  }
}

void tokenize_filter::parse_dirty_lines(lock_type& lock) {
  std::size_t const first = first_dirty_;
  copy_dirty_lines();
  batch_size_ = std::min(batch_size_ * 2, max_batch_lines);
  worker_should_ = command::go_on;
  discard_ = false;
  reference_stack references;
  if (auto const before = references_.find(first - 1); before != references_.end())
    references = before->second;
  lock.unlock();
  for (copied_line& line : batch_) {
    std::u16string_view const units(copy_.data() + line.begin, line.size);
    if (!parser_->parse_line(units, line.is_last, line.tokens, references, discard_)) break;
    line.references = references;
  }
  lock.lock();
  if (worker_should_ == command::go_on) store_parsed_lines(first);
}

void tokenize_filter::store_parsed_lines(std::size_t first) {
  std::size_t i = 0;
  for (; i < batch_.size() && first_dirty_ < last_dirty_; ++i)
    store(first + i, batch_[i].tokens, batch_[i].references);
  // The parser is beyond the line with which it is to continue.
  if (i < batch_.size()) worker_should_ = command::changed;
  tell_progress();
}

void tokenize_filter::dirty_next(std::size_t line) {
  last_dirty_ = std::max(last_dirty_, std::min(line + 2, storage_.lines()));
}

// Leaves the old tokens in `tokens`, to be freed without the mutex.
void tokenize_filter::store(std::size_t line, line_tokens& tokens,
                            reference_stack const& references) {
  if (!references.empty() || !references_.empty()) {
    auto const known = references_.find(line);
    if (references != (known == references_.end() ? reference_stack() : known->second)) {
      dirty_next(line);
      if (references.empty())
        references_.erase(known);
      else
        references_[line] = references;
    }
  }
  if (tokens != lines_[line]) {
    first_change_ = std::min(first_change_, line);
    if (tokens.back().path != lines_[line].back().path) dirty_next(line);
    std::swap(lines_[line], tokens);
  }
  first_dirty_ = line + 1;
}

void tokenize_filter::ask_for_redraw(std::size_t last) {
  next_redraw_ = clock::now() + redraw_interval;
  if (last <= first_change_) return;
  auto const [first_known, last_known] = redraw_.value_or(std::pair(first_change_, last));
  redraw_ = {std::min(first_known, first_change_), std::max(last_known, last)};
  first_change_ = no_change;
  post_redraw();
}

void tokenize_filter::rest(lock_type& lock) {
  main_wait_.notify_one();
  if (paths_) ask_for_redraw(last_dirty_);
  first_change_ = no_change;
  first_dirty_ = storage_.lines();
  last_dirty_ = 0;
  worker_should_ = command::idle;
  worker_wait_.wait(lock, [this] { return worker_should_ != command::idle; });
  batch_size_ = 1;
  next_redraw_ = clock::now() + first_redraw;
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
