#pragma once

#include "platform/geometry.h"
#include "platform/pasteboard.h"

#include <cstdint>

/// Drag and drop as the logic sees it.
namespace platform {

/// What may be done with what is dragged: bits of a mask. Generic is whatever suits the target
/// best, which is moving where source and target are one view, and else copying.
namespace drag_operation {
inline constexpr std::uint32_t none = 0;
inline constexpr std::uint32_t copy = 1;
inline constexpr std::uint32_t generic = 4;
}  // namespace drag_operation

/// Something that is dragged over a view or dropped on it. Valid during one call only.
struct drag_info {
  point position;                // in the coordinates of the view
  std::uint32_t operations = 0;  // what the source offers, as far as the keys held allow it
  std::uint32_t modifiers = 0;
  bool is_from_this_view = false;
  pasteboard_content const& content;
};

}  // namespace platform
