#pragma once

#include <functional>
#include <optional>
#include <string>

#include "path/file_system_calls.h"
#include "path/file_version.h"
#include "text/char_types.h"

/// Files that are changed without being opened, and without a question: what a save of a document
/// would have to ask the user about is a reason to leave the file as it is. Main thread only.
namespace documents {

/// What became of a file; as it was, unless it is `is_damaged`, if there is a `fault`.
struct rewriting {
  std::string fault;  ///< why it isn't written, in words for the user
  bool is_damaged = false;
  std::optional<path::file_version> written;  ///< what stands in it now
};

/// Makes what `change` gives for the text of a file, which must be at this version still, its text,
/// in the charset and with the line ends that it has. Nothing is written where it gives nothing,
/// or `keep` can't take the bytes that stand there. Saved as documents are. Throws std::bad_alloc.
rewriting rewrite_file(
    std::string const& path, path::file_version const& known,
    std::function<std::optional<std::u16string>(text::unit_view text)> const& change,
    std::function<bool(std::string const& old_bytes)> const& keep,
    path::file_system_calls& calls = path::file_system_calls::system());

/// Puts bytes back that stood in a file before, which must be at this version.
rewriting restore_file(std::string const& path, path::file_version const& known,
                       std::string const& bytes,
                       path::file_system_calls& calls = path::file_system_calls::system());

}  // namespace documents
