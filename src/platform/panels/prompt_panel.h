#pragma once

#include <optional>
#include <string>

namespace platform {

/// A question that is answered with a line of text. Modal and synchronous (waiting.h).
class prompt_panel {
 public:
  virtual ~prompt_panel() = default;
  /// What the user has typed in place of `initial`, as UTF-8; nothing when cancelled.
  std::optional<std::string> run(std::string const& title, std::string const& text,
                                 std::string const& initial);

 protected:
  virtual std::optional<std::string> ask(std::string const& title, std::string const& text,
                                         std::string const& initial) = 0;
};

}  // namespace platform
