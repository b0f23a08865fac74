#include "styles/symbol_list.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <new>
#include <thread>
#include <utility>

#include "grammar/tokenize_filter.h"
#include "platform/desktop.h"
#include "platform/system/free_aside.h"
#include "styles/styled_view.h"
#include "styles/symbol_walk.h"
#include "text/views/view.h"

namespace styles {
namespace {

using namespace std::chrono_literals;

constexpr double rest = 0.5;        // seconds without a change before the list is made again
constexpr double first_wait = 0.1;  // seconds after a document is shown
constexpr double poll_period = 0.01;
// Of the walk: what isn't felt at a key press, and for how many one may wait for the mutex.
constexpr std::size_t steps_at_once = 100000, steps_of_slice = 20000;
constexpr auto pause = 100us;  // for those who wait for the mutex

bool has_tokens(styled_view const& text_view) {
  return text_view.tokenizer() != nullptr && text_view.tokenizer()->paths() != nullptr;
}

std::shared_ptr<std::vector<symbol> const> list_of(std::vector<symbol> symbols) {
  constexpr std::size_t many = 10000;
  if (symbols.size() > many) return platform::freed_aside(std::move(symbols));
  return std::make_shared<std::vector<symbol> const>(std::move(symbols));
}

}  // namespace

// A walk on a thread of its own, which may end after its list has gone. Storage and tokenizer are
// touched under the gate alone, through which the main thread takes them away.
struct symbol_list::walker {
  walker(styled_view& text_view, std::shared_ptr<std::vector<symbol> const> known)
      : storage(text_view.view()->storage),
        tokenizer(text_view.tokenizer()),
        memento(storage->current_memento),
        paths(text_view),
        former(std::move(known)) {}

  void run() {
    try {
      while (!is_cancelled && go_on()) {
        walk.give_names(paths);
        std::this_thread::yield();
      }
      walk.give_names(paths);
      is_same = walk.symbols == *former;
      if (is_same) walk.symbols = {};  // freed here
    } catch (std::bad_alloc const&) {
      is_complete = false;
    }
    former.reset();
    is_done = true;
  }
  void cancel() {
    is_cancelled = true;
    std::lock_guard const lock(gate);
    storage = nullptr;
  }

  std::mutex gate;
  text::storage* storage;
  grammar::tokenize_filter* tokenizer;
  std::uint32_t const memento;
  symbol_paths const paths;
  std::shared_ptr<std::vector<symbol> const> former;
  symbol_walk walk;
  bool is_same = false, is_complete = false, is_short = false;  // when it is done
  std::atomic<bool> is_cancelled = false, is_done = false;

 private:
  std::size_t slices_ = 0;

