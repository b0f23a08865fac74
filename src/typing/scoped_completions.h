#pragma once

#include "plist/value.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {
class responder;
}

namespace typing {

/// What the settings of a scope say of the completion of words.

/// Whether the words of the text are not to be offered ("disableDefaultCompletion").
bool disables_words(plist::value const& settings);

/// What is offered for a word of which `typed` stands before the caret: the lines that the command
/// under "completionCommand" writes, or else the texts under "completions", each once, whether they
/// begin with it or not. The command is told of the word as QN_CURRENT_WORD, and otherwise what the
/// responders from `first` on say. Handles events while it runs; nothing if the user has ended it.
/// What is wrong with it is logged.
std::optional<std::vector<std::u16string>> scoped_completions(plist::value const& settings,
                                                              std::u16string_view typed,
                                                              platform::responder& first);

}  // namespace typing
