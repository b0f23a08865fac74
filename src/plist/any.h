#pragma once

#include <boost/variant.hpp>
#include <concepts>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "plist/value.h"

namespace wyn {

/// A point in time: seconds since 2001-01-01 00:00:00 UTC.
struct date_t {
  double seconds = 0;
  friend bool operator==(date_t, date_t) = default;
};

}  // namespace wyn

/// A narrower tree than plist::value, for reading system configuration. Deep nesting costs stack.
namespace plist {

using any_t = boost::make_recursive_variant<
    bool, int, unsigned long long, std::string, std::vector<std::uint8_t>, wyn::date_t,
    std::vector<boost::recursive_variant_>, std::map<std::string, boost::recursive_variant_>>::type;
using array_t = std::vector<any_t>;
using dictionary_t = std::map<std::string, any_t>;

/// Numbers become `int` where they fit, else `unsigned long long`, reals without their fraction.
/// Nothing becomes false; containers nested deeper than max_depth become empty.
any_t convert_any(value const& v);
/// Empty for anything but a dictionary.
dictionary_t convert_dictionary(value const& v);

/// The tree of a dictionary, see convert_dictionary. A template, so that string literals are texts
/// for the reader of the dialect.
template <std::same_as<value> V>
dictionary_t convert(V const& v) {
  return convert_dictionary(v);
}

/// Decimal, or hexadecimal after 0x, or octal after 0. False if the text does not begin so.
bool convert_to(std::string const& from, int& to);
bool convert_to(int from, std::string& to);
bool convert_to(unsigned long long from, std::string& to);

/// Puts what a node holds into `out_` as a T, and tells whether there is a conversion.
template <typename T>
struct convert_to_helper_t : boost::static_visitor<bool> {
  explicit convert_to_helper_t(T& out) : out_(out) {}

  bool operator()(T const& same) const {
    out_ = same;
    return true;
  }

  template <typename From>
  bool operator()(From const& from) const {
    if constexpr (std::is_same_v<T, bool> && std::is_integral_v<From>) {
      out_ = from != 0;
      return true;
    } else if constexpr (std::is_same_v<T, int> && std::is_same_v<From, bool>) {
      out_ = from;
      return true;
    } else if constexpr (!std::is_same_v<From, bool> && requires { convert_to(from, out_); }) {
      return convert_to(from, out_);
    } else {
      return false;
    }
  }

 private:
  T& out_;
};

/// The node at a path of keys joined by dots, or null. A key may itself hold dots: of the keys that
/// the path may begin with, the shortest that exists is taken.
any_t const* node_at_key_path(dictionary_t const& tree, std::string_view keyPath);

/// Reads the node at `keyPath` as a T: bool, int or std::string. False, and `out` unchanged, when
/// there is none or it can't be converted.
template <typename T>
bool get_key_path(dictionary_t const& tree, std::string_view keyPath, T& out) {
  any_t const* node = node_at_key_path(tree, keyPath);
  return node && boost::apply_visitor(convert_to_helper_t<T>(out), *node);
}

template <typename T>
bool get_key_path(any_t const& tree, std::string_view keyPath, T& out) {
  auto const* entries = boost::get<dictionary_t>(&tree);
  return entries && get_key_path(*entries, keyPath, out);
}

}  // namespace plist
