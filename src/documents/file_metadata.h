#pragma once

#include <string>
#include <string_view>

#include "path/file_system_calls.h"
#include "path/file_version.h"
#include "plist/value.h"

/// What is remembered of a file outside its text: property lists in its extended attributes, under
/// names that are given without the "user." which stands before them on the disk. They follow a
/// symbolic link. A file's modification date never changes. Where a file system or the permissions
/// refuse an attribute nothing happens. Main thread only.
namespace documents {

/// The largest value that is written, in bytes as they are stored: some file systems have no more
/// than 4 KiB for all attributes of a file.
constexpr std::size_t max_attribute_size = 1024;
/// The largest that is read, in bytes as they come when they have been unpacked.
constexpr std::size_t max_unpacked_size = std::size_t{128} << 10;

/// The value in the text dialect, compressed where that makes it shorter.
std::string attribute_bytes(plist::value const& value);
/// The opposite, for any bytes. Nothing if they hold no property list.
plist::value attribute_value(std::string const& bytes);

/// The name of the type of the file system that holds the path ("ext4"), "unknown" if there is no
/// way to tell.
std::string filesystem(std::string const& path);

/// By the user default WynDocumentDisableFSMetaData, a list of names of file systems or a flag:
/// whether files there are to have no such attributes, and those that they have aren't looked at.
bool disable_xattr(std::string const& path);

/// A regular file that is held open for its attributes, so that they are those of one file. Where
/// it can't be opened for reading, or they are disabled, it seems to have none.
class attribute_file {
 public:
  explicit attribute_file(std::string const& path);

  bool is(path::file_version const& file) const;

  /// Nothing if there is no such attribute, or if it holds no property list.
  plist::value get(std::string const& name) const;

  /// Stores the value, or removes the attribute if the value is nothing. A list that would be too
  /// large loses its last elements. A file whose attribute says the same isn't touched.
  void set(std::string const& name, plist::value const& value) const;

 private:
  path::file_descriptor file_;
  struct stat info_ {};
};

plist::value GetFileAttribute(std::string const& path, std::string const& name);
void savePlistMetadata(std::string const& path, plist::value const& value, std::string const& name);

}  // namespace documents
