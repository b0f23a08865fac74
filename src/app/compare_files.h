#pragma once

#include <memory>
#include <string>

class AppDelegate;
class WynDocument;

namespace app {

struct compared_files {
  std::shared_ptr<WynDocument> shown = nullptr;  ///< null if nothing is shown
  bool are_read = false;
};

/// Shows in a new document how the second file differs from the first one, as a unified diff. If
/// their texts are equal, or one of them can't be read, it says so instead.
compared_files compare_files(AppDelegate& app, std::string const& first, std::string const& second);

}  // namespace app
