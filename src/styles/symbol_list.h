#pragma once

#include "platform/run_loop.h"
#include "styles/symbol.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace styles {
class styled_view;

/// The functions, headings and so on of a document: the runs of text whose style has
/// `showInSymbolList`. The text view owns it, and shows a document when it is built or asked for
/// the caret's symbol. Main thread only.
class symbol_list {
 public:
  explicit symbol_list(styled_view& text_view);
  ~symbol_list();

  /// In the order of the text.
  std::vector<symbol> const& items() const { return *items_; }
  /// The same, which stay as they are when the list is made again.
  std::shared_ptr<std::vector<symbol> const> const& shared_items() const { return items_; }
  /// Makes it of the tokens known so far.
  void build();
  /// Follows the caret. When the text has changed the list is made again, if that takes no longer
  /// than a key press may; with `changed`, and for large texts, half a second after the last such
  /// call, on another thread.
  void update(bool changed);
  /// Another document is there.
  void restart();
  /// The document goes.
  void clear();

  /// The name of the last one that begins above the caret or on its line.
  std::string at_caret() const;
  /// The one that the status bar shows.
  std::string const& current() const { return current_; }

 private:
  struct walker;

  void build_after(double seconds);
  bool walk_at_once();
  void begin_walk();
  void poll();
  void stop_walker();
  void take(std::vector<symbol> symbols);
  void set_current(std::string const& name);

  styled_view& text_view_;
  std::shared_ptr<std::vector<symbol> const> items_;
  std::uint32_t memento_ = 0;  ///< of the text of which the list was made
  bool is_quick_ = true;       ///< whether the last walk was done at once
  std::string current_;
  std::shared_ptr<walker> walker_;          ///< while there is a walk on another thread
  std::unique_ptr<platform::timer> timer_;  ///< before a walk, and for a look at that
};

}  // namespace styles
