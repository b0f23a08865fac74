#pragma once

#include "headless/headless_desktop.h"

#include <string>

class WynTextView;

namespace app {

/// What a text view and its document look like, as one line of JSON for scripts and tests. Lines,
/// columns and offsets count from 0; `beeps` and the alerts are those since the file was opened.
std::string batch_state(WynTextView const& view, int beeps,
                        std::vector<headless::scripted_alerts::record> const& alerts);

}  // namespace app
