#pragma once

#include "platform/find_panel.h"
#include "plist/value.h"
#include "search/live_find.h"
#include "search/text_query.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace search {
class searched_view;
}

/// What to find and to replace, for all windows: the options, the find pasteboard, the histories
/// and the panel in which they are edited. Main thread only; there is one.
///
/// The options are a dictionary: `findString`, `replaceString`, `ignoreCase`, `wrapAround`,
/// `regularExpression`, `findInProjectRegularExpression`, `replaceAllScope` ("selection" or
/// "document"), `wholeWords`, `inSelection`, `action` and `statusText`. All but the find string,
/// which is the pasteboard's, and what is of the moment are kept under the user default
/// WynFindPanelOptions; what was sought last comes back from the history.
class WynFindManager : public platform::find_panel_delegate {
 public:
  /// Posted by the notification center when the matches to be shown may be others.
  static constexpr char const* matchesDidChange = "WynFindMatchesDidChange";

  using enum platform::find_action;

  static WynFindManager& sharedInstance();

  plist::dictionary const& options();
  /// Keys that are missing take their default values.
  void setOptions(plist::dictionary options);
  /// What came of the last search, among the options.
  void setStatusText(std::string const& text);
  /// The options that a search reads.
  platform::find_panel_values findOptions();

  void writeStringToFindPboard(std::string const& string);
  std::string findPboardString();

  plist::array findHistory() const;
  plist::array replaceHistory() const;

  /// With what is selected as what to find, if that is in one line.
  void orderFrontFindPanel(bool replace_field);
  /// False if it isn't open.
  bool closeFindPanel();
  /// `modifiers` as in platform/event.h. Performed by `view`; beeps if nothing was found, or if the
  /// number, from a menu, is no action's. Whether something was.
  bool performFindAction(search::searched_view& view, platform::find_action action,
                         std::uint32_t modifiers);
  /// Takes what is being typed in the panel over.
  void commitEditing();
  /// Whether the panel's fields have been edited since the last commitEditing.
  void objectDidBeginEditing() { isEditing_ = true; }
  void objectDidEndEditing() { isEditing_ = false; }

  /// Selects again what the user had selected, where only typing in the panel has moved that to a
  /// match. False if nothing was selected then.
  bool restoreSelection(search::searched_view& view);

  /// Tells which view the panel's buttons work on.
  void setMainView(std::function<search::searched_view*()> find) { mainView_ = std::move(find); }
  /// What is sought while the panel is on screen; null if nothing can be.
  std::shared_ptr<search::text_query const> shownQuery() const { return shown_; }
  /// What was sought when the program ran before is what is sought now, if nothing else is.
  void restoreFindString();

  /// An action has ended in a view, or its text has changed.
  void viewDidChange(search::searched_view& view) { live_.follow(view); }
  void viewWillClose(search::searched_view const& view);
  /// Where a scroll bar `height` pixels high shows matches; see search::scroll_ticks.
  std::vector<std::size_t> ticks(search::searched_view const& view, std::size_t rows,
                                 std::size_t height) const {
    return live_.ticks(view, rows, height);
  }

  // platform::find_panel_delegate
  void findPanelAction(platform::find_action action, std::uint32_t modifiers, bool by_key) override;
  void findPanelDidChange() override;
  void findPanelDidClose() override;

 private:
  WynFindManager();

  void readPasteboard();
  void remember(char const* history, std::string const& entry);
  void storeOptions() const;
  void fillPanel();
  void takeSelection();
  void updateShownQuery(bool select = false);
  bool updateScope(bool in_selection);
  void dropScope();
  void showLiveFind();
  std::string preview() const;
  void showStatus(plist::value const& answer);
  search::searched_view* mainView() const;

  plist::dictionary options_;
  std::uint64_t pboardCount_ = 0;
  bool isEditing_ = false, hasPanel_ = false;
  std::function<search::searched_view*()> mainView_;
  std::shared_ptr<search::text_query const> shown_;
  platform::find_panel_values shownValues_;  // of which that was made
  search::searched_view* scoped_ = nullptr;  // of which only a part is searched
  search::live_find live_{[this] { showLiveFind(); }};
};
