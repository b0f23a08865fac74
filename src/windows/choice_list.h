#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/picker.h"
#include "styles/symbol.h"
#include "windows/program_actions.h"

namespace windows {

/// A list of any length in which one entry is found by letters of its title, such as the symbols of
/// a document or the languages there are. Without letters all entries come in their order, and the
/// current one is marked and in sight.
///
/// Titles are asked for when they are needed, so that a list opens at once. A letter costs a look
/// at each title; entries are ranked once there are not too many left, and come in their order
/// until then. Main thread only.
class choice_list final : public platform::picker_source {
 public:
  struct entries {
    std::size_t count = 0;
    /// UTF-8; good until the next call.
    std::function<std::string_view(std::size_t)> title;
    /// What else is to be known about one.
    std::function<platform::picker_row(std::size_t)> row;
    std::optional<std::size_t> current;
  };

  choice_list(std::string title, entries all);

  platform::picker_request request() const { return {.title = title_}; }
  /// Which of all entries a row shows.
  std::size_t entry(std::size_t row) const { return is_all_ ? row : shown_[row]; }

  // platform::picker_source
  void set_filter(std::string const& text) override;
  void take_key(platform::key_event const&) override {}
  std::size_t count() const override { return is_all_ ? all_.count : shown_.size(); }
  platform::picker_row row(std::size_t index) const override;
  std::size_t first_row() const override;
  std::string note() const override;

 private:
  void rank();

  std::string const title_;
  entries const all_;
  bool is_all_ = true, is_ranked_ = false;
  std::vector<std::size_t> shown_;  // unless it is all
  std::u16string prepared_;         // the letters as the ranker takes them
};

/// In which to go to a symbol; `line` is that of the caret, from 1. The symbols must outlive them.
choice_list::entries symbol_entries(std::vector<styles::symbol> const& symbols, std::size_t line);
/// Of a menu; the actions must outlive them.
choice_list::entries action_entries(std::vector<program_action> const& actions);

}  // namespace windows
