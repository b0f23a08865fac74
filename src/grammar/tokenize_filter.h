#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "grammar/line_parser.h"
#include "text/storage.h"
#include "text/views/filter.h"
#include "text/views/selection.h"

namespace platform {
class run_loop;
}

namespace grammar {

/// The filter of a view that knows the scope of each place in the text. It changes no coordinates:
/// it keeps the tokens of each line, moves them with each edit, so that what is drawn right away
/// looks sensible, and has a thread of its own parse what changed, from the first dirty line down,
/// until a line ends in the state in which it ended before.
///
/// All state is under the mutex of the storage. The worker holds that except while it parses some
/// lines, of which it has a copy, for a millisecond at most if they are ordinary lines; a change
/// meanwhile makes it throw the result away. While there is a lot to parse it asks for what is
/// done to be drawn every few milliseconds. There is no thread, and nothing is parsed, before
/// there is demand, by `start` or by waiting: a macro over hidden files costs nothing.
/// When the system gives no thread, only waiting has lines parsed, on the main thread.
///
///     auto filter = std::make_unique<grammar::tokenize_filter>(storage);
///     filter->set_rules(all_rules, all_rules->index_named("source.c"));
///     view.install_tokenize_filter(std::move(filter));
///
/// Main thread. The storage must outlive the filter.
class tokenize_filter : public text::filter {
 public:
  /// How long the main thread waits for the worker; then it continues with what is known.
  static constexpr std::chrono::milliseconds patience{100};

  explicit tokenize_filter(text::storage& storage);
  ~tokenize_filter() override;

  /// Chooses a grammar and forgets all tokens; null or an index that isn't there for none. False if
  /// it is the one chosen already.
  bool set_rules(std::shared_ptr<catalogue const> all_rules, unsigned start_rule);
  std::shared_ptr<catalogue const> const& all_rules() const { return all_rules_; }
  unsigned start_rule() const { return start_rule_; }

  /// Called by the main loop after lines have got other tokens; see `take_redraw_range`.
  void set_reset_display(std::function<void()> reset_display);
  /// The lines, half open, that have changed since the last call.
  std::optional<std::pair<std::size_t, std::size_t>> take_redraw_range();

  /// Has the worker parse from now on; it goes on until the filter goes. The caller is about to
  /// read tokens, or may do so at any time, as a window does.
  void start();

  /// Starts, and waits until `line` is parsed, but not longer than `limit`; then returns whether it
  /// is. The caller must not hold the storage's mutex.
  bool wait_for(std::size_t line, std::chrono::milliseconds limit = patience);
  /// Whether memory has run out for the worker: some lines that count as parsed may lack tokens.
  bool lacks_memory() const { return lacks_memory_; }

  /// The path at a position; at the text's end that of the last unit. Under the storage's mutex.
  bit_stack::storage graph_path(text::pos at) const;
  /// The path of what would be typed at a position: what the units on both sides are in, at a
  /// line's end what the last one is in. Under the storage's mutex.
  bit_stack::storage graph_path_between(text::pos at) const;
  /// What is common to the paths in and at the ends of a selection, after waiting if `wait`.
  /// Starts.
  bit_stack::storage graph_path_for_selection(text::selection const& selection, bool wait);
  /// The names of the scopes on a path of this view; none without a grammar.
  std::vector<std::string> scopes(bit_stack::storage const& path) const;
  /// The runs of a line: columns and paths, which `paths` knows. Under the storage's mutex, after
  /// the start.
  line_tokens const& tokens(std::size_t line) const { return lines_[line]; }
  /// Bytes that the tokens of all lines take. Under the storage's mutex.
  std::size_t memory() const;
  path_tree const* paths() const { return paths_.get(); }

  using filter::did_insert;
  using filter::will_erase;
  void did_insert(text::pos const& from, text::pos const& to) override;
  void will_erase(text::pos const& from, text::pos const& to) override;
  void did_erase(text::iterator const& at, int count) override;

 private:
  enum class command { go_on, changed, idle, stop };
  using lock_type = std::unique_lock<text::wanted_mutex>;

  bool keeps_tokens() const { return !lines_.empty(); }
  void forget_tokens();
  void reparse_from(std::size_t first, std::size_t last);
  void insert_references(text::pos const& from, std::size_t added);
  /// Reports a fault of ours: lines of tokens that are not those of the text.
  void check_line_count(std::string const& after) const;
  void erase_references(std::size_t from, std::size_t to);

  // On the worker's thread, but for `parse_some` when there is none.
  void work();
  void give_up();
  void parse_some(lock_type& lock);
  void take_rules();
  bool pass_plain_lines(lock_type& lock);
  void tell_progress();
  void copy_dirty_lines();
  void parse_dirty_lines(lock_type& lock);
  void store_parsed_lines(std::size_t first);
  void store(std::size_t line, line_tokens& tokens, reference_stack const& references);
  void dirty_next(std::size_t line);
  void rest(lock_type& lock);
  void ask_for_redraw(std::size_t last);
  void post_redraw();

  text::storage& storage_;
  platform::run_loop* loop_;
  std::shared_ptr<catalogue const> all_rules_;
  unsigned start_rule_ = 0;
  std::shared_ptr<path_tree> paths_;
  std::vector<line_tokens> lines_;                     ///< from the start on
  std::map<std::size_t, reference_stack> references_;  ///< at the ends of lines; not the empty ones
  std::condition_variable_any main_wait_, worker_wait_;
  std::size_t first_dirty_ = 0, last_dirty_ = 0;  ///< half open
  std::optional<std::size_t> requested_line_;     ///< for which the main thread waits
  std::optional<std::pair<std::size_t, std::size_t>> redraw_;
  command worker_should_ = command::changed;
  std::atomic<bool> discard_ = false;  ///< what the worker is parsing is of no use
  std::shared_ptr<std::function<void()>> reset_display_;

  // The worker's own:
  struct copied_line {
    std::size_t begin, size;  ///< in `copy_`
    bool is_last;
    line_tokens tokens;
    reference_stack references;  ///< at its end
  };
  using clock = std::chrono::steady_clock;
  std::unique_ptr<line_parser> parser_;
  std::shared_ptr<path_tree> parser_paths_;
  std::u16string copy_;
  std::vector<copied_line> batch_;
  std::size_t batch_size_ = 1;  ///< in lines
  static constexpr std::size_t no_change = ~std::size_t{0};
  std::size_t first_change_ = no_change;
  std::atomic<bool> lacks_memory_ = false;
  clock::time_point next_redraw_;

  std::thread thread_;
};

}  // namespace grammar
