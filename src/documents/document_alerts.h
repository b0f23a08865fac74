#pragma once

#include <optional>
#include <string>

#include "documents/storage_bytes.h"
#include "encoding/charset.h"
#include "path/file_error.h"
#include "path/file_writer.h"

/// The alerts of documents. Paths may be any bytes. Questions give true for the answer
/// that is named first.
namespace documents {

void tell_out_of_memory(std::string const& path);
void tell_could_not_open(path::file_error const& error, std::string const& path);
void tell_could_not_save(path::write_error const& error, std::string const& path);

/// Save as UTF-8, or not at all; `lost` is what the charset lacks.
bool ask_to_save_as_utf8(std::string const& name, encoding::charset_t charset,
                         std::optional<lost_character> const& lost);
/// Save text with half of a surrogate pair, in this line from 1, as UTF-8, or not.
bool ask_to_save_lone_surrogate(std::string const& name, std::size_t line);
/// Overwrite a file that holds something which its document doesn't, or not.
bool ask_to_lose_bytes(std::string const& path, encoding::charset_t charset);
bool ask_to_change_binary_file(std::string const& path);
bool ask_to_lose_unloaded_file(std::string const& path);
/// Overwrite a read-only file, or not.
bool ask_to_overwrite(std::string const& path);
/// Overwrite a file that takes a lasting harm other than to its bytes ("its capabilities"), or not.
bool ask_to_lose_attributes(std::string const& path, std::string const& lost);
/// Save although no safety copy could be made, or not.
bool ask_to_save_without_copy(std::string const& path, path::file_error const& error);
/// Revert to the version on disk, or keep the one in the window.
bool ask_to_revert(std::string const& path);
/// The same at a save that would overwrite what another program has written.
enum class overwriting { keep_ours, revert, cancel };
overwriting ask_to_overwrite_changes(std::string const& path);

}  // namespace documents
