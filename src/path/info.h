#pragma once

#include <cstdint>
#include <string>

/// What kind of thing a path names, as a combination of bits. Any thread. For lists of files in a
/// window, which are to come: so far only tests use it.
///
///     if (path::info(path) & path::flag::hidden) continue;  // no entry of a file list
namespace path {
namespace flag {

inline constexpr std::uint32_t meta_self = 0x1;    ///< the last component is "."
inline constexpr std::uint32_t meta_parent = 0x2;  ///< the last component is ".."
// By lstat(2): a link is a link, whatever it leads to.
inline constexpr std::uint32_t file_bsd = 0x4;
inline constexpr std::uint32_t directory_bsd = 0x10;
inline constexpr std::uint32_t symlink_bsd = 0x40;
inline constexpr std::uint32_t socket_bsd = 0x100;  ///< a named pipe; true sockets have no bit
inline constexpr std::uint32_t hidden_bsd = 0x200;  ///< never set
/// The name begins with "." and is more than "." or "..".
inline constexpr std::uint32_t hidden_dotfile = 0x800;
/// /dev, and where file systems are mounted that hold no files of anybody's, such as /proc.
inline constexpr std::uint32_t hidden_volume = 0x1000;
// What only a desktop's file manager knows. No bit of these is ever set here.
inline constexpr std::uint32_t file_finder = 0x8;
inline constexpr std::uint32_t directory_finder = 0x20;
inline constexpr std::uint32_t symlink_finder = 0x80;
inline constexpr std::uint32_t hidden_finder = 0x400;
inline constexpr std::uint32_t volume_finder = 0x4000;
inline constexpr std::uint32_t alias = 0x8000;
inline constexpr std::uint32_t package = 0x10000;
inline constexpr std::uint32_t application = 0x20000;
inline constexpr std::uint32_t hidden_extension = 0x80000;

inline constexpr std::uint32_t file = file_bsd;
inline constexpr std::uint32_t directory = directory_bsd;
inline constexpr std::uint32_t symlink = symlink_bsd;
inline constexpr std::uint32_t dotfile = hidden_dotfile;
inline constexpr std::uint32_t meta = meta_self | meta_parent;
inline constexpr std::uint32_t hidden = meta | hidden_bsd | hidden_volume;

}  // namespace flag

/// The bits of `path::flag` that hold for the path; those of its name alone if there is no such
/// file. All of them are found, whatever the mask asks for.
std::uint32_t info(std::string const& path, std::uint32_t mask = 0xFFFFFF);

/// Whether the volume that holds the path has the extended attribute of that number, such as
/// exchanging two files. File systems here have no such attributes: false.
constexpr bool check_volume_attribute(std::string const&, unsigned) {
  return false;
}

}  // namespace path
