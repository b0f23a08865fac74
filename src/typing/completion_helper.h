#pragma once

#include "platform/run_loop.h"
#include "text/views/view_iterator.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace typing {
class nearest_words;
class typed_view;
}  // namespace typing
namespace platform {
class responder;
}

namespace text {

/// Completion of the word before the caret, candidate after candidate in its place: first the words
/// of the text, the nearest first (nearest_words), then what the scope at the caret offers
/// (typing/scoped_completions.h). Belongs to a view. Main thread only.
///
///     bool const goes_on = helper.can_advance();
///     if (goes_on ? helper.next() : helper.setup(text_view, responder)) helper.insert();
///
/// Only as many words are looked for as are needed; the rest follow while the user rests. What
/// takes long handles events, and Escape ends it.
class completion_helper {
 public:
  explicit completion_helper(text::view& view);
  ~completion_helper();
  completion_helper(completion_helper const&) = delete;
  completion_helper& operator=(completion_helper const&) = delete;

  /// Looks for candidates for the word before the caret, or before the selection. False if the
  /// caret isn't after a word, in column mode, without candidates, and if the user has given up.
  /// The text stays. `text_view` is that of the view, and `first` what a command's environment
  /// begins with.
  bool setup(typing::typed_view& text_view, platform::responder& first);
  /// Whether nothing has happened since the last insertion and there is another candidate.
  bool can_advance();
  /// Go to another candidate, round at the ends. False if the user has given up.
  bool next();
  bool previous();
  /// Puts the present candidate in place of the one inserted before, or of the selection.
  void insert();

 private:
  bool stands_as_inserted() const;
  bool look_until(std::size_t count);
  std::size_t count() const;
  std::u16string const& match(std::size_t index) const;
  bool is_complete() const;
  void look_later();
  void look_at_slice();

  text::view& view_;
  bool is_seen_ = false;
  uint32_t revision_ = 0;  ///< the state of the text that the search is sound for
  size_t prefix_length_ = 0;
  size_t current_ = 0;
  size_t inserted_ = 0;  ///< units before `end_`; 0 before the first insertion
  view_iterator end_;    ///< the caret after the last insertion
  std::unique_ptr<typing::nearest_words> words_;
  std::vector<std::u16string> offered_;  ///< by the scope; what is in `words_` leaves at the end
  std::unique_ptr<platform::timer> timer_;
};

}  // namespace text
