#pragma once

#include <string>
#include <string_view>

#include "plist/value.h"

/// Which language a file is in, by its name and its first line, and what the user has taught about
/// that. Languages are dictionaries of grammars, told apart by their `uuid`. Bindings are the
/// user's: dictionaries of `language` (a uuid), `name`, `fileTypes` and perhaps `firstLineMatch`.
/// Any thread.
namespace language_choice {

/// The length of the longest end of `path` that is of one of the file types, 0 for none. What
/// stands before it must be ".", "/" or "_", or nothing. One "*" in a type is any part of a name.
std::size_t longest_suffix(std::string_view path, plist::value const& file_types);

/// The uuid of a language, or "". The user's bindings go before what the grammars say, the first
/// line before the name, and `default_language` is for unknown files.
std::string for_file(std::string_view path, std::string_view first_line,
                     plist::array const& languages, plist::array const& bindings,
                     std::string const& default_language);

/// The word by which a file's language is learned: its extension, or else its name.
std::string word_to_learn(std::string const& path);
/// Takes the word out of all bindings, and those away that are left with nothing to tell by.
plist::array without_word(plist::array const& bindings, std::string const& word);
/// Adds the word to the binding of that language, which is made if there is none.
plist::array with_word(plist::array bindings, std::string const& word, std::string const& language,
                       std::string const& name);

}  // namespace language_choice
