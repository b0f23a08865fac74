#include <algorithm>
#include <chrono>
#include <mutex>
#include <stdexcept>

#include "bundles/BundleItem.h"
#include "bundles/BundleManager.h"
#include "bundles/language_catalogue.h"
#include "documents/WynDocument.h"
#include "grammar/tokenize_filter.h"
#include "path/path.h"
#include "platform/desktop.h"
#include "platform/log.h"
#include "platform/utf.h"
#include "regex/onig_library.h"
#include "settings/store.h"
#include "styles/WynThemeManager.h"
#include "styles/color_strings.h"
#include "styles/language_choice.h"
#include "styles/scope_report.h"
#include "styles/symbol_list.h"
#include "styles/view_colors.h"
#include "styles/view_styles.h"
#include "text/views/folding_filter.h"
#include "textview/WynTextView.h"

// The language of the document, the scopes that its grammar gives to the text, and the styles that
// theme and bundles give to these.

namespace {

constexpr char const* bindings_key = "WynLanguageFileBindings";
constexpr char const* default_language_key = "WynDefaultLanguage";
// No more of the first line is looked at to determine the language.
constexpr std::size_t first_line_units = 4096;

/// The index among languages; `grammar::catalogue::none` when there is none.
unsigned index_of_language(std::string const& uuid) {
  auto const& items =
      BundleManager::sharedInstance().bundleItemsOfKind(bundles::item_kind::language);
  for (std::size_t n = 0; n < items.size(); ++n)
    if (!uuid.empty() && items[n]->UUID() == uuid) return static_cast<unsigned>(n);
  return grammar::catalogue::none;
}

std::shared_ptr<BundleItem> item_of_language(std::string const& uuid) {
  unsigned const index = index_of_language(uuid);
  if (index == grammar::catalogue::none) return nullptr;
  return BundleManager::sharedInstance().bundleItemsOfKind(bundles::item_kind::language)[index];
}

plist::value language_with(std::string const& uuid) {
  auto const item = item_of_language(uuid);
  return item ? item->content() : plist::value();
}

oniguruma::ptrn_t compiled(std::string const& pattern) {
  std::u16string const units = unicode::to_utf16(pattern);
  return {units.data(), units.data() + units.size(), ONIG_OPTION_CAPTURE_GROUP};
}

// `item` is the grammar's path.
void set_folding_patterns(text::view& view, plist::value const& language, std::string const& item) {
  auto const* const start = language["foldingStartMarker"].as_string();
  auto const* const stop = language["foldingStopMarker"].as_string();
  text::view::folding_filter::pattern first, last;
  if (start != nullptr && stop != nullptr) try {
      first = std::make_unique<oniguruma::ptrn_t>(compiled(*start));
      last = std::make_unique<oniguruma::ptrn_t>(compiled(*stop));
    } catch (std::invalid_argument const& error) {
      platform::log_text_once("Quirnote regular expression error\nLanguage name \"" +
                              language["name"].string_or("") + "\"\nError: " + error.what() + "\n" +
                              item + ": " + (first ? "foldingStopMarker" : "foldingStartMarker") +
                              "\n");
      first.reset();
    }
  view.folding_filter->set_patterns(std::move(first), std::move(last));
}

}  // namespace

void WynTextView::addStyleSheetMethods() {
  addMethod("changeLanguageToAndLearn:", [this](plist::value const& uuid) {
    if (view_ == nullptr) return plist::value(false);
    changeLanguageToAndLearn(uuid.string_or(""), true);
    return plist::value();
  });
  addMethod("changeLanguageToAndLearnIsChecked:", [this](plist::value const& uuid) {
    return plist::value(!languageUUID_.empty() && uuid.string_or("") == languageUUID_);
  });
  addMethod("showScope:", [this](plist::value const&) {
    if (view_ == nullptr) return plist::value(false);
    showScope();
    return plist::value();
  });
  auto& center = platform::notification_center::standard();
  themeToken_ = center.observe(WynThemeManager::did_change, [this](auto const&) {
    setCurrentStyleSheet(WynThemeManager::sharedInstance().currentTheme());
  });
  for (char const* name : {BundleManager::languages_did_change, BundleManager::did_change})
    bundleTokens_.push_back(center.observe(name, [this](auto const&) { languagesDidChange(); }));
  bundleTokens_.push_back(center.observe(BundleManager::preferences_did_change,
                                         [this](auto const&) { preferencesDidChange(); }));
}

std::string WynTextView::languageChoiceForFileWithFirstLine(std::string const& path,
                                                            std::string const& first_line) const {
  return language_choice::for_file(
      path, first_line, BundleManager::sharedInstance().languageEntries(),
      settings::store().array(bindings_key), settings::store().string(default_language_key));
}

