#include "typing/completion_helper.h"

#include "actions/word_units.h"
#include "platform/desktop.h"
#include "text/cluster.h"
#include "text/views/view.h"
#include "typing/nearest_words.h"
#include "typing/scoped_completions.h"
#include "typing/typed_view.h"

#include <chrono>
#include <limits>
#include <optional>
#include <utility>

namespace text {
namespace {

using clock = std::chrono::steady_clock;

constexpr auto silent_wait = std::chrono::milliseconds(500);
constexpr std::size_t units_between_looks = 1 << 16;  // far below a millisecond
constexpr std::size_t units_of_slice = 1 << 18;
constexpr double between_slices = 0.002;  // seconds
constexpr std::size_t all = std::numeric_limits<std::size_t>::max();

// Where typing is repeated elsewhere, inserting a candidate changes more than its word.
bool is_repeated(view const& view) {
  return !view.mirror_observer.mirrors.empty() ||
         (view.snippet_observer && view.snippet_observer->is_running());
}

}  // namespace

completion_helper::completion_helper(text::view& view) : view_(view) {}
completion_helper::~completion_helper() = default;

bool completion_helper::setup(typing::typed_view& text_view, platform::responder& first) {
  // Words that begin like the only candidate would have been candidates, too.
  bool const knows_words =
      stands_as_inserted() && words_ != nullptr && words_->is_complete() && !is_repeated(view_);
  timer_.reset();
  words_.reset();
  offered_.clear();
  inserted_ = current_ = 0;
  is_seen_ = text_view.isSeen();
  revision_ = view_.storage->current_memento;
  if (view_.is_in_column_mode()) return false;
  view_iterator const caret = view_.selection.first();
  if (caret.offset != 0) return false;
  iterator const start = actions::search_backward(caret, actions::is_not_word_char).base;
  if (start == caret.base) return false;
  unit_view const line = view_.storage->line_units(start.line);
  prefix_length_ = caret.base.column - start.column;
  std::u16string const prefix(line.substr(start.column, prefix_length_));
  plist::value const settings = text_view.stylesForCaretWait(true);
  if (!typing::disables_words(settings) && !knows_words)
    words_ = std::make_unique<typing::nearest_words>(*view_.storage, start.pos(),
                                                     typing::end_of_word(line, start.column),
                                                     std::vector<std::u16string>{prefix});
  auto offered = typing::scoped_completions(settings, prefix, first);
  if (!offered) return false;
  for (std::u16string& word : *offered)
    if (word.size() > prefix.size() && word.starts_with(prefix) &&
        is_cluster_start(word, prefix.size()))
      offered_.push_back(std::move(word));
  if (view_.storage->current_memento != revision_) return false;
  bool const changes_more = view_.has_selection() || is_repeated(view_);
  return look_until(changes_more || !is_seen_ ? all : 1) && count() > 0;
}

bool completion_helper::is_complete() const {
  return words_ == nullptr || words_->is_complete();
}

std::size_t completion_helper::count() const {
  std::size_t const words = words_ == nullptr ? 0 : words_->words().size();
  return is_complete() ? words + offered_.size() : words;
}

std::u16string const& completion_helper::match(std::size_t index) const {
  std::size_t const words = words_ == nullptr ? 0 : words_->words().size();
  return index < words ? words_->words()[index] : offered_[index - words];
}

// True if there are so many candidates, or all are known; false if the user has given up.
bool completion_helper::look_until(std::size_t wanted) {
  bool const was_complete = is_complete();
  auto const begun = clock::now();
  platform::busy_panel& panel = platform::desktop::current().busy();
  bool is_cancelled = false;
  std::optional<platform::waiting::scope> scope;
  while (!is_cancelled && !is_complete() && count() < wanted) {
    words_->look_further(units_between_looks);
    if (!panel.is_wanted() || clock::now() < begun + silent_wait) continue;
    if (!scope) {
      scope.emplace(platform::desktop::current().waits(), [&] { is_cancelled = true; });
      panel.show("Searching\u2026");
    }
    if (panel.handle_events(0)) is_cancelled = true;
  }
  if (scope) panel.end();
  if (is_complete() && !was_complete)
    std::erase_if(offered_, [&](auto const& word) { return words_->contains(word); });
  return !is_cancelled;
}

bool completion_helper::stands_as_inserted() const {
  return inserted_ != 0 && view_.storage->current_memento == revision_ && !view_.has_selection() &&
         view_.selection.current_mark == end_;
}

bool completion_helper::can_advance() {
  return stands_as_inserted() && look_until(2) && count() > 1;
}

bool completion_helper::next() {
  if (!look_until(current_ + 2)) return false;
  current_ = current_ + 1 < count() ? current_ + 1 : 0;
  return true;
}

bool completion_helper::previous() {
  if (current_ == 0 && !look_until(all)) return false;
  current_ = (current_ == 0 ? count() : current_) - 1;
  return true;
}

// In overwrite mode a candidate leaves no blanks.
void completion_helper::insert() {
  bool const overwrite_mode = std::exchange(view_.overwrite_mode, false);
  if (inserted_ == 0) {
    view_.erase_selection();
  } else {
    view_iterator const first(&view_, end_.base - static_cast<std::ptrdiff_t>(inserted_));
    view_.selection.select(first, end_, false);
  }
  unit_view const rest = unit_view(match(current_)).substr(prefix_length_);
  view_.insert(rest.begin(), rest.end());
  view_.overwrite_mode = overwrite_mode;
  inserted_ = rest.size();
  end_ = view_.selection.current_mark;
  revision_ = view_.storage->current_memento;
  look_later();
}

void completion_helper::look_later() {
  if (timer_ != nullptr || is_complete() || !is_seen_) return;
  timer_ = platform::desktop::current().loop().schedule(between_slices, true,
                                                        [this] { look_at_slice(); });
}

void completion_helper::look_at_slice() {
  if (view_.storage->current_memento == revision_ && !is_complete()) {
    words_->look_further(units_of_slice);
    if (!is_complete()) return;
    std::erase_if(offered_, [&](auto const& word) { return words_->contains(word); });
  }
  timer_.reset();
}

}  // namespace text
