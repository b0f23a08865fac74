#pragma once

#include "plist/value.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace platform {

/// Names of what a pasteboard can hold. Other names are private to this program's windows.
namespace pasteboard_type {
inline constexpr std::string_view text = "text";                       // a string
inline constexpr std::string_view file_list = "files";                 // an array of absolute paths
inline constexpr std::string_view quirnote = "WynQuirnotePboardType";  // see WynTextView
}  // namespace pasteboard_type

/// One clipboard: a set of representations of one thing, by type. Main thread only.
class pasteboard {
 public:
  virtual ~pasteboard() = default;

  /// Replaces all content by `types`, a dictionary from type name to value.
  virtual void set(plist::dictionary types) = 0;

  /// The representation under `type`, or nothing.
  virtual plist::value get(std::string_view type) const = 0;

  /// Grows whenever the content changes, by whomever.
  virtual std::uint64_t change_count() const = 0;
};

}  // namespace platform