  // False at the end. It never waits for the storage, which the main thread may have while it waits
  // for the gate.
  bool go_on() {
    std::unique_lock lock(gate);
    if (storage == nullptr) return false;
    if (storage->mutex.is_wanted() || !storage->mutex.try_lock()) {
      lock.unlock();
      std::this_thread::sleep_for(pause);
      return true;
    }
    std::lock_guard const hold(storage->mutex, std::adopt_lock);
    auto const state = walk.go_on(*storage, *tokenizer, paths, steps_of_slice);
    is_short = ++slices_ * steps_of_slice <= steps_at_once;
    is_complete = state == symbol_walk::state::done;
    return state == symbol_walk::state::under_way;
  }
};

symbol_list::symbol_list(styled_view& text_view) : text_view_(text_view), items_(list_of({})) {}

symbol_list::~symbol_list() {
  stop_walker();
}

void symbol_list::build() {
  stop_walker();
  timer_.reset();
  memento_ = text_view_.view()->storage->current_memento;
  if (!has_tokens(text_view_)) return take({});
  text_view_.tokenizer()->start();
  text::storage& storage = *text_view_.view()->storage;
  std::unique_lock lock(storage.mutex);
  symbol_paths const paths(text_view_);
  symbol_walk whole;
  whole.go_on(storage, *text_view_.tokenizer(), paths, ~std::size_t{0});
  lock.unlock();
  whole.give_names(paths);
  take(std::move(whole.symbols));
}

void symbol_list::take(std::vector<symbol> symbols) {
  if (symbols == *items_) return;
  items_ = list_of(std::move(symbols));
  text_view_.symbolsDidChange();
}

void symbol_list::restart() {
  clear();
  is_quick_ = true;
  text_view_.symbolsDidChange();
  build_after(first_wait);
}

// Walks all tokens, so while those change it waits until the user rests. Where only the caret has
// moved the list stands.
void symbol_list::update(bool changed) {
  if (text_view_.view() == nullptr) return;
  std::uint32_t const now = text_view_.view()->storage->current_memento;
  bool const stands = walker_ != nullptr ? walker_->memento == now : memento_ == now;
  bool const is_awaited = timer_ != nullptr && walker_ == nullptr;
  if (!changed && (stands || is_awaited)) return set_current(at_caret());
  stop_walker();
  if (changed || !is_quick_ || !walk_at_once()) build_after(rest);
}

void symbol_list::build_after(double seconds) {
  stop_walker();
  timer_ = platform::desktop::current().loop().schedule(seconds, false, [this] { begin_walk(); });
}

// True when the list is there.
bool symbol_list::walk_at_once() {
  symbol_walk walk;
  if (has_tokens(text_view_)) {
    text_view_.tokenizer()->start();
    text::storage& storage = *text_view_.view()->storage;
    std::unique_lock lock(storage.mutex);
    symbol_paths const paths(text_view_);
    is_quick_ = walk.go_on(storage, *text_view_.tokenizer(), paths, steps_at_once) ==
                symbol_walk::state::done;
    lock.unlock();
    if (!is_quick_) return false;
    walk.give_names(paths);
  }
  timer_.reset();
  memento_ = text_view_.view()->storage->current_memento;
  take(std::move(walk.symbols));
  set_current(at_caret());
  return true;
}

void symbol_list::begin_walk() {
  timer_.reset();
  if (text_view_.view() == nullptr || (is_quick_ && walk_at_once())) return;
  if (platform::desktop::current().busy().is_wanted()) {
    text_view_.tokenizer()->start();
    walker_ = std::make_shared<walker>(text_view_, items_);
    std::thread thread;
    if (platform::start_thread(thread, [held = walker_] { held->run(); })) {
      thread.detach();
      timer_ = platform::desktop::current().loop().schedule(poll_period, true, [this] { poll(); });
      return;
    }
    walker_.reset();
  }
  build();
  set_current(at_caret());
}

void symbol_list::poll() {
  if (!walker_->is_done) return;
  std::shared_ptr<walker> const done = std::exchange(walker_, nullptr);
  timer_.reset();
  if (!done->is_complete || done->memento != text_view_.view()->storage->current_memento)
    return build_after(rest);
  memento_ = done->memento;
  is_quick_ = done->is_short;
  if (!done->is_same) {
    items_ = list_of(std::move(done->walk.symbols));
    text_view_.symbolsDidChange();
  }
  set_current(at_caret());
}

void symbol_list::stop_walker() {
  if (walker_ == nullptr) return;
  walker_->cancel();
  walker_.reset();
  timer_.reset();
}

void symbol_list::clear() {
  timer_.reset();
  stop_walker();
  items_ = list_of({});
  current_.clear();
}

std::string symbol_list::at_caret() const {
  std::size_t const line = text_view_.view()->selection.current_mark.base.line + std::size_t{1};
  auto const after = std::partition_point(items().begin(), items().end(),
                                          [&](symbol const& each) { return each.line <= line; });
  if (after == items().begin()) return items().empty() ? "" : "No Symbol";
  return std::prev(after)->name;
}

void symbol_list::set_current(std::string const& name) {
  if (name == current_) return;
  current_ = name;
  text_view_.currentSymbolDidChange(name);
}

}  // namespace styles