std::string WynTextView::languageChoiceForCurrentFile() const {
  if (view_ == nullptr) return {};
  text::unit_view const line = view_->storage->line_units(0).substr(0, first_line_units);
  return languageChoiceForFileWithFirstLine(document_->filename(), unicode::to_utf8(line));
}

void WynTextView::changeLanguageToAndLearn(std::string const& uuid, bool learn) {
  if (view_ == nullptr) return;
  languageUUID_ = language_with(uuid) ? uuid : languageChoiceForCurrentFile();
  plist::value const language = language_with(languageUUID_);
  if (!language && !uuid.empty()) {
    platform::log("didn't find language for UUID " + uuid);
    platform::desktop::current().beep();
  }
  currentMode_ = language["name"].string_or("");
  rootScope_ = language["scopeName"].string_or(currentMode_);
  if (learn) learnFileAssociation(languageUUID_);
  setRules(language ? index_of_language(languageUUID_) : grammar::catalogue::none);
  styles_->drop();
  set_folding_patterns(*view_, language,
                       language ? item_of_language(languageUUID_)->sourcePath() : "");
  initializeSettings();
  publishLanguage();
  recalcFrameSize();  // the gutter has marks where the language has blocks
  symbols_->update(true);
  if (host_ != nullptr) host_->reset_cursor();
  setNeedsDisplay();
  postLanguageDidChange();
}

// A view gets its tokenizer with the first language.
void WynTextView::setRules(unsigned language) {
  if (tokenizer_ == nullptr) {
    if (language == grammar::catalogue::none) return;
    auto added = std::make_unique<grammar::tokenize_filter>(*view_->storage);
    tokenizer_ = added.get();
    view_->install_tokenize_filter(std::move(added));
  }
  tokenizer_->set_reset_display([this] { resetDisplay(); });
  tokenizer_->set_rules(bundles::language_catalogue(BundleManager::sharedInstance()), language);
  startTokenizer();
}

// Hidden views start tokenizing on demand.
void WynTextView::startTokenizer() {
  if (tokenizer_ != nullptr && host_ != nullptr && host_->is_seen()) tokenizer_->start();
}

void WynTextView::wait_for_visible() {
  if (view_ == nullptr || host_ == nullptr) return;
  std::size_t const row = layout_.row_at(host_->visible_rect().bottom());
  std::size_t const line = view_->begin(std::min(row, view_->lines() - 1)).base.line;
  while (tokenizer_ != nullptr && !tokenizer_->wait_for(line, std::chrono::hours(1))) continue;
  followMarks();
}

void WynTextView::attachTokenizer() {
  tokenizer_ = dynamic_cast<grammar::tokenize_filter*>(view_->tokenize_filter.get());
  documentToken_ = platform::notification_center::standard().observe(
      WynDocument::filenameDidChange, [this](auto const& n) { filenameDidChange(n.info); },
      document_.get());
}

// The document may keep the view, and the worker continues its work.
void WynTextView::detachTokenizer() {
  if (tokenizer_ != nullptr) tokenizer_->set_reset_display({});
  tokenizer_ = nullptr;
  symbols_->clear();
  styles_->drop();
}

// A file that gets a name gets the language of that, unless the name is unknown.
void WynTextView::filenameDidChange(plist::value const& info) {
  if (view_ == nullptr || info["old"] == info["new"]) return;
  readConventions();
  std::string const choice = languageChoiceForCurrentFile();
  if (!choice.empty() && choice != languageUUID_)
    changeLanguageToAndLearn(choice, false);
  else
    initializeSettings();
}

void WynTextView::publishLanguage() {
  updateValueForKey(languageUUID_.empty() ? "No Language" : currentMode_, "currentMode");
}

void WynTextView::postLanguageDidChange() {
  std::string const filename = document_->filename();
  plist::dictionary info{{"QNDocumentLanguageName", currentMode_},
                         {"QNDocumentLanguageScope", rootScope_}};
  if (!filename.empty()) info.emplace("QNDocumentURL", path::file_url(filename));
  if (std::uint32_t const window = host_ == nullptr ? 0 : host_->window_number(); window != 0)
    info.emplace("QNDocumentWindow", window);
  platform::notification_center::standard().post(language_did_change, this, std::move(info));
}

void WynTextView::learnFileAssociation(std::string const& uuid) {
  std::string const word =
      view_ == nullptr ? "" : language_choice::word_to_learn(document_->filename());
  if (word.empty() || uuid.empty()) return;
  settings::store().set(bindings_key,
                        language_choice::without_word(settings::store().array(bindings_key), word));
  if (languageChoiceForCurrentFile() == uuid) return;
  std::string const name = language_with(uuid)["name"].string_or("untitled");
  settings::store().set(bindings_key, language_choice::with_word(
                                          settings::store().array(bindings_key), word, uuid, name));
}

