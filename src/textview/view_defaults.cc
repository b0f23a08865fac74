#include "platform/user_defaults.h"
#include "styles/scoped_settings.h"
#include "textview/WynTextView.h"

// What the keys of the text view mean as long as the user has set nothing.

namespace {

plist::value pair(char const* opening, char const* closing) {
  return plist::array{opening, closing};
}

plist::value entry(char const* key, plist::value value, plist::date updated) {
  return plist::dictionary{{key, std::move(value)}, {"updated", updated}};
}

// The languages that have an entry of their own don't speak for others: theirs is the oldest.
plist::value soft_tabs() {
  plist::date const now = scoped_settings::now();
  constexpr plist::date distant_past{-63113904000};  // the first day that can be written
  return plist::dictionary{{"source.catch-all", entry("softTabs", false, now)},
                           {"text.catch-all", entry("softTabs", false, now)},
                           {"source.plist", entry("softTabs", false, distant_past)},
                           {"source.ruby", entry("softTabs", true, distant_past)},
                           {"source.yaml", entry("softTabs", true, distant_past)}};
}

plist::value small_words() {
  plist::array words;
  for (char const* word :
       {"of", "a",  "the",  "and", "an", "or",  "nor", "but", "if",  "then", "else", "when",
        "up", "at", "from", "by",  "on", "off", "for", "in",  "out", "over", "to"})
    words.emplace_back(word);
  return words;
}

}  // namespace

void WynTextView::registerDefaults() {
  // Each new view comes here.
  static plist::dictionary const lasting = {
      {"WynTextViewNormalFontName", "monospace"},
      {"WynTextViewNormalFontSize", 12.0},
      {"WynTextViewTabSize", 4},
      {"WynTextViewSoftWrap", false},
      {"WynTextViewRightMarginColumn", -1},
      {"WynWrapColumns", plist::array{40, 72, 78, 80, 100, 120}},
      {"WynTextViewShowWrapMarginIndicator", false},
      {"WynTextViewHighlightWrapMargin", true},
      {"WynTextViewFreehandedModeEnabled", false},
      {"WynTextViewOverwriteModeEnabled", false},
      {"WynTextViewAutoIndentEnabled", true},
      {"WynTextViewHardWrapEnabled", false},
      {"WynTextViewIndentedPasteEnabled", true},
      {"WynTextViewSmartTypingEnabled", true},
      {"WynTextViewFoldingsEnabled", true},
      {"WynTextViewOpenFilesFoldedEnabled", false},
      {"WynTextViewExpandSnippetsOnTab", true},
      {"WynTextViewLineNumbersEnabled", false},
      {"WynTextViewShowSoftWrapInGutterEnabled", true},
      {"WynTextViewShowBookmarksInGutterEnabled", true},
      {"WynTextViewAntiAliasEnabled", true},
      {"WynTextViewHighlightCurrentLine", false},
      {"WynTextViewShowInvisiblesEnabled", false},
      {"WynTextViewWideCharactersEnabled", true},
      {"WynTextViewPrettyPrintColorCommand",
       "awk '{printf(\"#%02x%02x%02x\", $1*255, $2*255, $3*255)}'"},
      {"WynTextViewDefaultSmartTypingPairs",
       plist::array{pair("[", "]"), pair("{", "}"), pair("(", ")"), pair("\"", "\"")}},
      {"WynWordsExcludedFromCapitalization", small_words()},
      {"WynShellVariables",
       plist::array{
           plist::dictionary{{"variable", "PATH"}, {"value", "/usr/bin:/bin:/usr/sbin:/sbin"}},
           plist::dictionary{{"variable", "QN_ORGANIZATION_NAME"},
                             {"value", "__MyCompanyName__"}}}},
  };
  auto& defaults = platform::user_defaults::standard();
  defaults.register_defaults(lasting);
  defaults.register_defaults({{"WynTextViewScopedSoftTabs", soft_tabs()}});
}
