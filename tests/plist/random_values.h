#pragma once

#include <rapidcheck.h>

#include <algorithm>
#include <cmath>
#include <ostream>
#include <string>
#include <vector>

#include "plist/description.h"
#include "plist/value.h"

namespace plist {

inline std::ostream& operator<<(std::ostream& out, value const& v) {
  return out << int(v.kind()) << ":" << description(v);
}

}  // namespace plist

/// Random values for tests of formats: texts are made of what is awkward to quote.
namespace random_values {

inline std::string const& piece(std::size_t i) {
  static std::vector<std::string> const pieces = {
      "a",  "B",  "z",  "_", "-", ".",   "0", "19", "'", "\"",     "\\",     "\\\"", "''", " ",
      "\t", "\n", "\r", "<", "&", "]]>", "é", "中", "😀", "\u0301", "\u2028", "//",   "/*", "( ;="};
  return pieces[i % pieces.size()];
}

inline std::string text() {
  std::string result;
  int const count = *rc::gen::inRange(0, 8);
  for (int i = 0; i < count; ++i) result += piece(std::size_t(*rc::gen::inRange(0, 28)));
  return result;
}

inline std::string key(bool may_be_empty) {
  std::string result = text();
  return result.empty() && !may_be_empty ? "k" : result;
}

struct kinds {
  bool only_text_dialect = false;
  bool dots_in_keys = true;
};

inline plist::value scalar(kinds allowed) {
  if (allowed.only_text_dialect) {
    if (*rc::gen::arbitrary<bool>()) return text();
    return *rc::gen::inRange<long long>(0, 5'000'000'000);
  }
  switch (*rc::gen::inRange(0, 7)) {
    case 0:
      return *rc::gen::arbitrary<bool>();
    case 1:
      return *rc::gen::arbitrary<long long>();
    case 2:
      return *rc::gen::arbitrary<double>();
    case 3:
      return plist::date{std::fmod(*rc::gen::arbitrary<double>() * 1e3, 6e10)};
    case 4:
      return plist::date{double(*rc::gen::inRange(-2'000'000'000, 2'000'000'000))};
    case 5:
      return *rc::gen::arbitrary<plist::data>();
    default:
      return text();
  }
}

inline plist::value value(kinds allowed, int depth = 0) {
  int const choice = depth < 4 ? *rc::gen::inRange(0, 4) : 0;
  if (choice < 2) return scalar(allowed);
  int const count = *rc::gen::inRange(0, 4);
  plist::array elements;
  plist::dictionary entries;
  for (int i = 0; i < count; ++i) {
    if (choice == 2) {
      elements.push_back(value(allowed, depth + 1));
    } else {
      std::string name = key(!allowed.only_text_dialect);
      if (!allowed.dots_in_keys) std::replace(name.begin(), name.end(), '.', '_');
      entries.insert_or_assign(std::move(name), value(allowed, depth + 1));
    }
  }
  return choice == 2 ? plist::value(std::move(elements)) : plist::value(std::move(entries));
}

/// Arrays nested `depth` deep around `innermost`.
inline plist::value nested(int depth, plist::value innermost) {
  for (int i = 0; i < depth; ++i) innermost = plist::array{innermost};
  return innermost;
}

}  // namespace random_values