void WynTextView::languagesDidChange() {
  if (view_ == nullptr) return;
  changeLanguageToAndLearn(language_with(languageUUID_) ? languageUUID_ : "", false);
}

void WynTextView::showScope() {
  std::string const report = styles::scope_report(*this, view_->selection.current_mark.base.pos());
  platform::alert const shown{"Scope", "", {"OK", "Copy"}, 0, false, report};
  auto& desktop = platform::desktop::current();
  if (desktop.alerts().run(shown) == 1)
    desktop.general_pasteboard().set({{std::string(platform::pasteboard_type::text), report}});
}

void WynTextView::preferencesDidChange() {
  styles_->drop();
  initializeSettings();
  setNeedsDisplay();
  symbols_->update(true);
}

// A worker that is done with lines has put them here.
void WynTextView::resetDisplay() {
  auto const lines = tokenizer_ == nullptr ? std::nullopt : tokenizer_->take_redraw_range();
  if (!lines || view_ == nullptr) return;
  auto const row_of = [this](std::size_t line) {
    std::size_t const last = view_->storage->lines() - 1;
    if (line > last) return view_->lines();
    return view_->line_in_view(text::view_iterator(view_, view_->storage->begin_of_line(line)));
  };
  std::size_t const first = row_of(lines->first);
  setNeedsDisplayOfLines(first, std::max(row_of(lines->second), first + 1));
  followMarks();
  symbols_->update(true);
}

bit_stack::storage WynTextView::graphPathForIterator(text::iterator const& it) const {
  if (tokenizer_ == nullptr) return {};
  std::lock_guard const lock(view_->storage->mutex);
  return tokenizer_->graph_path(it.pos());
}

bit_stack::storage WynTextView::graphPathForCaretWait(bool wait) const {
  if (tokenizer_ == nullptr) return {};
  return tokenizer_->graph_path_for_selection(view_->selection, wait);
}

std::vector<std::string> WynTextView::scopeForContext(bit_stack::storage const& path) const {
  return tokenizer_ == nullptr ? std::vector<std::string>() : tokenizer_->scopes(path);
}

plist::value WynTextView::stylesForContext(bit_stack::storage const& path) const {
  if (view_ == nullptr) return {};
  plist::value const* const known = styles_->find(path);
  return known != nullptr ? *known : styles_->add(path, scopeForContext(path));
}

plist::value WynTextView::stylesForTypingAt(text::iterator const& at) const {
  if (tokenizer_ == nullptr) return stylesForContext({});
  tokenizer_->start();
  std::unique_lock lock(view_->storage->mutex);
  bit_stack::storage const path = tokenizer_->graph_path_between(at.pos());
  lock.unlock();
  return stylesForContext(path);
}

styles::style_candidates WynTextView::styleCandidates(
    std::vector<std::string> const& scopes) const {
  return styles_->candidates(scopes);
}

styles::drawn_style const& WynTextView::styleOfPath(grammar::path_tree::id id) const {
  if (styles::drawn_style const* const known = styles_->find_drawn(id)) return *known;
  plist::value style;
  if (view_ != nullptr)
    style = styles_->merged(tokenizer_ == nullptr ? nullptr : tokenizer_->paths(), id);
  platform::color foreground;
  if (host_ != nullptr)
    foreground = styles::styled_palette(host_->palette(), stylesForContext({})).foreground;
  return styles_->add_drawn(id, {styles::style_from_dictionary(style, foreground),
                                 styles::NSColorForKey(style, "background")});
}

plist::value WynTextView::stylesOfPath(grammar::path_tree::id id) const {
  return styles_->merged(tokenizer_->paths(), id);
}

bool WynTextView::isSymbol(grammar::path_tree::id id) const {
  return styles_->is_symbol(*tokenizer_->paths(), id);
}

bool WynTextView::knowsSymbol(grammar::path_tree::id id) const {
  return styles_->knows_symbol(id);
}

void WynTextView::setCurrentStyleSheet(plist::value rules) {
  styles_->set_theme_rules(std::move(rules));
  setNeedsDisplay();
  if (host_ != nullptr) host_->reset_cursor();
}

// Symbols

std::vector<styles::symbol> const& WynTextView::functionPopUp() const {
  return symbols_->items();
}

std::shared_ptr<std::vector<styles::symbol> const> WynTextView::sharedFunctionPopUp() const {
  return symbols_->shared_items();
}

void WynTextView::buildFunctionPopUp() {
  symbols_->build();
}

std::string WynTextView::symbolAtCaret() const {
  return symbols_->at_caret();
}

void WynTextView::symbolsDidChange() {
  platform::notification_center::standard().post(function_pop_up_did_change, this);
}

void WynTextView::currentSymbolDidChange(std::string const& name) {
  updateValueForKey(name, "currentSymbol");
}
