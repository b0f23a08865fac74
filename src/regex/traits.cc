#include "regex/traits.h"

namespace regex::detail {

bool is_in_class_beyond_ascii(unit_class which, unit_t u) {
  switch (which) {
    case unit_class::alnum:
    case unit_class::word:
      return unicode::is_alnum(u);
    case unit_class::alpha:
      return unicode::is_alpha(u);
    case unit_class::digit:
      return unicode::is_digit(u);
    case unit_class::lower:
      return unicode::is_lower(u);
    case unit_class::upper:
      return unicode::is_upper(u);
    case unit_class::blank:
    case unit_class::space:
      return unicode::is_space(u);
    case unit_class::xdigit:
      return false;
    case unit_class::any:
      return true;
  }
  return false;
}

}  // namespace regex::detail
