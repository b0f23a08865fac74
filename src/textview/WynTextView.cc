#include "textview/WynTextView.h"

#include "actions/register_movement_functions.h"
#include "actions/register_transform_functions.h"
#include "actions/register_view_actions.h"
#include "documents/WynDocument.h"
#include "keys/WynKeyBindingManager.h"
#include "layout/bracket_marks.h"
#include "layout/geometry.h"
#include "layout/word_marks.h"
#include "platform/desktop.h"
#include "platform/user_defaults.h"
#include "platform/utf.h"
#include "search/WynFindManager.h"
#include "search/find_highlights.h"
#include "search/find_scope.h"
#include "styles/symbol_list.h"
#include "styles/view_styles.h"
#include "text/views/folding_filter.h"
#include "textview/WynCompletionManager.h"
#include "textview/access/text_access.h"
#include "textview/isearch/WynISearchWindow.h"
#include "textview/mouse/drop_target.h"
#include "textview/mouse/mouse_tracker.h"
#include "textview/view_will_change.h"
#include "typing/line_indenter.h"

#include <algorithm>
#include <limits>

/// Hears of changes that no action of this view makes: they come from another view of the document
/// or from the document itself.
class WynTextView::change_observer final : public text::storage_observer {
 public:
  explicit change_observer(WynTextView& view) : view_(view), storage_(view.document_->storage()) {
    storage_.add_observer(this);
  }
  ~change_observer() override { storage_.remove_observer(this); }

  // Shown when the change is complete.
  void did_change_memento(unsigned long, unsigned long) override {
    if (view_.viewChangeNesting_ == 0 && view_.access_ != nullptr) view_.access_->tell();
    if (view_.viewChangeNesting_ != 0 || view_.host_ == nullptr || view_.outsideTimer_ != nullptr)
      return;
    view_.outsideTimer_ = platform::desktop::current().loop().schedule(
        0, false, [view = &view_] { view->showChangesFromOutside(); });
  }

 private:
  WynTextView& view_;
  text::storage& storage_;
};

namespace {

/// What needs nothing of a text view but its text::view, and so is the same for all.
struct plain_action_maps {
  actions::action_map actions;
  actions::title_action_map titles;
};

plain_action_maps const& plain_actions() {
  static plain_action_maps const maps = [] {
    plain_action_maps made;
    actions::register_movement_functions(made.actions);
    actions::register_transform_functions(made.actions, made.titles);
    actions::register_view_actions(made.actions, made.titles);
    return made;
  }();
  return maps;
}

}  // namespace

WynTextView::WynTextView()
    : styles_(std::make_unique<styles::view_styles>()),
      symbols_(std::make_unique<styles::symbol_list>(*this)),
      indenter_(std::make_unique<typing::line_indenter>(*this)),
      mouse_(std::make_unique<textview::mouse_tracker>(*this)),
      drop_(std::make_unique<textview::drop_target>(*this)),
      brackets_(std::make_unique<layout::bracket_marks>(
          *this, [this] { return pairsAtCaret("highlightPairs"); })),
      words_(std::make_unique<layout::word_marks>(*this)) {
  addClipboardMethods();
  actions_.inherit(plain_actions().actions);
  titles_.inherit(plain_actions().titles);
  addEditingMethods();
  addUndoMethods();
  addExtensionMethods();
  addScopedSettingMethods();
  addScrollingMethods();
  addBookmarkMethods();
  addFoldingMethods();
  addFindMethods();
  addISearchMethods();
  addStyleSheetMethods();
  addPairMethods();
  addSnippetMethods();
  addMacroMethods();
  addCommandMethods();
  addCompletionMethods();
  defaultsToken_ = platform::notification_center::standard().observe(
      platform::user_defaults::did_change,
      [this](platform::notification const& n) { userDefaultsDidChange(n.info); });
  initializeSettings();
  userDefaultsDidChange({});
}

WynTextView::~WynTextView() {
  if (hasSeenKey_) WynKeyBindingManager::sharedInstance().forgetTextView(*this);
  setDocument(nullptr);
}

void WynTextView::setDocument(std::shared_ptr<WynDocument> document) {
  detachView();
  document_ = std::move(document);
  attachView();
}

