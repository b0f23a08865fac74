#include "snippets/tree_walker.h"

#include <algorithm>
#include <cstdlib>

#include "platform/utf.h"
#include "snippetTokenTypes.hpp"

namespace snippet {
namespace {

using token = snippetTokenTypes;

static_assert(token::TAB == 4 && token::RBRACE == 10 && token::REPLACE == 16);

/// Of "$0" it is the one after all others.
int index_of(std::string const& digits) {
  auto const n = std::strtoul(digits.c_str(), nullptr, 10);
  return n == 0 || n > static_cast<unsigned long>(end_index) ? end_index : static_cast<int>(n);
}

std::string name_of(int index) {
  return "#" + std::to_string(index == end_index ? 0 : index);
}

/// The three parts of a substitution.
struct substitution {
  std::string regexp, format, options;

  substitution(antlr::RefAST part, parse_options const& how)
      : regexp(part->getText()),
        format(part->getNextSibling()->getText()),
        options(part->getNextSibling()->getNextSibling()->getText()) {
    // A tab indents as one outside does; "\t" is for texts that need one, as recipes of make do.
    if (!how.soft_tabs) return;
    for (std::size_t at = 0; (at = format.find('\t', at)) != std::string::npos;)
      format.replace(at, 1, how.tab_size, ' ');
  }
};

}  // namespace

bool tree_walker::walk(antlr::RefAST node) {
  for (; node; node = node->getNextSibling()) {
    if (stops_.size() >= max_stops) return false;
    switch (node->getType()) {
      case token::TEXT:
        add(node->getText());
        break;
      case token::TAB:
        add(options_.soft_tabs ? std::string(options_.tab_size, ' ') : "\t");
        break;
      case token::LF:
        add("\n" + options_.indent);
        break;
      case token::CODE:
        add_code(node->getText());
        break;
      case token::VARIABLE:
      case token::VARIABLE_COMPLEX:
        add_variable(node);
        break;
      case token::VARIABLE_REPLACE:
        add_replaced_variable(node);
        break;
      case token::TAB_STOP:
        add_stop(node, false);
        break;
      case token::PLACEHOLDER:
        add_stop(node, true);
        break;
      case token::REPLACE:
        add_regexp_mirror(node);
        break;
      default:
        warnings_.push_back("parsing snippet, unknown node " + std::to_string(node->getType()) +
                            " (" + node->getText() + ")");
    }
  }
  return stops_.size() < max_stops;
}

void tree_walker::add(std::string_view utf8) {
  text_ += unicode::to_utf16(utf8);
}

void tree_walker::add_code(std::string const& code) {
  if (!options_.run_command) return;
  std::string output = options_.run_command(code, options_.variables);
  if (output.ends_with('\n')) output.pop_back();
  add(output);
}

void tree_walker::add_variable(antlr::RefAST const& node) {
  auto const found = options_.variables.find(node->getText());
  if (found != options_.variables.end())
    add(found->second);
  else
    walk(node->getFirstChild());
}

void tree_walker::add_replaced_variable(antlr::RefAST const& node) {
  auto const found = options_.variables.find(node->getText());
  std::string const value = found == options_.variables.end() ? std::string() : found->second;
  substitution const parts(node->getFirstChild(), options_);
  transform_t const how(parts.regexp, parts.format, parts.options);
  std::string fault = how.fault;
  std::string const result = how.applied_to(value, options_.indent, fault);
  if (!fault.empty()) warnings_.push_back("$" + node->getText() + ": " + fault);
  add(result);
}

bool tree_walker::is_open(int index) const {
  return std::any_of(open_.begin(), open_.end(),
                     [&](std::size_t stop) { return stops_[stop].index == index; });
}

bool tree_walker::has_child(int outer, int index) const {
  std::set<int> seen;
  std::vector<int> path{outer};
  while (!path.empty()) {
    int const at = path.back();
    path.pop_back();
    auto const found = children_.find(at);
    if (!seen.insert(at).second || found == children_.end()) continue;
    if (found->second.contains(index)) return true;
    path.insert(path.end(), found->second.begin(), found->second.end());
  }
  return false;
}

bool tree_walker::would_reverse_nesting(int index) {
  for (std::size_t const outer : open_) {
    if (!has_child(index, stops_[outer].index)) continue;
    warnings_.push_back("tab stop " + name_of(index) + " can't be child of " +
                        name_of(stops_[outer].index));
    return true;
  }
  return false;
}

std::size_t tree_walker::open_stop(int index) {
  tab_stop_t stop;
  stop.index = index;
  stop.first = {text_.size(), next_rank_++};
  if (!open_.empty()) stop.parent = open_.back();
  for (std::size_t const outer : open_) children_[stops_[outer].index].insert(index);
  stops_.push_back(stop);
  return stops_.size() - 1;
}

void tree_walker::add_stop(antlr::RefAST const& node, bool has_content) {
  int const index = index_of(node->getText());
  if (is_open(index)) {
    warnings_.push_back("tab stop " + name_of(index) + " can't be recursive");
    return;
  }
  if (would_reverse_nesting(index)) return;
  std::size_t const stop = open_stop(index);
  if (has_content) {
    field_.try_emplace(index, stop);
    open_.push_back(stop);
    walk(node->getFirstChild());
    open_.pop_back();
  }
  stops_[stop].last = {text_.size(), next_rank_++};
}

void tree_walker::add_regexp_mirror(antlr::RefAST const& node) {
  int const index = index_of(node->getText());
  if (is_open(index)) {
    warnings_.push_back("can't nest regexp mirror of " + name_of(index) + " in placeholder");
    return;
  }
  if (would_reverse_nesting(index)) return;
  substitution const parts(node->getFirstChild(), options_);
  std::size_t const stop = open_stop(index);
  auto const how = std::make_shared<transform_t const>(parts.regexp, parts.format, parts.options);
  if (!how->fault.empty()) warnings_.push_back("mirror of " + name_of(index) + ": " + how->fault);
  stops_[stop].transform = how;
  stops_[stop].last = {text_.size(), next_rank_++};
}

std::unique_ptr<snippet_t> tree_walker::snippet() {
  for (std::size_t i = 0; i < stops_.size(); ++i)
    if (!stops_[i].is_regexp_mirror()) field_.try_emplace(stops_[i].index, i);
  for (auto const& [index, stop] : field_) stops_[stop].is_field = true;

  // A mirror that is empty as yet may still follow.
  auto const ends_text = [&](tab_stop_t const& stop) {
    return stop.last.offset == text_.size() && stops_.back().first.rank <= stop.last.rank;
  };
  bool const ends_in_field = !field_.empty() && (field_.rbegin()->first == end_index ||
                                                 ends_text(stops_[field_.rbegin()->second]));
  if (!ends_in_field) {
    std::size_t const stop = open_stop(end_index);
    stops_[stop].last = {text_.size(), next_rank_++};
    stops_[stop].is_field = true;
  }
  return std::make_unique<snippet_t>(std::move(stops_), std::move(text_), options_.indent);
}

}  // namespace snippet
