#include "app/AppDelegate.h"
#include "app_fixture.h"
#include "commands/html_output.h"
#include "keys/WynKeyBindingManager.h"
#include "platform/menu.h"
#include "source_tree.h"
#include "windows/document_window.h"

// Menus and key bindings are data, and the actions are code: neither may name what the other
// lacks.
namespace {

using names = std::set<std::string>;

// For macros and scripts, which give them an argument, and for the items of dynamic menus.
names const taking_an_argument = {"findWithOptions:",
                                  "insertText:",
                                  "goToLineNumber:",
                                  "goToColumnNumber:",
                                  "goToLineAction:",
                                  "selectToLine:andColumn:",
                                  "openRecentFile:",
                                  "clearRecentFiles:",
                                  "changeLanguageToAndLearn:",
                                  "takeThemeFrom:",
                                  "acceptCompletion:",
                                  "matchesForString:",
                                  "selectCommandResult:",
                                  "extendSelectionInScope:",
                                  "executeCommandWithTag:",
                                  "selectMatch:",
                                  "selectItem:",
                                  "selectTab:",
                                  "newFileFromTemplate:",
                                  "findInProjectWithOptions:"};

// Other names of actions that have a menu item or a key: Backward and Forward of Left and Right.
names const synonyms = {"insertParagraphSeparator:",
                        "moveWordBackward:",
                        "moveWordForward:",
                        "moveWordBackwardAndModifySelection:",
                        "moveWordForwardAndModifySelection:",
                        "moveSubWordBackward:",
                        "moveSubWordForward:",
                        "moveSubWordBackwardAndModifySelection:",
                        "moveSubWordForwardAndModifySelection:",
                        "deleteLeft:",
                        "deleteRight:"};

// What bundle items, Tab and the Bundles menu perform.
names const for_items = {
    "deleteTabTrigger:",        "executeBundleItem:", "executeCommandWithOptions:",
    "expandCodeSnippet:",       "insertSnippet:",     "insertSnippetWithOptions:",
    "newDocumentFromTemplate:", "nextSnippetField:",  "playMacroWithOptions:",
    "previousSnippetField:"};

// Any key closes a tool tip.
names const for_keys = {"abortShowingFoldedText:"};

bool is_query(std::string const& name) {
  return name.back() != ':' || name.ends_with("IsChecked:") ||
         (name.rfind("can", 0) == 0 && name.size() > 3 && std::isupper(name[3]));
}

void add_selectors(std::vector<platform::menu_item> const& items, names& found) {
  for (platform::menu_item const& item : items) {
    if (!item.selector.empty()) found.insert(item.selector);
    add_selectors(item.items, found);
  }
}

void add_actions(plist::value const& binding, names& found) {
  if (auto const* action = binding.as_string()) found.insert(*action);
  for (plist::value const& action : binding.elements()) add_actions(action, found);
  for (auto const& [key, value] : binding.entries()) add_actions(value, found);
}

names minus(names from, names const& other) {
  std::erase_if(from, [&](std::string const& name) { return other.contains(name); });
  return from;
}

class reachable_actions : public app_test {
 protected:
  names all_actions() {
    names result;
    app().newProject();
    auto const open = app().orderedControllers();
    commands::html_output::current()->show_output("", plist::dictionary(), {}, "");
    for (platform::responder* r :
         {static_cast<platform::responder*>(&open[0]->textView()),
          static_cast<platform::responder*>(open[0]), static_cast<platform::responder*>(open[1]),
          static_cast<platform::responder*>(&app()),
          desktop.html_windows.back()->first_responder()})
      for (std::string const& name : r->selectors())
        if (!is_query(name)) result.insert(name);
    return result;
  }
  names in_menus() {
    names result;
    add_selectors(app().mainMenu(), result);
    add_selectors(app().contextMenu(), result);
    add_selectors(app().tabMenu(), result);
    add_selectors(app().treeMenu(), result);
    add_selectors(app().actionsWithoutMenu(), result);
    for (char const* part :
         {"lineNumber", "fileEncoding", "lineEnding", "tabSize", "softTabs", "overwriteMode"}) {
      EXPECT_FALSE(app().statusMenu(part).empty()) << part;
      add_selectors(app().statusMenu(part), result);
    }
    add_selectors(app().listItems("encodings"), result);
    return result;
  }
  static names on_keys() {
    names result;
    WynKeyBindingManager const manager({source_file("share/KeyBindings.dict")});
    for (auto const& [key, binding] : manager.keyBindings()) add_actions(binding, result);
    return result;
  }
};

TEST_F(reachable_actions, each_has_a_menu_item_or_a_key) {
  app().newDocument();
  names missing = minus(minus(all_actions(), in_menus()), on_keys());
  for (names const& exceptions : {taking_an_argument, synonyms, for_keys, for_items})
    missing = minus(missing, exceptions);
  EXPECT_EQ(missing, names());
}

TEST_F(reachable_actions, menus_and_keys_name_no_others) {
  app().newDocument();
  names const all = all_actions();
  EXPECT_EQ(minus(in_menus(), all), names());
  EXPECT_EQ(minus(on_keys(), all), names());
}

}  // namespace
