#include "plist/any.h"

#include <algorithm>
#include <climits>
#include <cstdlib>

#include "plist/xml_reader.h"

namespace plist {
namespace {

any_t convert_number(std::int64_t number) {
  if (std::clamp<std::int64_t>(number, INT_MIN, INT_MAX) == number) return static_cast<int>(number);
  return static_cast<unsigned long long>(number);
}

any_t convert_any(value const& v, int depth);

dictionary_t convert_entries(dictionary const& entries, int depth) {
  dictionary_t result;
  if (depth < max_depth)
    for (auto const& [key, content] : entries) result[key] = convert_any(content, depth + 1);
  return result;
}

array_t convert_elements(array const& elements, int depth) {
  array_t result;
  if (depth < max_depth)
    for (value const& element : elements) result.push_back(convert_any(element, depth + 1));
  return result;
}

any_t convert_any(value const& v, int depth) {
  switch (v.kind()) {
    case kind::none:
      break;
    case kind::boolean:
      return v.boolean_or(false);
    case kind::integer:
    case kind::real:
      return convert_number(v.integer_or(0));
    case kind::string:
      return *v.as_string();
    case kind::date:
      return wyn::date_t{v.as_date()->seconds};
    case kind::data:
      return *v.as_data();
    case kind::array:
      return convert_elements(v.elements(), depth);
    case kind::dictionary:
      return convert_entries(v.entries(), depth);
  }
  return false;
}

}  // namespace

any_t convert_any(value const& v) {
  return convert_any(v, 0);
}

dictionary_t convert_dictionary(value const& v) {
  return convert_entries(v.entries(), 0);
}

bool convert_to(std::string const& from, int& to) {
  char* end = nullptr;
  long const number = std::strtol(from.c_str(), &end, 0);
  if (end == from.c_str()) return false;
  to = static_cast<int>(std::clamp<long>(number, INT_MIN, INT_MAX));
  return true;
}

bool convert_to(int from, std::string& to) {
  to = std::to_string(from);
  return true;
}

bool convert_to(unsigned long long from, std::string& to) {
  to = std::to_string(from);
  return true;
}

any_t const* node_at_key_path(dictionary_t const& tree, std::string_view keyPath) {
  dictionary_t const* entries = &tree;
  while (entries) {
    auto end = keyPath.find('.');
    auto found = entries->find(std::string(keyPath.substr(0, end)));
    while (found == entries->end() && end != std::string_view::npos) {
      end = keyPath.find('.', end + 1);
      found = entries->find(std::string(keyPath.substr(0, end)));
    }
    if (found == entries->end()) return nullptr;
    if (end == std::string_view::npos) return &found->second;
    entries = boost::get<dictionary_t>(&found->second);
    keyPath.remove_prefix(end + 1);
  }
  return nullptr;
}

}  // namespace plist
