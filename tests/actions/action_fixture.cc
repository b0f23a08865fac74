#include "actions/action_fixture.h"

#include <gtest/gtest.h>

#include <sstream>

#include "actions/register_movement_functions.h"
#include "actions/register_view_actions.h"
#include "platform/user_defaults.h"
#include "text/marked_text.h"

namespace {

/// What counts as a word must not depend on the settings of whoever runs the tests.
class settings_in_memory : public testing::Environment {
  void SetUp() override {
    platform::user_defaults::set_standard(std::make_unique<platform::user_defaults>(""));
  }
};

/// Cuts lines into rows of the screen's width, and finds them anew for each question.
class fixed_rows : public text::switchable_filter {
 public:
  explicit fixed_rows(text::view const& view) : view_(view) {}

  text::pos in_view(text::pos const& at) const override {
    auto const all = rows();
    size_t index = 0;
    while (all[index].line != at.line || all[index].last < at.column) ++index;
    size_t const column = at.column < all[index].first ? 0 : at.column - all[index].first;
    return {index, column};
  }
  text::pos in_storage(text::pos const& at) const override {
    auto const row = rows()[at.line];
    return {row.line, row.first + at.column};
  }
  text::iterator begin(unsigned long row) const override {
    return position(row, &row_range::first);
  }
  text::iterator end(unsigned long row) const override { return position(row, &row_range::last); }
  size_t lines() const override { return rows().size(); }
  void reset() override {}
  void disable() override {}

 private:
  struct row_range {
    size_t line, first, last;
  };

  std::vector<row_range> rows() const {
    std::vector<row_range> result;
    size_t const width = view_.screen_width;
    for (size_t line = 0; line < view_.storage->lines(); ++line) {
      size_t const size = view_.storage->size(line);
      size_t first = 0;
      for (; size > first + width; first += width + 1)
        result.push_back({line, first, first + width});
      result.push_back({line, first, size});
    }
    return result;
  }
  text::iterator position(size_t row, size_t row_range::*column) const {
    auto const range = rows()[row];
    return {range.line, range.*column, view_.storage};
  }

  text::view const& view_;
};

[[maybe_unused]] auto* const settings = testing::AddGlobalTestEnvironment(new settings_in_memory);

}  // namespace

action_fixture::action_fixture(std::string_view modes) {
  view.set_tab_size(4);
  register_movement_functions(actions);
  register_view_actions(actions, titles);
  auto const has = [&](char mode) { return modes.find(mode) != modes.npos; };
  view.set_freehanded_mode(has('f'));
  view.set_treats_spaces_as_tabs(has('s'));
  view.overwrite_mode = has('o');
  if (!has('w')) return;
  view.screen_width = 4;
  view.install_soft_wrap_filter(std::make_unique<fixed_rows>(view));
  view.set_soft_wrap(true);
}

std::string action_fixture::run(std::string_view before, std::string_view names) {
  marked_text::set(view, before);
  std::string failures;
  std::istringstream words{std::string(names)};
  for (std::string name; words >> name;) {
    if (!actions.has_action(name)) name += ':';
    EXPECT_TRUE(actions.has_action(name)) << name;
    if (!actions.perform_action(name, &view)) failures += '!';
  }
  return failures + marked_text::get(view);
}
