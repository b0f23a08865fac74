#pragma once

#include <string>

#include "plist/value.h"

namespace textview {

/// What is wrong with a step of a macro, as the end of a sentence that begins with it; empty for a
/// dictionary with `command`.
std::string fault_of_macro_step(plist::value const& step);

}  // namespace textview
