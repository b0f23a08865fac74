#include "settings/setting.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>

#include "plist/description.h"

namespace settings {
namespace {

constexpr std::size_t longest_shown = 60;  // bytes of a value in a message

bool is_color(std::string_view text) {
  if (text.empty()) return true;
  bool const has_length = text.size() == 7 || text.size() == 9;
  return has_length && text[0] == '#' &&
         text.find_first_not_of("0123456789abcdefABCDEF", 1) == text.npos;
}

bool is_between(plist::value const& value, double least, double most) {
  if (value.kind() == plist::kind::boolean) return false;
  double const number = value.real_or(std::numeric_limits<double>::quiet_NaN());
  return least <= number && number <= most;
}

std::string range(double least, double most) {
  return " from " + plist::description(least) + " to " + plist::description(most);
}

// Long texts, and what would move the cursor of a terminal, are not worth showing.
std::string shown(plist::value const& value) {
  if (value.kind() == plist::kind::boolean) return value.boolean_or(false) ? "true" : "false";
  if (value.as_array() != nullptr) return "a list";
  if (value.as_dictionary() != nullptr) return "a dictionary";
  std::string const text = plist::description(value);
  bool const is_plain = std::all_of(text.begin(), text.end(),
                                    [](unsigned char byte) { return 0x20 <= byte && byte < 0x7F; });
  if (!is_plain || text.size() > longest_shown) return "what is there";
  return value.as_string() != nullptr ? '"' + text + '"' : text;
}

}  // namespace

bool value_type::accepts(plist::value const& value) const {
  bool const is_list = value.as_array() != nullptr;
  bool const is_text = value.string_or("a") == value.string_or("b");
  bool const is_boolean = value.boolean_or(false) == value.boolean_or(true);
  switch (what) {
    case form::boolean:
      return is_boolean;
    case form::integer:
    case form::real:
      return is_between(value, least, most);
    case form::text:
      return is_text;
    case form::choice:
      return std::find(choices.begin(), choices.end(), value.string_or("")) != choices.end();
    case form::color:
      return is_text && is_color(value.string_or(""));
    case form::list:
      return is_list;
    case form::dictionary:
      return value.as_dictionary() != nullptr;
    case form::boolean_or_list:
      return is_boolean || is_list;
  }
  return false;
}

std::string value_type::description() const {
  switch (what) {
    case form::boolean:
      return "true or false";
    case form::integer:
      return "an integer" + range(least, most);
    case form::real:
      return "a number" + range(least, most);
    case form::text:
      return "a text";
    case form::choice: {
      std::string list;
      for (std::string const& choice : choices)
        list += (list.empty() ? "" : choice == choices.back() ? " or " : ", ") + choice;
      return list;
    }
    case form::color:
      return "a colour such as #1F2328";
    case form::list:
      return "a list";
    case form::dictionary:
      return "a dictionary";
    case form::boolean_or_list:
      return "true, false or a list";
  }
  return "";
}

std::string fault_of(setting const& row, plist::value const& value) {
  if (row.type.accepts(value)) return "";
  return row.key + " takes " + row.type.description() + ", not " + shown(value);
}

}  // namespace settings
