#pragma once

#include "platform/completion_list.h"
#include "platform/event.h"
#include "platform/run_loop.h"
#include "text/pos.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class WynTextView;
namespace typing {
class completion_candidates;
}

/// The pop-up list of completions, of which there is one: it follows what is typed of the word that
/// it was opened for, and sees the keys of that view first. Main thread only.
class WynCompletionManager {
 public:
  static WynCompletionManager& sharedInstance();

  /// Shows what the word before the caret can become. False if there is nothing, and for a view
  /// that is never visible.
  bool open(WynTextView& view);
  void close();
  void closeFor(WynTextView const& view);
  bool isOpenFor(WynTextView const& view) const { return view_ == &view; }
  /// True if the key was for the list.
  bool sendEvent(WynTextView const& view, platform::key_event const& event);
  /// Its text or caret may be others: shows what fits now, or closes.
  void follow(WynTextView const& view);

 private:
  WynCompletionManager();
  ~WynCompletionManager();

  platform::completion_list* list() const;
  bool followsWord(std::u16string& typed) const;
  void find();
  void show();
  void accept(std::size_t row);

  WynTextView* view_ = nullptr;
  std::unique_ptr<typing::completion_candidates> candidates_;
  std::unique_ptr<platform::timer> timer_;
  text::pos start_;
  std::size_t lines_ = 0;
  std::u16string typed_;
  std::vector<platform::completion_row> rows_;
  std::size_t selected_ = 0;
};
