#include "settings/table.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "encoding/charset.h"
#include "encoding/line_ending.h"
#include "settings/limits.h"

namespace settings {
namespace {

using form = value_type::form;
using rows = std::vector<setting>;

value_type boolean() {
  return {form::boolean, 0, 0, {}};
}

value_type text() {
  return {form::text, 0, 0, {}};
}

value_type color() {
  return {form::color, 0, 0, {}};
}

value_type list() {
  return {form::list, 0, 0, {}};
}

value_type dictionary() {
  return {form::dictionary, 0, 0, {}};
}

value_type boolean_or_list() {
  return {form::boolean_or_list, 0, 0, {}};
}

value_type integer(int least, int most) {
  return {form::integer, double(least), double(most), {}};
}

value_type real(int least, int most) {
  return {form::real, double(least), double(most), {}};
}

value_type one_of(std::vector<std::string> choices) {
  return {form::choice, 0, 0, std::move(choices)};
}

template <typename Keys>
value_type one_of_keys(Keys const& keys) {
  std::vector<std::string> choices;
  for (char const* key : keys)
    if (key != nullptr) choices.emplace_back(key);
  return one_of(std::move(choices));
}

action view_switch(char const* selector) {
  return {selector, true};
}

action menu(char const* selector) {
  return {selector, false};
}

plist::value pair(char const* first, char const* second) {
  return plist::array{first, second};
}

plist::value strings(std::initializer_list<char const*> texts) {
  return plist::array(texts.begin(), texts.end());
}

plist::value variable(char const* name, char const* value) {
  return plist::dictionary{{"variable", name}, {"value", value}};
}

plist::value filter(char const* command) {
  return plist::dictionary{
      {"command", command}, {"input", "selection"}, {"output", "replaceSelection"}};
}

// The languages that have an entry of their own don't speak for others: theirs is the oldest. What
// the user chooses is newer than all of them.
plist::value soft_tabs() {
  constexpr plist::date distant_past{-63113904000};  // the first day that can be written
  constexpr plist::date past{0};
  auto const entry = [](bool on, plist::date updated) {
    return plist::value(plist::dictionary{{"softTabs", on}, {"updated", updated}});
  };
  return plist::dictionary{{"source.catch-all", entry(false, past)},
                           {"text.catch-all", entry(false, past)},
                           {"source.plist", entry(false, distant_past)},
                           {"source.ruby", entry(true, distant_past)},
                           {"source.yaml", entry(true, distant_past)}};
}

rows text_editing() {
  return {
      {"WynTextViewTabSize", integer(1, max_tab_size), 4, scope::language, "Tab Size",
       "Columns of a tab.", menu("takeTabSizeFrom:")},
      {"WynDetectIndentation", boolean(), true, scope::program, "Detect Indentation",
       "Indent a file as its lines are indented, where most of them agree."},
      {"WynFollowEditorConfig", boolean(), true, scope::program, "Follow .editorconfig",
       "Write files as the `.editorconfig` in their folder or one above says."},
      {"WynFollowModelines", boolean(), true, scope::program, "Follow Modelines",
       "Indent a file as a modeline in it says, such as `vim: set et sw=4:`."},
      {"WynTextViewSoftWrap", boolean(), false, scope::language, "Soft Wrap",
       "Show lines that are too long in several rows.", menu("toggleSoftWrap:")},
      {"WynTextViewRightMarginColumn", integer(-1, max_margin), -1, scope::document, "Wrap Column",
       "Wrap lines at this column. With -1 they are wrapped at the edge of the window.",
       menu("takeRightMarginFrom:")},
      {"WynWrapColumns", list(), plist::array{40, 72, 78, 80, 100, 120}, scope::program,
       "Wrap Columns in the Menu", "The columns offered under View > Wrap Column."},
      {"WynTextViewIndentWrappedRows", boolean(), true, scope::program, "Indent Wrapped Rows",
       "Begin the rows that continue a line in the column of its text.",
       view_switch("toggleIndentWrappedRows:")},
      {"WynTextViewHardWrapEnabled", boolean(), false, scope::program, "Break Lines While Typing",
       "Break a line when typing at its end makes it longer than the wrap column.",
       view_switch("toggleHardWrap:")},
      {"WynTextViewShowWrapMarginIndicator", boolean(), false, scope::program, "Show Wrap Column",
       "Draw a line at the wrap column.", view_switch("toggleShowWrapMarginIndicator:")},
      {"WynTextViewHighlightWrapMargin", boolean(), true, scope::program,
       "Shade Beyond Wrap Column", "Shade what lies beyond the line at the wrap column.",
       view_switch("toggleHighlightWrapMargin:")},
      {"WynTextViewRulerColumn", integer(0, max_margin), 0, scope::program, "Ruler",
       "Draw a line after this column, whether lines are wrapped or not. With 0 there is none.",
       menu("takeRulerColumnFrom:")},
      {"WynTextViewAutoIndentEnabled", boolean(), true, scope::program, "Auto Indent",
       "Indent a new line like the previous one, or as its language says.",
       view_switch("toggleAutoIndent:")},
      {"WynTextViewIndentedPasteEnabled", boolean(), true, scope::program, "Re-indent Pasted Lines",
       "Re-indent pasted lines to fit their new position.", view_switch("toggleIndentedPaste:")},
      {"WynClipboardHistoryCount", integer(0, 1000), 50, scope::program, "Clips in History",
       "How many clips the clipboard's history holds."},
      {"WynClipboardHistoryBytes", integer(0, 1 << 30), 32 << 20, scope::program,
       "Size of Clipboard History",
       "Bytes of UTF-16 that the clipboard's history holds. A clip of more than a quarter of it is "
       "not kept there."},
      {"WynClipboardHistoryKept", boolean(), false, scope::program, "Keep Clipboard History",
       "Keep the clipboard's history after the program has ended, in `ClipboardHistory.plist` in "
       "the state folder, where only you can read it."},
      {"WynTextViewSmartTypingEnabled", boolean(), true, scope::document, "Type Pairs",
       "Type brackets and quotes in pairs.", menu("toggleSmartTyping:")},
      {"WynTextViewDefaultSmartTypingPairs", list(),
       plist::array{pair("[", "]"), pair("{", "}"), pair("(", ")"), pair("\"", "\"")},
       scope::program, "Pairs to Type",
       "The pairs where the language has none of its own: lists of the opening and "
       "the closing character."},
      {"WynTextViewFreehandedModeEnabled", boolean(), false, scope::program, "Freehanded Editing",
       "Allow the caret beyond the ends of lines.", view_switch("toggleFreehandedEdit:")},
      {"WynTextViewOverwriteModeEnabled", boolean(), false, scope::document, "Overwrite",
       "Begin in overwrite mode.", menu("toggleOverwriteMode:")},
      {"WynTextViewFoldingsEnabled", boolean(), true, scope::program, "Folding Enabled",
       "Let blocks be folded. Turning it off unfolds everything.",
       view_switch("toggleFoldingsEnabled:")},
      {"WynTextViewOpenFilesFoldedEnabled", boolean(), false, scope::program,
       "Fold Files When Opened", "Fold all blocks of a file when it is opened.",
       view_switch("toggleOpenFilesFolded:")},
      {"WynTextViewExpandSnippetsOnTab", boolean(), true, scope::program,
       "Expand Snippets with Tab", "Let Tab expand the tab trigger before the caret."},
      {"WynTextViewTabShiftsLines", boolean(), true, scope::program, "Shift Lines with Tab",
       "Let Tab shift the lines of a selection to the right, and not replace them."},
      {"WynTextViewLineNumbersEnabled", boolean(), true, scope::program, "Line Numbers",
       "Show the numbers of lines in the gutter.", view_switch("toggleLineNumbers:")},
      {"WynTextViewShowSoftWrapInGutterEnabled", boolean(), true, scope::program,
       "Wrap Marks in Gutter", "Mark the rows of wrapped lines in the gutter.",
       view_switch("toggleShowSoftWrapInGutter:")},
      {"WynTextViewShowBookmarksInGutterEnabled", boolean(), true, scope::program,
       "Bookmarks in Gutter", "Show bookmarks in the gutter.",
       view_switch("toggleShowBookmarksInGutter:")},
      {"WynTextViewShowInvisiblesEnabled", boolean(), false, scope::program, "Invisibles",
       "Show tabs, line ends, no-break spaces and control characters.",
       view_switch("toggleShowInvisibles:")},
      {"WynTextViewShowBlanks", boolean(), false, scope::program, "Blanks",
       "Show spaces, tabs and line ends.", view_switch("toggleShowBlanks:")},
      {"WynTextViewIndentGuides", boolean(), true, scope::program, "Indent Guides",
       "Draw a line at each tab stop within the indentation.", view_switch("toggleIndentGuides:")},
      {"WynTextViewMatchingBrackets", boolean(), true, scope::program, "Matching Brackets",
       "Mark the bracket at the caret and its partner.", view_switch("toggleMatchingBrackets:")},
      {"WynTextViewSelectedWord", boolean(), true, scope::program, "Places of Selected Word",
       "Mark the other places of a word that is selected.", view_switch("toggleSelectedWord:")},
      {"WynTextViewSmoothScrolling", boolean(), true, scope::program, "Smooth Scrolling",
       "Let the text glide when the wheel or a key scrolls it.",
       view_switch("toggleSmoothScrolling:")},
      {"WynTextViewHighlightCurrentLine", boolean(), true, scope::program, "Current Line",
       "Shade the line of the caret.", view_switch("toggleHighlightCurrentLine:")},
      {"WynTextViewWideCharactersEnabled", boolean(), true, scope::program, "Wide Characters",
       "Count wide characters as two columns and marks as none. If off, each unit of UTF-16 is "
       "one."},
      {"WynWordCharacters", text(), "_", scope::program, "Word Characters",
       "What belongs to words beside letters and digits."},
      {"WynWordsExcludedFromCapitalization", list(),
       strings({"of", "a",  "the",  "and", "an", "or",  "nor", "but", "if",  "then", "else", "when",
                "up", "at", "from", "by",  "on", "off", "for", "in",  "out", "over", "to"}),
       scope::program, "Words Not Capitalized", "Words that stay in lower case within a title."},
      {"WynTextViewPrettyPrintColorCommand", text(),
       "awk '{printf(\"#%02x%02x%02x\", $1*255, $2*255, $3*255)}'", scope::program,
       "Command for Colours",
       "The shell command that makes the text of a colour that is dropped. It gets red, green and "
       "blue, each from 0 to 1."},
  };
}

rows fonts_and_colors() {
  return {
      {"WynTextViewNormalFontName", text(), "monospace", scope::program, "Font",
       "The family of the font.", menu("orderFrontFontPanel:")},
      {"WynTextViewNormalFontSize", real(min_font_size, max_font_size), 12.0, scope::program,
       "Font Size", "In points.", menu("orderFrontFontPanel:")},
      {"WynTextViewAntiAliasEnabled", boolean(), true, scope::program, "Smooth Text",
       "Draw text with anti-aliasing.", view_switch("toggleAntiAliasEnabled:")},
      {"WynLineHeightDelta", integer(-100, 1000), 0, scope::program, "Line Spacing",
       "Pixels added to the height of each line."},
      {"WynBaselineDelta", real(-100, 1000), 0.0, scope::program, "Baseline",
       "Pixels by which text stands lower in its line."},
      {"WynTextViewForegroundColor",
       color(),
       {},
       scope::program,
       "Text Colour",
       "Used where the theme has none. If not set, the desktop's."},
      {"WynTextViewBackgroundColor",
       color(),
       {},
       scope::program,
       "Background Colour",
       "Used where the theme has none. If not set, the desktop's."},
      {"WynTextViewSelectionColor",
       color(),
       {},
       scope::program,
       "Selection Colour",
       "Used where the theme has none. If not set, the desktop's."},
      {"WynThemeManagerSelectedTheme",
       text(),
       {},
       scope::program,
       "Theme",
       "The UUID of the theme, where it does not follow the desktop.",
       menu("takeThemeFrom:")},
      {"WynThemeManagerFollowsDesktop", boolean(), true, scope::program, "Follow Desktop",
       "Use the light or the dark theme, as the desktop is.", menu("toggleThemeFollowsDesktop:")},
      {"WynThemeManagerLightTheme", text(), "7CAF2E89-DB5D-561D-A119-A2A7AF6D929B", scope::program,
       "Light Theme", "The UUID of the theme for a light desktop."},
      {"WynThemeManagerDarkTheme", text(), "64080B94-DF18-5159-9D76-94986E324593", scope::program,
       "Dark Theme", "The UUID of the theme for a dark desktop."},
  };
}

rows files() {
  return {
      {"WynDefaultFileEncoding", one_of_keys(encoding::charset_key), "utf-8", scope::document,
       "Encoding", "The charset of new files."},
      {"WynDefaultLineEndings", one_of_keys(line_ending::key), "lf", scope::document,
       "Line Endings", "The line ends of new files."},
      {"WynFileEncodingAndLineEndingsPreserve", boolean(), true, scope::program,
       "Keep Encoding and Line Endings",
       "Save a file with the charset and the line ends that it was read with."},
      {"WynPreserveSupplementaryCharacters", boolean(), true, scope::program,
       "Keep Supplementary Characters",
       "Read characters outside of the Basic Multilingual Plane as they are."},
      {"WynTrimTrailingBlanks", one_of({"never", "kept", "always"}), "never", scope::program,
       "Trim Trailing Blanks",
       "Whether saving takes blanks off the ends of lines: `kept` where the file had none when it "
       "was opened. The line of the caret stays, and text in which they mean something."},
      {"WynFinalNewline", one_of({"never", "kept", "always"}), "kept", scope::program,
       "Final Line End",
       "Whether saving puts a line end after the last line: `kept` where the file had one when it "
       "was opened."},
      {"WynSaveAtomically", boolean(), false, scope::program, "Save by Replacing",
       "Save by replacing the file instead of overwriting it."},
      {"WynDocumentDisableFSMetaData", boolean_or_list(), false, scope::program,
       "Don't Store Metadata With Files",
       "Don't keep caret, bookmarks and folds with files: at all, or on the file systems listed by "
       "their types, such as `nfs4`."},
      {"WynAppDelegateOpenUntitledDocument", one_of({"ahig", "startup", "never"}), "ahig",
       scope::program, "Untitled Document at Start",
       "Whether a start without files opens an untitled document: always (`ahig`, `startup`) or "
       "never."},
      {"WynOpenFilesTogether", boolean(), true, scope::program, "Open Files Together",
       "Whether several files that are opened at once are tabs of one window, or each has a window "
       "of its own."},
      {"DisableURLScheme", boolean(), false, scope::program, "Ignore qrnt Links",
       "Do nothing when another program hands over a link of the scheme `qrnt`."},
      {"NSRecentDocumentsLimit", integer(1, 10000), 25, scope::program, "Recent Files",
       "How many files File > Open Recent holds."},
      {"WynProjectTextFiles",
       list(),
       {},
       scope::program,
       "Files Opened as Text",
       "Extensions, without a dot and in lower case, of files that project windows open and search "
       "whatever they hold."},
      {"WynProjectBinaryFiles", list(), plist::array{"gif", "icns", "png", "psd", "tiff", "qnproj"},
       scope::program, "Files Not Opened as Text",
       "Extensions of files that project windows neither open nor search."},
      {"WynFolderReferenceFilePattern", text(),
       "!(/\\.(?!htaccess)[^/]*|\\.(qnproj|o|pyc)|/Icon\\r|/svn-commit(\\.[2-9])?\\.tmp)$",
       scope::program, "Files of Folders",
       "A regular expression for the paths of the files that folders of projects show. With a `!` "
       "before it, for those that they leave out."},
      {"WynFolderReferenceFolderPattern", text(),
       "!.*/(\\.[^/]*|CVS|_darcs|_MTN|\\{arch\\}|blib|.*~\\.nib|"
       ".*\\.(framework|app|pbproj|pbxproj|xcode(proj)?|bundle))$",
       scope::program, "Folders in Folders", "The same for the paths of the folders in them."},
      {"WynProjectDrawerSide", one_of({"left", "right"}), "left", scope::program,
       "Side of the Side Bar", "Where the tree of files stands in project windows."},
      {"WynProjectDrawerWidth", integer(80, 4000), 240, scope::program, "Width of the Side Bar",
       "In pixels, in new project windows: as wide as it was last."},
      {"WynProjectDrawerFontSize", integer(5, 72), 11, scope::program, "Font Size in the Side Bar",
       "In points."},
      {"WynFileChooserDeny", list(), plist::array{"dict", "plist", "strings"}, scope::program,
       "Files Not Offered", "Extensions of files that Go to File leaves out."},
      {"WynFileChooserAllow",
       list(),
       {},
       scope::program,
       "Files Offered",
       "Extensions of the only files that Go to File offers, if there are any."},
      {"WynFileChooserBindings", list(), plist::array{}, scope::program, "Files Found by Letters",
       "Which files were chosen in Go to File, and by which letters: dictionaries with "
       "`searchString` and `match`.",
       menu("goToFile:")},
      {"WynSaveAllOnDeactivate", boolean(), false, scope::program, "Save When Leaving",
       "Save edited files when another program becomes active, where nothing has to be asked."},
      {"WynDefaultLanguage",
       text(),
       {},
       scope::program,
       "Language",
       "The UUID of the language of files that no other fits."},
      {"WynLanguageFileBindings",
       list(),
       {},
       scope::program,
       "Languages of File Types",
       "Dictionaries with the UUID of a `language`, its `name` and its `fileTypes`. Choosing a "
       "language from the menu adds to them."},
  };
}

rows advanced() {
  return {
      {"WynShellVariables", list(),
       plist::array{variable("PATH", "/usr/bin:/bin:/usr/sbin:/sbin"),
                    variable("QN_ORGANIZATION_NAME", "__MyCompanyName__")},
       scope::program, "Shell Variables",
       "Environment variables of commands: dictionaries with `variable` and `value`."},
      {"WynCommandOutputLimit", integer(1, 1 << 20), 64, scope::program, "Command Output Limit",
       "Megabytes. A command that writes more, and more than twice what it reads, goes on only if "
       "the user wants it."},
      {"WynBundleManagerDisambiguateMenuFontSize", integer(0, 100), 0, scope::program,
       "Choice Menu Font Size",
       "In points, of the menu that asks which of several bundle items is meant; 0 is 12."},
      {"NSDragAndDropTextDelay", integer(0, 10000), 150, scope::program, "Drag Delay",
       "Milliseconds that the mouse is held still on the selection before moving it drags text."},
      {"DisableClipboardPrecomposing", integer(0, 1), 0, scope::program, "Keep Clips Decomposed",
       "With 0, decomposed letters and accents from other programs are composed."},
      {"DisableColumnSelectionTogglingOnOption", boolean(), false, scope::program,
       "Keep Alt from Selecting Columns",
       "Don't let a tap of Alt turn a selection into a rectangle and back."},
  };
}

rows remembered() {
  return {
      {"WynTextViewScopedTabSize",
       dictionary(),
       {},
       scope::language,
       "Tab Sizes by Language",
       "",
       menu("takeTabSizeFrom:")},
      {"WynTextViewScopedSoftTabs", dictionary(), soft_tabs(), scope::language,
       "Soft Tabs by Language", "", menu("toggleSoftTabs:")},
      {"WynTextViewScopedSoftWrap",
       dictionary(),
       {},
       scope::language,
       "Soft Wrap by Language",
       "",
       menu("toggleSoftWrap:")},
      {"WynWindowPlacementKept", boolean(), true, scope::program, "Keep Window Placement",
       "Open the first window in the size and at the place of the one that was closed last."},
      {"WynWindowPlacement",
       text(),
       {},
       scope::program,
       "Last Window",
       "The size and the place of the window that was closed last."},
      {"WynEnhancedTerminalUsage",
       dictionary(),
       {},
       scope::program,
       "Link to quirn",
       "Where Help > Use quirn in Terminals has made a link, `linkPath`, and to which program, "
       "`path`."},
      {"WynHTMLOutputFrames",
       dictionary(),
       {},
       scope::program,
       "Windows with Output",
       "Where the windows with the output of commands were, by the UUIDs of the commands."},
      {"WynMacroManagerScratchMacro", list(), plist::array{}, scope::program, "Last Macro",
       "The steps of the macro that was recorded last.", menu("playScratchMacro:")},
      {"WynExecuteCommandPanelOptions", dictionary(), filter("cat -n"), scope::program,
       "Filter Panel",
       "What Text > Filter Through Command proposes: a dictionary with `command`, `input`, "
       "`output` "
       "and perhaps `eachRow`.",
       menu("orderFrontExecuteCommandPanel:")},
      {"WynExecuteCommandMenuHistory", list(),
       plist::array{filter("cat -n"), filter("sort"), filter("xxd"), filter("sed 's/.*/\"&\"/'"),
                    filter("wc"), filter("tr -s '[\\t\\n]' ' '|fold -sw $QN_COLUMNS"),
                    filter("openssl base64")},
       scope::program, "Recent Filters", "The commands that text was sent through last.",
       menu("executeCommandWithTag:")},
      {"WynFindPanelOptions", dictionary(),
       plist::dictionary{{"findString", ""},
                         {"replaceString", ""},
                         {"ignoreCase", false},
                         {"wrapAround", true},
                         {"wholeWords", false},
                         {"regularExpression", false},
                         {"findInProjectRegularExpression", false},
                         {"findInProjectIgnoreCase", false},
                         {"findInProjectWholeWords", false},
                         {"findInProjectGitignore", true},
                         {"findInProjectIncluded", ""},
                         {"findInProjectExcluded", ""},
                         {"findInProjectScope", ""},
                         {"replaceAllScope", "selection"}},
       scope::program, "Find Options", "The last options of the find bar."},
      {"findHistory", list(), {}, scope::program, "Find History", "The last texts searched for."},
      {"replaceHistory", list(), {}, scope::program, "Replace History", "The last replacements."},
      {"WynBundleManagerDisabledBundles",
       list(),
       {},
       scope::program,
       "Disabled Bundles",
       "UUIDs of bundles that are not used."},
      {"WynBundleManagerDeletedBundles",
       list(),
       {},
       scope::program,
       "Deleted Bundles",
       "UUIDs of installed bundles that were deleted by the user."},
      {"WynThemeManagerDeletedThemes",
       list(),
       {},
       scope::program,
       "Deleted Themes",
       "UUIDs of installed themes that were deleted by the user."},
      {"WynDefaultBundleForNewBundleItems",
       text(),
       {},
       scope::program,
       "Bundle for New Items",
       "The UUID of the bundle that new items are put in."},
  };
}

std::vector<setting> table() {
  std::vector<setting> result;
  auto const add = [&](page on, rows added) {
    for (setting& row : added) row.on = on;
    std::move(added.begin(), added.end(), std::back_inserter(result));
  };
  add(page::text_editing, text_editing());
  add(page::fonts_and_colors, fonts_and_colors());
  add(page::files, files());
  add(page::advanced, advanced());
  add(page::remembered, remembered());
  return result;
}

}  // namespace

std::vector<setting> const& all() {
  static auto const& rows = *new std::vector<setting>(table());
  return rows;
}

setting const* find(std::string_view key) {
  auto const found =
      std::find_if(all().begin(), all().end(), [&](setting const& row) { return row.key == key; });
  return found == all().end() ? nullptr : &*found;
}

}  // namespace settings
