#include "actions/action_fixture.h"

#include "actions/register_movement_functions.h"
#include "actions/register_transform_functions.h"
#include "actions/register_view_actions.h"
#include "platform/own_defaults.h"
#include "test.h"
#include "text/marked_text.h"

using namespace actions;

namespace {

/// What counts as a word must not depend on the settings of whoever runs the tests.
own_defaults const settings;

}  // namespace

action_fixture::action_fixture(std::string_view modes) {
  view.set_tab_size(4);
  register_movement_functions(actions);
  register_transform_functions(actions, titles);
  register_view_actions(actions, titles);
  auto const has = [&](char mode) { return modes.find(mode) != modes.npos; };
  view.set_freehanded_mode(has('f'));
  view.set_treats_spaces_as_tabs(has('s'));
  view.overwrite_mode = has('o');
  if (has('n')) view.set_screen_width(12);
  if (!has('w')) return;
  view.set_screen_width(4);
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
