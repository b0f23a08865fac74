#pragma once

#include <string>
#include <string_view>

#include "regex/replacement.h"
#include "regex/traits.h"

namespace regex {

/// Appends a run of units: the first by `next_char_case`, which is then spent, the rest by `mode`.
template <class Unit>
void append_with_case(std::basic_string<Unit>& out, std::basic_string_view<Unit> run, unsigned mode,
                      unsigned& next_char_case) {
  auto const mapped = [](Unit u, unsigned wanted) {
    return wanted == upper   ? traits<Unit>::to_upper(u)
           : wanted == lower ? traits<Unit>::to_lower(u)
                             : u;
  };
  if (run.empty()) return;
  if (next_char_case != as_is) {
    out += mapped(run.front(), next_char_case);
    run.remove_prefix(1);
    next_char_case = as_is;
  }
  if (mode == as_is) {
    out += run;
  } else {
    for (Unit u : run) out += mapped(u, mode);
  }
}

}  // namespace regex
