#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "snippets/nodes.h"

namespace snippet {

/// Runs the code of a snippet in the given environment and gives what it printed.
using run_command_callback_t =
    std::function<std::string(std::string const& code, std::map<std::string, std::string> const&)>;

/// Expands nodes into `result`. Case changes are noted on the way and made at the end, by
/// handle_case_changes. Placeholders, which are a snippet's own affair, write nothing.
///
/// Substitutions within substitutions multiply: after `max_matches`, or with a result beyond
/// `max_size`, nothing more is replaced, and the rest of a text is taken over as it is.
class expand_visitor : public boost::static_visitor<void> {
 public:
  static constexpr std::size_t max_matches = 1'000'000, max_size = 64 << 20;

  explicit expand_visitor(std::map<std::string, std::string> variables,
                          run_command_callback_t const* callback = nullptr)
      : variables(std::move(variables)), callback(callback) {}

  void traverse(parser::nodes_t const& nodes);
  void replace(std::string const& source, regexp::pattern_t const& pattern,
               parser::nodes_t const& format, bool repeat);
  void handle_case_changes();

  /// The first word, the last and those of four letters or more in title case, the rest in lower.
  static std::string capitalize(std::string const& text);
  /// In ASCII, with other characters transliterated; the text itself if that cannot be done.
  static std::string asciify(std::string const& text);

  void operator()(parser::text_t const& node);
  void operator()(parser::placeholder_t const&) {}
  void operator()(parser::placeholder_transform_t const&) {}
  void operator()(parser::placeholder_choice_t const&) {}
  void operator()(parser::variable_t const& node);
  void operator()(parser::variable_transform_t const& node);
  void operator()(parser::variable_fallback_t const& node);
  void operator()(parser::variable_condition_t const& node);
  void operator()(parser::variable_change_t const& node);
  void operator()(parser::case_change_t const& node);
  void operator()(parser::code_t const& node);

  std::map<std::string, std::string> variables;
  run_command_callback_t const* callback;
  std::string result;
  std::vector<std::pair<std::size_t, parser::case_change::type>> case_changes;

 private:
  std::size_t matches_ = 0;
};

}  // namespace snippet