void WynTextView::detachView() {
  if (view_ == nullptr) return;
  abortMacroRecording();
  leaveCodeSnippetEditing();
  closeIncrementalSearchWindow();
  WynCompletionManager::sharedInstance().closeFor(*this);
  abandonMarkedText();
  abandoned_.reset();
  flash_.end(host_);
  brackets_->reset();
  words_->reset();
  mouse_->forget_press();
  drop_->exit();
  drop_->forget_files();
  documentToken_.reset();
  access_.reset();
  changeObserver_.reset();
  outsideTimer_.reset();
  snapshotMetaData();
  detachTokenizer();
  WynFindManager::sharedInstance().viewWillClose(*this);
  findScope_.reset();
  document_->releaseView(view_);
  document_->closeDocument();
  view_ = nullptr;
}

void WynTextView::attachView() {
  if (document_ == nullptr) return;
  document_->openDocument();
  document_->checkForFilesystemChanges();
  view_ = document_->obtainView();
  attachTokenizer();
  indentSources_ = {};
  readConventions();
  noteEndsOfLines();
  changeLanguageToAndLearn(languageChoiceForCurrentFile(), false);
  changeObserver_ = std::make_unique<change_observer>(*this);
  applyOptionsToView();
  if (openFilesFolded()) openFolded();
  setupTextFrame();
  symbols_->restart();
  publishAll();
  setNeedsDisplay();
  scrollToStoredPosition();
  if (accessObserver_ != nullptr) accessObserver_->caret_moved();
}

// Not where the user has been already, who has folded as he likes.
void WynTextView::openFolded() {
  auto& filter = *view_->folding_filter;
  if (view_->first_visible_line >= 0 || !filter.foldings.empty() || !view_->foldings_enabled)
    return;
  text::iterator const caret = view_->selection.current_mark.base;
  filter.fold_level(0);
  view_->selection.set_caret(view_->in_view(caret));
}

void WynTextView::bind(value_observer observer) {
  observer_ = std::move(observer);
  publishAll();
}

void WynTextView::updateValueForKey(plist::value const& value, std::string_view key) {
  if (observer_) observer_(key, value);
}

void WynTextView::showChangesFromOutside() {
  outsideTimer_.reset();
  if (view_ == nullptr) return;
  view_->first_refresh_line = std::numeric_limits<std::uint32_t>::max();
  view_->last_refresh_line = 0;
  // Undo in another view puts the caret of this one back where this one made the change.
  view_->show_selection();
  recalcFrameSize();
  setNeedsDisplay();
  followMarks();
  publishPosition();
  symbols_->update(true);
  WynFindManager::sharedInstance().viewDidChange(*this);
}

void WynTextView::publishPosition() {
  updateValueForKey(line_before_filters(view_->selection.current_mark), "lineNumber");
  updateValueForKey(column_before_wrap(view_->selection.current_mark), "columnNumber");
}

void WynTextView::publishAll() {
  if (view_ == nullptr || !observer_) return;
  publishPosition();
  publishIndentation();
  updateValueForKey(overwriteMode_, "overwriteMode");
  publishLanguage();
  shownSnippetField_.clear();
  publishSnippetField();
  updateValueForKey(symbols_->current(), "currentSymbol");
}

bool WynTextView::respondsToSelector(std::string_view selector) const {
  // These four are named actions, and yet menus and keys find them only by performing them.
  for (char const* name : {"moveLeft:", "moveRight:", "moveUp:", "moveDown:"})
    if (selector == name) return false;
  return actions_.has_action(selector) || responder::respondsToSelector(selector);
}

std::vector<std::string> WynTextView::selectors() const {
  std::vector<std::string> names = responder::selectors();
  for (std::string& name : actions_.names()) names.push_back(std::move(name));
  return names;
}

plist::value WynTextView::performSelectorWithObject(std::string_view selector,
                                                    plist::value const& object) {
  bool known = false;
  return performNamed(selector, object, known);
}

