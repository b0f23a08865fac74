#pragma once

/// How quirnote-write-file ends.
enum class write_file_status {
  written = 0,
  unchanged = 1,  ///< it failed; the old bytes stand
  wrong_usage = 2,
  damaged = 3,  ///< it failed on its way; neither the old nor the new bytes are all there
};
