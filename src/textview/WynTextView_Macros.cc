#include "actions/clipboard.h"
#include "bundles/BundleItem.h"
#include "bundles/BundleManager.h"
#include "bundles/bundle_alerts.h"
#include "platform/desktop.h"
#include "platform/log.h"
#include "platform/scoped_value.h"
#include "search/WynFindManager.h"
#include "settings/store.h"
#include "text/views/view.h"
#include "textview/WynTextView.h"
#include "textview/item_names.h"
#include "textview/macro_steps.h"
#include "textview/view_will_change.h"

#include <algorithm>
#include <chrono>
#include <iterator>

// Macros: what the user does is noted by the names of actions, and done again.

namespace {

using clock = std::chrono::steady_clock;

constexpr char const* scratch_macro_key = "WynMacroManagerScratchMacro";
constexpr int deepest_macro = 32;  // macros in macros; more are one that plays itself
constexpr auto silent_wait = std::chrono::milliseconds(500);
constexpr std::size_t steps_between_looks = 64;

/// Those that note what they have done themselves, and those that are no step of a macro.
constexpr std::string_view not_recorded[] = {"toggleMacroRecording:",
                                             "abortMacroRecording:",
                                             "playScratchMacro:",
                                             "saveScratchMacro:",
                                             "playMacroWithOptions:",
                                             "insertTab:",
                                             "insertBacktab:",
                                             "expandCodeSnippet:",
                                             "executeBundleItem:",
                                             "deleteTabTrigger:",
                                             "undoTyping:",
                                             "redoTyping:",
                                             "findNext:",
                                             "findPrevious:",
                                             "replaceAndFind:",
                                             "replaceAll:",
                                             "replaceAllInSelection:",
                                             "findWithOptions:",
                                             "abortShowingFoldedText:",
                                             "showScope:",
                                             "showContextMenu:",
                                             "orderFrontFontPanel:",
                                             "orderFrontRightMarginPanel:",
                                             "orderFrontPasteboardPanel:",
                                             "orderFrontExecuteCommandPanel:",
                                             "executeCommandWithTag:",
                                             "performExecuteCommand:",
                                             "ISIM_incrementalSearch:",
                                             "ISIM_reverseIncrementalSearch:",
                                             "showCompletionList:"};

/// Puts the find options and, unless the macro is for it, the clipboard back as they were.
class kept_surroundings {
 public:
  explicit kept_surroundings(bool clipboard)
      : options_(WynFindManager::sharedInstance().options()) {
    if (clipboard) clipboard_.emplace();
  }
  ~kept_surroundings() { WynFindManager::sharedInstance().setOptions(options_); }
  kept_surroundings(kept_surroundings const&) = delete;
  kept_surroundings& operator=(kept_surroundings const&) = delete;

 private:
  plist::dictionary const options_;
  std::optional<actions::private_clipboard> clipboard_;
};

std::string place_of_step(std::size_t n) {
  return ": commands: step " + std::to_string(n) + ": ";
}

}  // namespace

/// All of a macro while it plays, with those in it. Lets the user end what takes long, and notes
/// what could not be done.
class WynTextView::macro_run {
 public:
  macro_run(WynTextView& view, std::string called) : view_(view), name_(std::move(called)) {}

  void stop() { is_stopped_ = true; }
  void note(std::string const& place, std::string const& fault) {
    view_.tellOfFault(name_ + place + fault);
    has_fault_ = true;
  }
  bool has_fault() const { return has_fault_; }

  /// Whether the user wants no more: of the macro, or of a search, a command or whatever a step has
  /// waited for. To be asked often.
  bool is_stopped() {
    if (waits_.cancellations() != cancellations_) stop();
    platform::busy_panel& panel = platform::desktop::current().busy();
    if (++looks_ % steps_between_looks != 0 || !panel.is_wanted() ||
        clock::now() < begun_ + silent_wait)
      return is_stopped_;
    if (!scope_) {
      scope_.emplace(waits_, [this] { stop(); });
      panel.show("Playing a macro\u2026");
    }
    if (panel.handle_events(0)) stop();
    return is_stopped_;
  }
  ~macro_run() {
    if (scope_) platform::desktop::current().busy().end();
  }
  macro_run(macro_run const&) = delete;
  macro_run& operator=(macro_run const&) = delete;

 private:
  WynTextView& view_;
  std::string const name_;
  platform::waiting& waits_ = platform::desktop::current().waits();
  std::uint64_t const cancellations_ = waits_.cancellations();
  clock::time_point const begun_ = clock::now();
  std::size_t looks_ = 0;
  bool has_fault_ = false, is_stopped_ = false;
  std::optional<platform::waiting::scope> scope_;
};

