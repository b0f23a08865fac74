#pragma once

#include "plist/value.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace platform {

/// Names of what a pasteboard can hold. Other names are private to this program's windows.
namespace pasteboard_type {
inline constexpr std::string_view text = "text";        // a string
inline constexpr std::string_view file_list = "files";  // an array of absolute paths
inline constexpr std::string_view color = "color";      // an array: red, green, blue from 0 to 1
inline constexpr std::string_view secret = "secret";    // true: a password; may not be kept
inline constexpr std::string_view quirnote = "WynQuirnotePboardType";  // see WynTextView
}  // namespace pasteboard_type

/// Representations of one thing, by type: what is on a pasteboard, or is dragged.
class pasteboard_content {
 public:
  virtual ~pasteboard_content() = default;

  /// The representation under `type`, or nothing.
  virtual plist::value get(std::string_view type) const = 0;
};

/// One clipboard. Main thread only.
class pasteboard : public pasteboard_content {
 public:
  /// Replaces all content by `types`, a dictionary from type name to value.
  virtual void set(plist::dictionary types) = 0;

  /// Grows whenever the content changes, by whomever.
  virtual std::uint64_t change_count() const = 0;

  /// Calls `then`, at once or in a later turn of the loop, when the program that has the content
  /// answers: never, if it hangs. Asking it for the content would wait for it. A later call takes
  /// the place of one whose answer hasn't come. Where the window system can't tell, at once.
  virtual void when_answered(std::function<void()> then) { then(); }
};

}  // namespace platform
