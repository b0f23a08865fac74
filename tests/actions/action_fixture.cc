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

[[maybe_unused]] auto* const settings = testing::AddGlobalTestEnvironment(new settings_in_memory);

}  // namespace

action_fixture::action_fixture() {
  view.set_tab_size(4);
  register_movement_functions(actions);
  register_view_actions(actions, titles);
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

void apply_modes(text::view& view, std::string_view modes) {
  auto const has = [&](char mode) { return modes.find(mode) != modes.npos; };
  view.set_freehanded_mode(has('f'));
  view.set_treats_spaces_as_tabs(has('s'));
  view.set_soft_wrap(has('w'));
  view.overwrite_mode = has('o');
}

void expect_outcomes(std::initializer_list<action_case> cases) {
  for (auto const& row : cases) {
    action_fixture fixture;
    apply_modes(fixture.view, row.modes);
    EXPECT_EQ(fixture.run(row.before, row.actions), row.after)
        << row.actions << " (" << row.modes << ") on\n"
        << row.before;
  }
}
