#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

/// Property lists: the one value type in which settings, bundles, menus, key bindings and the
/// arguments of actions are passed around.
///
///     plist::value v = plist::dictionary{{"tabSize", 4}, {"softTabs", true}};
///     int size = v["tabSize"].integer_or(8);
namespace plist {

class value;

using array = std::vector<value>;
using dictionary = std::map<std::string, value, std::less<>>;
using data = std::vector<std::uint8_t>;

/// A point in time: seconds since 2001-01-01 00:00:00 UTC, leap seconds not counted.
struct date {
  double seconds = 0;
  friend bool operator==(date, date) = default;
};

enum class kind : std::uint8_t {
  none,
  boolean,
  integer,
  real,
  string,
  date,
  data,
  array,
  dictionary
};

/// A string, number, boolean, date, block of bytes, array, dictionary, or nothing.
/// Immutable; a copy shares the content and costs one counter. May be read on any thread.
/// Strings and keys are UTF-8. Accessors never fail: the wrong kind gives the stated fallback.
class value {
 public:
  value() = default;  // nothing: kind::none
  value(bool b) : content_(b) {}
  value(int n) : content_(static_cast<std::int64_t>(n)) {}
  value(unsigned n) : content_(static_cast<std::int64_t>(n)) {}
  value(long n) : content_(static_cast<std::int64_t>(n)) {}
  value(long long n) : content_(static_cast<std::int64_t>(n)) {}
  value(unsigned long n) : content_(static_cast<std::int64_t>(n)) {}
  value(double d) : content_(d) {}
  value(char const* s);
  value(std::string s);
  value(std::string_view s);
  value(plist::date d) : content_(d) {}
  value(plist::data bytes);
  value(plist::array elements);
  value(plist::dictionary entries);
  template <typename T>
  value(T*) = delete;  // a pointer is no boolean

  plist::kind kind() const { return static_cast<plist::kind>(content_.index()); }
  explicit operator bool() const { return kind() != plist::kind::none; }

  /// Null unless the value is of that kind. Valid as long as this value or a copy lives.
  std::string const* as_string() const;
  plist::array const* as_array() const;
  plist::dictionary const* as_dictionary() const;
  plist::data const* as_data() const;
  plist::date const* as_date() const;

  /// Numbers, booleans and strings convert among each other as a scripting user expects: "12" is
  /// 12 and true, "yes" and "true" are true; anything else is the fallback.
  bool boolean_or(bool fallback) const;
  std::int64_t integer_or(std::int64_t fallback) const;
  double real_or(double fallback) const;
  std::string string_or(std::string_view fallback) const;

  /// The value under `key`; nothing when this is no dictionary or has no such key.
  value const& operator[](std::string_view key) const;
  /// The elements; an empty range when this is no array.
  plist::array const& elements() const&;
  /// The entries in the order of the keys' bytes; an empty range when this is no dictionary.
  plist::dictionary const& entries() const&;
  /// Copies when the value is a temporary, so that a loop may run over what a function returned.
  plist::array elements() && { return std::as_const(*this).elements(); }
  plist::dictionary entries() && { return std::as_const(*this).entries(); }

  /// Equal kind and equal content; the integer 1, the real 1.0 and true are three values.
  friend bool operator==(value const& a, value const& b);

 private:
  // The order of the alternatives is that of plist::kind.
  std::variant<std::monostate, bool, std::int64_t, double, std::shared_ptr<std::string const>,
               plist::date, std::shared_ptr<plist::data const>, std::shared_ptr<plist::array const>,
               std::shared_ptr<plist::dictionary const>>
      content_;
};

}  // namespace plist
