#pragma once

#include <cstdint>
#include <optional>

namespace plist {

/// A moment of the proleptic Gregorian calendar in UTC, to the second.
struct calendar_time {
  int year, month, day, hour, minute, second;
};

/// `seconds` since 2001-01-01 00:00:00 UTC; nothing outside of the years 1 to 9999.
std::optional<calendar_time> to_calendar(std::int64_t seconds);

/// The reverse; nothing unless every field is in its range (no second 60).
std::optional<std::int64_t> from_calendar(calendar_time const& t);

}  // namespace plist
