#include "plist/calendar.h"

#include <chrono>

namespace plist {
namespace {

using namespace std::chrono;

constexpr sys_seconds reference = sys_days(year(2001) / January / 1);
constexpr sys_seconds earliest = sys_days(year(1) / January / 1);
constexpr sys_seconds latest = sys_days(year(9999) / December / 31) + seconds(86399);

}  // namespace

std::optional<calendar_time> to_calendar(std::int64_t count) {
  if (count < (earliest - reference).count() || count > (latest - reference).count())
    return std::nullopt;
  sys_seconds const time = reference + seconds(count);
  auto const day = floor<days>(time);
  year_month_day const date(day);
  hh_mm_ss const clock(time - day);
  return calendar_time{
      int(date.year()),           int(unsigned(date.month())),  int(unsigned(date.day())),
      int(clock.hours().count()), int(clock.minutes().count()), int(clock.seconds().count())};
}

std::optional<std::int64_t> from_calendar(calendar_time const& t) {
  if (t.year < 1 || t.year > 9999 || t.month < 1 || t.day < 1) return std::nullopt;
  if (t.hour < 0 || t.hour > 23 || t.minute < 0 || t.minute > 59 || t.second < 0 || t.second > 59)
    return std::nullopt;
  year_month_day const date(year(t.year), month(unsigned(t.month)), day(unsigned(t.day)));
  if (!date.ok()) return std::nullopt;
  sys_seconds const time = sys_days(date) + hours(t.hour) + minutes(t.minute) + seconds(t.second);
  return (time - reference).count();
}

}  // namespace plist
