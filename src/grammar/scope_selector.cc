#include "grammar/scope_selector.h"

#include <algorithm>
#include <set>
#include <unordered_map>

#include "grammar/selector_score.h"
#include "platform/log.h"
#include "plist/UnicharInputBuffer.h"
#include "scope_lexer.hpp"
#include "scope_parser.hpp"

namespace scope {

std::shared_ptr<selector_node const> parse_selector(std::string_view selector,
                                                    std::string* reason) {
  try {
    plist::UnicharInputBuffer input(selector.data(), selector.data() + selector.size());
    scope_lexer lexer(input);
    scope_parser parser(lexer);
    return std::make_shared<selector_node const>(parser.startRule());
  } catch (antlr::ANTLRException const& e) {
    if (reason) *reason = e.toString();
  } catch (std::exception const& e) {
    if (reason) *reason = e.what();
  }
  return nullptr;
}

double compare_selector::handle_node(selector_node const& node) const {
  switch (node.type) {
    case selector_node::descent:
      return handle_selector(node);
    case selector_node::any_of:
      return handle_or(node);
    case selector_node::all_of:
      return handle_and(node);
    case selector_node::difference:
      return handle_asymmetric_difference(node);
  }
  return no_match;
}

double compare_selector::handle_or(selector_node const& node) const {
  double score = no_match;
  for (selector_node const& child : node.children) score = std::max(score, handle_node(child));
  return score;
}

double compare_selector::handle_and(selector_node const& node) const {
  double score = no_match;
  for (selector_node const& child : node.children) {
    double const other = handle_node(child);
    if (other < 0.0) return no_match;
    score = std::max(score, other);
  }
  return score;
}

// What is subtracted only vetoes; it adds nothing to the score.
double compare_selector::handle_asymmetric_difference(selector_node const& node) const {
  for (std::size_t i = 1; i < node.children.size(); ++i)
    if (!(handle_node(node.children[i]) < 0.0)) return no_match;
  return handle_node(node.children.front());
}

double compare_selector::handle_selector(selector_node const& node) const {
  return tail_match(node.parts, scopes_.rbegin(), scopes_.rend());
}

bool compare_selector::match_part(std::string_view selector_part, std::string_view scope) {
  if (selector_part.size() >= scope.size()) return selector_part == scope;
  return scope[selector_part.size()] == '.' &&
         scope.substr(0, selector_part.size()) == selector_part;
}

// Every scope that is passed, matched or not, makes what stands further out count for less. Summed
// from the outermost match inward, as `selector_set` does, so that both give the same number.
double compare_selector::tail_match(std::vector<std::string> const& parts, scope_iterator it,
                                    scope_iterator end) {
  std::vector<scope_iterator> matches;  // from the innermost one
  for (auto at = it; matches.size() < parts.size(); ++at) {
    if (at == end) return no_match;
    if (match_part(parts[parts.size() - 1 - matches.size()], *at)) matches.push_back(at);
  }
  if (matches.empty()) return 0.0;
  double score = 0.0;
  auto const first = matches.back();
  auto part = parts.begin();
  for (auto at = first + 1; at-- != it;) {
    if (!matches.empty() && matches.back() == at) {
      score = score_of_part(part++->size(), at->size()) + score / decay(at->size());
      matches.pop_back();
    } else {
      score /= decay(at->size());
    }
  }
  return score;
}

std::shared_ptr<selector_node const> known_selector(std::string const& selector,
                                                    std::function<std::string()> const& place) {
  static std::unordered_map<std::string, std::shared_ptr<selector_node const>> cache;
  if (auto const it = cache.find(selector); it != cache.end()) return it->second;
  auto parsed = parse_selector(selector, nullptr);
  if (parsed) return cache.emplace(selector, std::move(parsed)).first->second;
  static std::set<std::string> told;
  std::string const message = selector + (place ? "\n" + place() : "");
  if (told.insert(message).second) platform::log("invalid scope selector " + message);
  return nullptr;
}

double new_score_for_selector(std::string const& selector, std::vector<std::string> const& scopes,
                              std::function<std::string()> const& place) {
  auto const parsed = known_selector(selector, place);
  return parsed ? compare_selector(scopes).handle_node(*parsed) : no_match;
}

}  // namespace scope