void WynTextView::addMacroMethods() {
  addMethod("toggleMacroRecording:", [this](plist::value const&) {
    if (view_ == nullptr) return plist::value(false);
    toggleMacroRecording();
    return plist::value();
  });
  addMethod("toggleMacroRecordingMenuTitle", [this](plist::value const&) {
    return plist::value(isRecordingMacro() ? "Stop Recording" : "Start Recording");
  });
  addMethod("abortMacroRecording:", [this](plist::value const&) {
    abortMacroRecording();
    return plist::value();
  });
  addMethod("canAbortMacroRecording",
            [this](plist::value const&) { return plist::value(isRecordingMacro()); });
  addMethod("playMacroWithOptions:", [this](plist::value const& macro) {
    return plist::value(view_ != nullptr && playMacro(macro));
  });
  addMethod("playScratchMacro:", [this](plist::value const&) {
    plist::array const steps = settings::store().array(scratch_macro_key);
    return plist::value(view_ != nullptr && !steps.empty() && playMacro(steps));
  });
  addMethod("saveScratchMacro:",
            [](plist::value const&) { return plist::value(saveScratchMacro()); });
  for (char const* name : {"canPlayScratchMacro", "canSaveScratchMacro"})
    addMethod(name, [](plist::value const&) {
      return plist::value(!settings::store().array(scratch_macro_key).empty());
    });
}

// All that is done meanwhile is one step of undo.
void WynTextView::toggleMacroRecording() {
  if (isRecordingMacro()) {
    plist::array steps = std::move(*macroRecordingBuffer_);
    abortMacroRecording();
    settings::store().set(scratch_macro_key, std::move(steps));
    return;
  }
  view_->storage->undo_manager.begin_group();
  macroRecordingBuffer_.emplace();
  updateValueForKey(true, "isRecordingMacro");
}

void WynTextView::abortMacroRecording() {
  if (!isRecordingMacro()) return;
  macroRecordingBuffer_.reset();
  view_->storage->undo_manager.end_group();
  updateValueForKey(false, "isRecordingMacro");
}

void WynTextView::recordMacroCommand(std::string_view command, plist::value const& argument) {
  if (!isRecordingMacro() || isRecordingSuspended_) return;
  plist::dictionary step{{"command", std::string(command)}};
  if (argument) step.insert_or_assign("argument", argument);
  macroRecordingBuffer_->push_back(std::move(step));
}

bool WynTextView::isStepOfMacro(std::string_view selector) const {
  bool const is_action = std::count(selector.begin(), selector.end(), ':') == 1 &&
                         selector.ends_with(':') && !selector.ends_with("IsChecked:");
  return is_action && std::find(std::begin(not_recorded), std::end(not_recorded), selector) ==
                          std::end(not_recorded);
}

// False if there was anything in it that could not be done; with a step that is none it isn't
// begun.
bool WynTextView::playMacro(plist::value const& macro) {
  if (playing_ != nullptr) return playSteps(macro);
  macro_run outermost(*this, textview::name_for_messages("macro"));
  platform::scoped_value<macro_run*> const playing(playing_, &outermost);
  return playSteps(macro);
}

bool WynTextView::playSteps(plist::value const& macro) {
  plist::value const kept_steps = macro.as_array() ? macro : macro["commands"];
  plist::array const& steps = kept_steps.elements();
  for (std::size_t n = 0; n < steps.size(); ++n)
    if (std::string const fault = textview::fault_of_macro_step(steps[n]); !fault.empty()) {
      playing_->note(place_of_step(n), fault);
      return false;
    }
  if (macroDepth_ == deepest_macro) {
    playing_->note(": commands: ", "a macro plays itself, and was ended");
    return false;
  }
  if (isRecordingMacro())
    recordMacroCommand("playMacroWithOptions:", plist::dictionary{{"commands", steps}});
  recording_suspended const unrecorded(*this);
  kept_surroundings const kept(!macro["useGlobalClipboard"].boolean_or(false));
  platform::scoped_value const deeper(macroDepth_, macroDepth_ + 1);
  typingRun_.end();
  text::view const* const played_in = view_;
  {
    textview::view_will_change const scope(*this, true);
    for (std::size_t n = 0; n < steps.size(); ++n) {
      std::string const& command = *steps[n]["command"].as_string();
      if (!tryToPerformWith(command, steps[n]["argument"]))
        playing_->note(place_of_step(n), "there is no action " + command);
      if (playing_->is_stopped() || view_ != played_in) break;
    }
  }
  typingRun_.end();
  return !playing_->has_fault();
}

void WynTextView::stopMacro() {
  if (playing_ != nullptr) playing_->stop();
}

void WynTextView::commandWasRefused() {
  ++refusals_;
  stopMacro();
}

bool WynTextView::saveScratchMacro() {
  plist::array const steps = settings::store().array(scratch_macro_key);
  if (steps.empty()) return false;
  auto const name = platform::desktop::current().prompts().run(
      "Save Macro", "Name under which the Bundles menu shows it", "My Macro");
  if (!name || name->empty()) return name.has_value();
  auto& manager = BundleManager::sharedInstance();
  auto const item = BundleItem::bundleItemWithContent(
      manager, {{"name", *name}, {"commands", steps}}, bundles::item_kind::macro);
  item->setBundle(*manager.defaultBundle());
  manager.addBundleItem(item);
  item->saveChanges();
  if (!item->isModified()) return true;
  std::string const fault = item->saveFault();
  manager.removeBundleItem(item->UUID());
  bundles::tell("Error Saving Macro",
                "The macro " + platform::quoted(*name) + " could not be saved (" + fault +
                    "). It is kept until you record another one: make room for it, or make the "
                    "folder writable, and choose Save Macro\u2026 again.");
  return true;
}
