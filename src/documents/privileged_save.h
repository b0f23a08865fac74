#pragma once

#include <optional>

#include "documents/save_file.h"

namespace documents {

/// Whether a save failed for a reason that an administrator's rights overcome.
bool lacks_permission(path::write_error const& error);

/// After a save that was `refused` for lack of permission: writes with an administrator's rights,
/// for which the desktop asks the user (pkexec). An existing regular file keeps its owner and mode
/// and is protected by a safety copy meanwhile; a new one in an existing folder belongs to the
/// administrator and has the permissions that are asked for. The window is painted meanwhile and
/// takes no keys. Nothing if all bytes are on the disk; the refusal if the rights can't be had.
std::optional<path::write_error> save_with_privileges(save_request const& request,
                                                      std::optional<safety_copy>& copy,
                                                      std::optional<path::file_version>& written,
                                                      path::write_error const& refused);

}  // namespace documents
