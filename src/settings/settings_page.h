#pragma once

#include <string>

namespace settings {

/// All settings as a page in Markdown, which docs/settings.md holds.
std::string settings_page();

}  // namespace settings
