#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace platform {

/// What the fields and check boxes of the window for finding in projects hold.
struct project_find_values {
  std::string find = {}, replace = {};  // UTF-8
  bool regular_expression = false, ignore_case = false, whole_words = false;
  std::string included = {}, excluded = {};  // globs, by blanks
  bool gitignore = false;
  std::string scope = {};  // a selector
  std::size_t where = 0;   // one of the places offered

  friend bool operator==(project_find_values const&, project_find_values const&) = default;
};

enum class project_find_action { begin, stop, replace_ticked, undo_replace, open_as_document };

/// A row of the tree of results; its parts are in the text, in units.
struct project_find_row {
  std::string text = {};
  std::size_t first = 0, last = 0;         ///< what is found, shown bold
  std::optional<std::string> replacement;  ///< what would stand there instead
};

/// Where a row is: a file, or a match in it.
struct project_find_place {
  std::size_t file = 0;
  std::optional<std::size_t> match = {};
  friend bool operator==(project_find_place const&, project_find_place const&) = default;
};

class project_find_delegate {
 public:
  enum class ticks { none, some, all };

  virtual void projectFindAction(project_find_action action) = 0;
  /// The values have changed, maybe in the midst of typing.
  virtual void projectFindDidChange() = 0;
  virtual void projectFindDidClose() = 0;

  // The results, of which rows are asked for when they come in sight.
  virtual std::size_t projectFindFiles() const = 0;
  virtual std::size_t projectFindMatches(std::size_t file) const = 0;
  virtual project_find_row projectFindRow(project_find_place place) = 0;
  virtual ticks projectFindTicks(project_find_place place) const = 0;
  virtual void projectFindTick(project_find_place place, bool ticked) = 0;
  /// The user wants to see it in its text.
  virtual void projectFindShow(project_find_place place) = 0;

 protected:
  ~project_find_delegate() = default;
};

/// The window in which one finds and replaces in many files, with the tree of what was found. Main
/// thread only.
class project_find_panel {
 public:
  virtual ~project_find_panel() = default;

  virtual void set_delegate(project_find_delegate* delegate) = 0;  // not owned
  virtual void order_front() = 0;
  virtual void close() = 0;
  virtual bool is_visible() const = 0;

  virtual project_find_values values() const = 0;
  virtual void set_values(project_find_values const& v) = 0;  // the delegate is not notified
  /// What `where` chooses among; those that are empty can't be chosen.
  virtual void set_places(std::vector<std::string> const& titles) = 0;
  virtual void set_histories(std::vector<std::string> const& find,
                             std::vector<std::string> const& replace) = 0;
  virtual void set_status(std::string const& text) = 0;
  /// Marks the field from this unit on as wrong; its whole text is right with npos.
  virtual void mark_error(std::size_t offset) = 0;

  struct state {
    bool is_running = false, can_replace = false, can_undo = false, can_open = false;
    friend bool operator==(state const&, state const&) = default;
  };
  virtual void set_state(state const& s) = 0;
  /// All rows are others, or, from this file on, there are more of them.
  virtual void rows_did_reset() = 0;
  virtual void rows_were_added(std::size_t first_file) = 0;
  /// Ticks or replacements have changed.
  virtual void rows_did_change() = 0;
  virtual void select(project_find_place place) = 0;
};

}  // namespace platform
