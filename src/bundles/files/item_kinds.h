#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace bundles {

/// What a property list of a bundle is: the bundle's own info.plist, or an item.
enum class item_kind : std::uint8_t {
  bundle,
  command,
  drag_command,
  macro,
  snippet,
  language,
  preference,
  file_template,
};

/// Items of each kind are in a directory of their own, which decides what a file is; its extension
/// only has to be one of those known. Any thread.
struct kind_row {
  item_kind kind;
  std::string_view name;       ///< what users see
  std::string_view directory;  ///< inside the bundle
  std::string_view extension;  ///< without the dot
};

/// All kinds of items.
inline constexpr std::array<kind_row, 7> item_kinds = {{
    {item_kind::command, "command", "Commands", "qnCommand"},
    {item_kind::drag_command, "dragCommand", "DragCommands", "qnDragCommand"},
    {item_kind::macro, "macro", "Macros", "qnMacro"},
    {item_kind::snippet, "snippet", "Snippets", "qnSnippet"},
    {item_kind::language, "language", "Syntaxes", "qnLanguage"},
    {item_kind::preference, "preference", "Preferences", "qnPreferences"},
    {item_kind::file_template, "template", "Templates", "qnTemplate"},
}};

inline constexpr std::string_view bundle_extension = "qnbundle";
inline constexpr std::string_view support_directory = "Support";
/// What stands in a bundle's menu for a line between items.
inline constexpr std::string_view menu_separator = "------------------------------------";

// The results live to the end of the process.
/// "bundle" for a bundle.
std::string_view name_of(item_kind kind);
/// Empty for a bundle, which is in none.
std::string_view KindToDirectory(item_kind kind);
std::string_view KindToExtension(item_kind kind);

/// What follows the last dot of the file's name, in lower case; empty when it has none.
std::string lowercase_extension(std::string_view path);

/// Whether a file of this name in an item directory is an item: not hidden, of a known extension.
bool is_item_file(std::string_view name);
bool is_bundle_directory(std::string_view name);
/// Whether it is a bundle, or an item by the extension of its kind: what can be installed.
bool is_bundle_file(std::string_view name);

}  // namespace bundles
