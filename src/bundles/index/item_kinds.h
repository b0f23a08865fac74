#pragma once

#include <array>
#include <string>
#include <string_view>

namespace bundles {

/// The kinds of things that a bundle holds, each in a directory of its own. The directory decides
/// what a file is; its extension only has to be one of those known. Any thread.
struct item_kind {
  std::string_view kind;
  std::string_view directory;  ///< inside the bundle
  std::string_view extension;  ///< without the dot
};

inline constexpr std::array<item_kind, 7> item_kinds = {{
    {"command", "Commands", "qnCommand"},
    {"dragCommand", "DragCommands", "qnDragCommand"},
    {"macro", "Macros", "qnMacro"},
    {"snippet", "Snippets", "qnSnippet"},
    {"language", "Syntaxes", "qnLanguage"},
    {"preference", "Preferences", "qnPreferences"},
    {"template", "Templates", "qnTemplate"},
}};

inline constexpr std::string_view bundle_extension = "qnbundle";
inline constexpr std::string_view support_directory = "Support";

// Empty for what is not in the table. The results live to the end of the process.
std::string_view DirectoryToKind(std::string_view directory);
std::string_view KindToDirectory(std::string_view kind);
/// Also that of the kind "bundle".
std::string_view KindToExtension(std::string_view kind);

/// What follows the last dot of the file's name, in lower case; empty when it has none.
std::string lowercase_extension(std::string_view path);

/// Whether a file of this name in an item directory is an item: not hidden, of a known extension.
bool is_item_file(std::string_view name);
bool is_bundle_directory(std::string_view name);
/// Whether it is a bundle, or an item by the extension of its kind: what can be installed.
bool is_bundle_file(std::string_view name);

}  // namespace bundles