// The result of an action, or of a method of this object.
plist::value WynTextView::performNamed(std::string_view selector, plist::value const& object,
                                       bool& known) {
  auto const* const action = actions_.find(selector);
  known = action != nullptr || responder::respondsToSelector(selector);
  if (!known || !isRecordingMacro() || !isStepOfMacro(selector))
    return action != nullptr ? performAction(*action)
                             : responder::performSelectorWithObject(selector, object);
  std::size_t const steps = macroRecordingBuffer_->size();
  std::uint64_t const refusals = refusals_;
  recordMacroCommand(selector, object);
  recording_suspended const unrecorded(*this);
  if (action != nullptr) return performAction(*action);
  plist::value result = responder::performSelectorWithObject(selector, object);
  // A command that the user didn't let run is no step; a macro with one has done what comes before.
  bool const is_refused = refusals_ != refusals && !selector.starts_with("play");
  if (is_refused && isRecordingMacro()) macroRecordingBuffer_->resize(steps);
  return result;
}

plist::value WynTextView::performAction(actions::action_map::action const& action) {
  if (view_ == nullptr) return {};
  bool done = false;
  {
    textview::view_will_change const scope(*this, true);
    done = action(view_);
  }
  if (!done) platform::desktop::current().beep();
  return done;
}

// By key or menu. Typing knows itself where a run of it ends.
bool WynTextView::tryToPerformWith(std::string_view selector, plist::value const& object) {
  if (selector != "insertText:" && selector != "deleteBackward:" && selector != "deleteForward:")
    typingRun_.end();
  bool known = false;
  performNamed(selector, object, known);
  if (known) return true;
  return nextResponder() != nullptr && nextResponder()->tryToPerformWith(selector, object);
}

void WynTextView::doCommandBySelector(std::string_view selector) {
  if (!tryToPerformWith(selector, {})) platform::desktop::current().beep();
}

plist::value WynTextView::query(std::string_view name, plist::value const& argument) {
  std::string const key(name);
  if (view_ != nullptr && actions_.has_action(key)) return actions_.perform_action(key, view_);
  if (view_ != nullptr && titles_.has_action(key)) return titles_.perform_action(key, view_);
  return responder::query(name, argument);
}

void WynTextView::addAction(std::string selector, std::function<void()> action) {
  addMethod(std::move(selector), [this, action = std::move(action)](plist::value const&) {
    if (view_ == nullptr) return plist::value(false);
    textview::view_will_change const scope(*this, true);
    action();
    return plist::value();
  });
}

void WynTextView::key_down(platform::key_event const& event) {
  if (view_ == nullptr) return;
  if (mouse_->gesture().is_going_on()) showPendingKeys("");
  mouse_->key_pressed();
  abandoned_.reset();
  hasSeenKey_ = true;
  showFindNote("");
  plist::value const key = unicode::to_utf8(event.characters);
  if (performSelectorWithObject("abortShowingFoldedText:", key).boolean_or(false)) return;
  if (WynCompletionManager::sharedInstance().sendEvent(*this, event)) return;
  if (iSearchWindow_ != nullptr && iSearchWindow_->sendEvent(event)) return;
  if (host_ != nullptr) host_->hide_cursor_until_mouse_moves();
  if (!WynKeyBindingManager::sharedInstance().interpretKeyEventForTextView(event, *this))
    platform::desktop::current().beep();
}

void WynTextView::showPendingKeys(std::string const& keys) {
  updateValueForKey(keys, "pendingKeys");
}

void WynTextView::forgetPendingKeys() {
  if (WynKeyBindingManager::sharedInstance().forgetTextView(*this)) showPendingKeys("");
}

void WynTextView::interpretKeyEvents(platform::key_event const& event) {
  if (host_ != nullptr) host_->interpret_key_event(event);
}

platform::accessible_text* WynTextView::begin_access(platform::accessible_text_observer& observer) {
  accessObserver_ = &observer;
  if (view_ == nullptr) return nullptr;
  if (access_ == nullptr) access_ = std::make_unique<textview::text_access>(*this, observer);
  return access_.get();
}

void WynTextView::end_access() {
  access_.reset();
  accessObserver_ = nullptr;
}

void WynTextView::set_host(platform::view_host* host) {
  WynCompletionManager::sharedInstance().closeFor(*this);
  host_ = host;
  if (host_ == nullptr) {
    blinkTimer_.reset();
    centerTimer_.reset();
    outsideTimer_.reset();
    flash_.end(nullptr);
    mouse_->forget_press();
    drop_->exit();
    return;
  }
  userDefaultsDidChange({});
  setupTextFrame();
  startTokenizer();
  focus_changed();
  if (view_ != nullptr) scrollToStoredPosition();
}
