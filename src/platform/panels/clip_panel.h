#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace platform {

/// What a list of clips shows of one; UTF-8.
struct clip_entry {
  std::string title;    // its first line
  std::string remark;   // how much there is of it; may be empty
  std::string preview;  // its beginning
};

/// Lets the user choose an earlier clip. Modal and synchronous (waiting.h); closes when another
/// window gets the keys.
class clip_panel {
 public:
  virtual ~clip_panel() = default;
  using selection_observer = std::function<void(std::size_t)>;

  /// The number of the chosen one, of which `selected` is proposed; nothing when cancelled.
  /// `did_select` hears of each one that the user goes to meanwhile.
  std::optional<std::size_t> run(std::vector<clip_entry> const& clips, std::size_t selected,
                                 selection_observer const& did_select);

 protected:
  virtual std::optional<std::size_t> ask(std::vector<clip_entry> const& clips, std::size_t selected,
                                         selection_observer const& did_select) = 0;
};

}  // namespace platform
