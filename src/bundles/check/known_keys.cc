#include "bundles/check/known_keys.h"

namespace bundles {
namespace {

using enum content_type;

key_types const item_keys = {{"uuid", text},       {"name", text},
                             {"scope", selector},  {"keyEquivalent", key_event},
                             {"tabTrigger", text}, {"mouseGesture", gesture},
                             {"bundleUUID", text}, {"draggedFileExtensions", texts},
                             {"help", text},       {"comment", text}};
key_types const command_keys = {{"command", text},
                                {"input", text},
                                {"fallbackInput", text},
                                {"inputFormat", text},
                                {"output", text},
                                {"beforeRunningCommand", text},
                                {"requiredCommands", programs},
                                {"writesTo", texts},
                                {"eachRow", number},
                                {"disableOutputAutoIndent", number},
                                {"autoScrollOutput", number},
                                {"dontFollowNewOutput", number}};

key_types with_item_keys(key_types own) {
  own.insert(item_keys.begin(), item_keys.end());
  return own;
}

key_types with_command_keys(key_types own) {
  own.insert(command_keys.begin(), command_keys.end());
  return with_item_keys(std::move(own));
}

}  // namespace

key_types const& keys_of_kind(item_kind kind) {
  static std::map<item_kind, key_types> const all = {
      {item_kind::bundle,
       {{"uuid", text},
        {"name", text},
        {"mainMenu", menu},
        {"ordering", texts},
        {"deleted", texts},
        {"disabled", texts},
        {"isDelta", number},
        {"changed", table},
        {"comment", text}}},
      {item_kind::command, with_command_keys({})},
      {item_kind::drag_command, with_command_keys({})},
      {item_kind::file_template, with_command_keys({{"extension", text}})},
      {item_kind::macro, with_item_keys({{"commands", list}})},
      {item_kind::snippet, with_item_keys({{"content", text}, {"disableAutoIndent", number}})},
      {item_kind::preference, with_item_keys({{"settings", table}})},
      {item_kind::language, with_item_keys({})},
  };
  return all.at(kind);
}

key_types const& rule_keys() {
  static key_types const keys = {{"name", text},
                                 {"scopeName", text},
                                 {"match", pattern},
                                 {"begin", pattern},
                                 {"end", end_pattern},
                                 {"swallow", pattern},
                                 {"contentName", text},
                                 {"include", text},
                                 {"comment", text},
                                 {"patterns", list},
                                 {"captures", captures},
                                 {"beginCaptures", captures},
                                 {"endCaptures", captures},
                                 {"repository", table},
                                 {"applyEndPatternFirst", number},
                                 {"applyEndPatternLast", number},
                                 {"disabled", number},
                                 {"fileTypes", texts},
                                 {"firstLineMatch", pattern},
                                 {"firstLineMatchLast", pattern},
                                 {"foldingStartMarker", pattern},
                                 {"foldingStopMarker", pattern}};
  return keys;
}

key_types const& setting_keys() {
  static key_types const keys = {{"foreground", color},
                                 {"background", color},
                                 {"caret", color},
                                 {"selection", color},
                                 {"lineHighlight", color},
                                 {"invisibles", color},
                                 {"fontStyle", text},
                                 {"bold", number},
                                 {"italic", number},
                                 {"underline", number},
                                 {"showInSymbolList", number},
                                 {"symbolTransformation", program},
                                 {"shellVariables", variables},
                                 {"continuousSpellChecking", number},
                                 {"showInvisibles", number},
                                 {"tabSize", number},
                                 {"softTabs", number},
                                 {"softTabsAreFixed", number},
                                 {"trimTrailingBlanks", number},
                                 {"foldsByIndentation", pattern},
                                 {"smartTypingPairs", pairs},
                                 {"smartTypingPairsEndWithLine", number},
                                 {"quotePrefixPattern", pattern},
                                 {"highlightPairs", pairs},
                                 {"unIndentedLinePattern", pattern},
                                 {"increaseIndentPattern", pattern},
                                 {"decreaseIndentPattern", pattern},
                                 {"indentNextLinePattern", pattern},
                                 {"indentationEndsBlocks", number},
                                 {"alignedLinePatterns", pairs},
                                 {"continuedLinePattern", pattern},
                                 {"completeLinePattern", pattern},
                                 {"flatBlockPattern", pattern},
                                 {"completions", texts},
                                 {"completionCommand", text},
                                 {"disableDefaultCompletion", number}};
  return keys;
}

key_types const& theme_keys() {
  static key_types const keys = {
      {"name", text}, {"uuid", text}, {"comment", text}, {"settings", list}};
  return keys;
}

key_types const& theme_rule_keys() {
  static key_types const keys = {
      {"name", text}, {"scope", selector}, {"comment", text}, {"settings", table}};
  return keys;
}

std::vector<std::string_view> const& choices_for(std::string_view key) {
  static std::map<std::string_view, std::vector<std::string_view>> const all = {
      {"input", {"none", "selection", "document"}},
      {"fallbackInput", {"document", "character", "word", "line", "scope", "none"}},
      {"inputFormat", {"xml"}},
      {"output",
       {"discard", "replaceSelectedText", "replaceDocument", "afterSelectedText", "insertAsSnippet",
        "showAsHTML", "showAsTooltip", "openAsNewDocument", "replaceSelection", "insertAsText"}},
      {"beforeRunningCommand", {"nop", "saveActiveFile", "saveModifiedFiles"}},
      {"writesTo", {"temporary", "folder", "anywhere"}}};
  static std::vector<std::string_view> const none;
  auto const found = all.find(key);
  return found == all.end() ? none : found->second;
}

}  // namespace bundles
