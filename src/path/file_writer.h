#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "path/file_error.h"
#include "path/file_place.h"
#include "path/file_system_calls.h"
#include "path/file_version.h"

/// Writes files so that the text which was on disk isn't lost without a word: every result of
/// every system call is looked at, and an error says whether the old bytes still stand.
namespace path {

/// Takes the next piece, which it has used when it returns. False ends the writing.
using byte_sink = std::function<bool(unsigned char const* bytes, std::size_t size)>;

/// What a file is to hold, made piece by piece, so that no second copy of a large text is needed.
/// It may be produced more than once.
struct file_contents {
  std::uint64_t size = 0;  ///< in bytes, all pieces together
  /// Gives all pieces to the sink, and stops with false once this gives false.
  std::function<bool(byte_sink const&)> produce;
};

/// The contents that stand in `bytes`, which must outlive them.
file_contents contents_of(std::string_view bytes);

/// What the user knows to stand under a name, and so what may be overwritten.
struct known_file {
  std::optional<file_version> version;  ///< nothing: there is no such file
  /// Where the name led; nothing if it may lead anywhere.
  std::optional<file_place> place;
};

struct write_error : file_error {
  /// The file's old bytes are gone, or some of them, and the new ones aren't all there.
  bool target_damaged = false;
  /// The file is as it was: its new bytes could not be put in safety before it was overwritten.
  bool unprotected = false;
  /// The file is as it was, and not the known one; `found` says which it is.
  bool changed = false;
  std::optional<file_version> found = std::nullopt;
  /// The new bytes are all there; but the folder could not be written to the disk, which may lose
  /// them if it stops now.
  bool is_in_place = false;
};

/// Called when all is ready for a file to be overwritten and nothing has been: puts what would be
/// lost if that stopped halfway in safety, or gives the reason why it can't.
using protection = std::function<std::optional<file_error>()>;

struct write_options {
  /// Without it whatever is there is overwritten.
  std::optional<known_file> known;
  /// Also a file whose permissions let no user write. Its owner gets that right for a moment.
  bool even_read_only = false;
  /// Whose owner, group and permissions the file gets; else an existing one keeps its own. Where
  /// the owner can't be given the rights of his that it lends aren't either.
  std::optional<struct stat> attributes;
  /// The same for a file that is made because there is none.
  std::optional<struct stat> attributes_if_new;
  /// Called before a file is overwritten in place.
  protection protect;
};

// Both ways follow a symbolic link, so that the link survives, and make the file if there is none,
// but not its folder. Both refuse what is no regular file, and a file whose permissions let no user
// write, also for a superuser. Nothing is returned when all bytes are on the disk, or if there is
// no way to tell.
//
// Other programs may do what they like to the file, the folder and the path at any time. Links are
// followed once, at the beginning; from then on everything is done to the file that is open, or to
// its name in the folder that is open. What others write until the first byte is written is never
// overwritten, if the file is `known`. What they write later is reported: the save has failed then,
// unless it comes after all bytes of the save. (Between a look at the size and the write or the cut
// that follows nobody can look.)

/// Overwrites the file, which stays the same for processes that have it open and keeps its owner,
/// hard links and attributes. The space is reserved first where the file system can, so that a full
/// disk leaves the old bytes alone. A new file that can't be written whole is removed again.
/// `written` is set to what stands in the file after the last byte of it.
std::optional<write_error> write_in_place(std::string const& path, file_contents const& contents,
                                          write_options const& options,
                                          std::optional<file_version>& written,
                                          file_system_calls& calls = file_system_calls::system());
std::optional<write_error> write_in_place(std::string const& path, file_contents const& contents,
                                          file_system_calls& calls = file_system_calls::system());

/// Puts a new file with the same owner, permissions and attributes in the place of the old one, so
/// that at any moment either the old or the new bytes are found whole. Refuses a file that has
/// other hard links. Needs the right to make files in the folder, and fails if the owner can't be
/// kept. What writes of the same file that were killed have left beside it is removed.
std::optional<write_error> write_atomically(std::string const& path, file_contents const& contents,
                                            write_options const& options,
                                            std::optional<file_version>& written,
                                            file_system_calls& calls = file_system_calls::system());
std::optional<write_error> write_atomically(std::string const& path, file_contents const& contents,
                                            file_system_calls& calls = file_system_calls::system());

}  // namespace path
