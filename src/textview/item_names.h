#pragma once

#include <string>

namespace textview {

/// "Bundle: Item" of the bundle item that is executing, for what is told of faults in it; without
/// one what it is: "snippet", "macro".
std::string name_for_messages(char const* otherwise);

}  // namespace textview
