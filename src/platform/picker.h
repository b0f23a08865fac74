#pragma once

#include "platform/event.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace platform {

/// What a picker shows of one of the things among which the user picks.
struct picker_row {
  std::u16string title;
  std::vector<std::size_t> matched;  ///< units of the title that are shown in bold, in order
  std::string detail;                ///< what is to be known about it besides, dimmed
  std::vector<std::string> keys;     ///< key strings, shown at the right one after the other
  std::string trigger;               ///< shown there if there are no keys
  bool enabled = true;               ///< else it can't be chosen
};

/// Knows the things among which the user picks. A row is asked for when it comes in sight, so
/// rows may be many.
class picker_source {
 public:
  /// The user has typed this (UTF-8); the rows are others from now on.
  virtual void set_filter(std::string const& text) = 0;
  /// The user has pressed a key in a picker that takes keys; the rows are others from now on.
  virtual void take_key(key_event const& key) = 0;
  /// Key strings of those taken that mean nothing yet without the next one.
  virtual std::vector<std::string> pending_keys() const { return {}; }
  virtual std::size_t count() const = 0;
  virtual picker_row row(std::size_t index) const = 0;
  /// What a row is for, in sentences, shown while it is the one that would be chosen; may be empty.
  virtual std::string help(std::size_t /*index*/) const { return {}; }
  /// The row that can be chosen at once, and which is in sight.
  virtual std::size_t first_row() const { return 0; }
  /// A line about all of it, shown below the rows; may be empty.
  virtual std::string note() const = 0;
  /// More rows may come by themselves: take_new_rows() is to be called now and then.
  virtual bool is_filling() const { return false; }
  /// Takes the rows that have come. Gives where the row stands now that was at `chosen`, or where
  /// another one is in its stead; nothing if the rows are the same.
  virtual std::optional<std::size_t> take_new_rows(std::size_t /*chosen*/) { return std::nullopt; }

 protected:
  ~picker_source() = default;
};

struct picker_request {
  std::string title;
  std::string initial = {};      ///< stands in the field at first
  std::string placeholder = {};  ///< what to type, shown in an empty field
  /// Keys go to the source instead of a field for text. Once one has been pressed, and none is
  /// pending, the arrow keys and Return are for the rows.
  bool takes_keys = false;
  bool has_help = false;  ///< there is room for what the source says of rows
};

/// How the user wants what was chosen, as links are opened: as usual, with Shift in a window of its
/// own, with Ctrl beside what is shown now, which stays.
enum class picked_way { usual, own_window, aside };

struct picked_row {
  std::size_t row = 0;
  picked_way way = picked_way::usual;
};

/// A box in which one of many things is found by a few letters, or by a key, and chosen. Modal and
/// synchronous (waiting.h).
class picker {
 public:
  virtual ~picker() = default;
  /// What was chosen; nothing when cancelled.
  std::optional<picked_row> run(picker_request const& request, picker_source& source);

 protected:
  virtual std::optional<picked_row> ask(picker_request const& request, picker_source& source) = 0;
};

}  // namespace platform
