#pragma once

#include <string>

namespace quirn {

/// The program that waits for the user: the one that has started this process, by a shell or not.
std::string waiter_name();

}  // namespace quirn
