#pragma once

#include <string>

class AppDelegate;

namespace app {

/// Offers the user the texts that were left in safety copies by programs which ended before these
/// were in their files: each is restored as unsaved text, kept for later, compared with its file,
/// or discarded. One whose file holds the same text goes without a question.
void offer_safety_copies(AppDelegate& app);

/// The same with copies of the file that stand beside it, where no other folder could take them.
void offer_safety_copies_beside(AppDelegate& app, std::string const& path);

}  // namespace app
