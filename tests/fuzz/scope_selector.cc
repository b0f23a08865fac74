#include <sstream>
#include <vector>

#include "fuzz/fuzz.h"
#include "grammar/scope_selector.h"

// A scope selector, a newline and the names of scopes: it is parsed or refused with a reason, and
// its score is below zero or bounded, the same in parentheses and when it is given twice.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::string rest(data, data + size), reason;
  std::string const selector = take_until('\n', rest);
  std::istringstream input(rest);
  std::vector<std::string> scopes;
  for (std::string name; scopes.size() < 64 && input >> name;) scopes.push_back(name);

  auto const parsed = scope::parse_selector(selector, &reason);
  if (!parsed) {
    if (reason.empty()) std::abort();
    return 0;
  }
  scope::compare_selector const compare(scopes);
  double const score = compare.handle_node(*parsed);
  double const limit = static_cast<double>(size) + 1.0;
  if (!(score == -1.0 || (0.0 <= score && score <= limit))) std::abort();
  auto const twice = scope::parse_selector(selector + "," + selector, nullptr);
  if (!twice || compare.handle_node(*twice) != score) std::abort();
  // What follows a stray parenthesis is ignored, and commas cannot stand in a pair.
  if (selector.find_first_of("(),") != selector.npos) return 0;
  auto const enclosed = scope::parse_selector("(" + selector + ")", nullptr);
  if (!enclosed || compare.handle_node(*enclosed) != score) std::abort();
  return 0;
}
