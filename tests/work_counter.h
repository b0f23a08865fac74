#pragma once

#include <cstdint>

/// How many basic blocks of our own code this thread has run, in a build that counts them: the same
/// number in every run, on every machine. Loops inside of libraries, such as copying memory, count
/// as one.
std::uint64_t blocks_run();
/// And those of the threads that have come to their end.
std::uint64_t blocks_run_by_ended_threads();
