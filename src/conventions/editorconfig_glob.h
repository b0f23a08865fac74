#pragma once

#include <string_view>

namespace conventions {

/// Whether the heading of a section of an `.editorconfig` names a file. `path` is relative to the
/// folder of that, with "/" between names and none at its start.
///
///     *       any text without "/"           {a,b}    one of these, which may hold all of this
///     **      any text                       {1..9}   an integer from the one to the other
///     ?       any character but "/"          [abc]    one of these characters, or from "a-c"
///     \       makes the next one plain       [!abc]   any other character but "/"
///
/// A heading with a "/" in it is matched from the folder on, any other with the last names of the
/// path. What is no pattern, such as a brace without its partner or one around a single text, is
/// plain. The time is bounded by the product of both lengths; braces nested too deeply match
/// nothing.
bool editorconfig_glob_matches(std::string_view glob, std::string_view path);

}  // namespace conventions
