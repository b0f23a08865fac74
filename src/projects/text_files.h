#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>

/// Which files project windows open and search as text.
namespace projects {

/// What a file's extension says. Any thread may read it.
struct text_file_rules {
  std::set<std::string, std::less<>> text, binary;  ///< by the settings
  std::set<std::string, std::less<>> languages;     ///< of the languages that are known

  /// Main thread only.
  static text_file_rules standard(std::set<std::string, std::less<>> languages);

  /// Nothing if only the content can tell.
  std::optional<bool> is_text(std::string_view path) const;
};

/// What follows the last dot of the name, in lower case; "" for names with none but at their
/// beginning or end.
std::string extension_of(std::string_view path);

/// How many bytes of a file are looked at.
inline constexpr std::size_t text_head = 8192;

/// Whether bytes are text: UTF-8 without control characters. `head` is the whole file, or its first
/// `text_head` bytes, where a character may be cut. Any thread.
bool looks_like_text(std::string_view head);

/// Whether project windows open the file: by its name, else by what it holds. What a file held is
/// remembered until it changes. Main thread only.
bool can_open_file(std::string const& path, text_file_rules const& rules);

/// Opens what is not opened so far, and the other way round, by the lists in the settings. Nothing
/// happens to files without an extension.
void toggle_treated_as_text(std::string const& path, text_file_rules const& rules);
/// The user has opened it explicitly: from now on it, and others with its extension, can be.
void learn_to_open(std::string const& path, text_file_rules const& rules);

}  // namespace projects
