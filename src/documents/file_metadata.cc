#include "documents/file_metadata.h"

#include <fcntl.h>
#include <mntent.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <zlib.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>

#include "path/file_system.h"
#include "plist/text_reader.h"
#include "plist/text_writer.h"
#include "settings/store.h"

namespace documents {
namespace {

constexpr std::size_t max_value_size = 0x10000;  // of any attribute, in bytes: the kernel's limit

std::string compressed(std::string const& text) {
  uLongf size = compressBound(text.size());
  std::string bytes(size, '\0');
  auto const result = compress(reinterpret_cast<Bytef*>(bytes.data()), &size,
                               reinterpret_cast<Bytef const*>(text.data()), text.size());
  if (result != Z_OK || size >= text.size()) return text;
  bytes.resize(size);
  return bytes;
}

/// Values too short to be compressed are stored as they are, so what can't be uncompressed stays.
/// Nothing if there is too much of it: the file may come from anywhere.
std::string uncompressed(std::string const& bytes) {
  std::string text(max_unpacked_size, '\0');
  uLongf size = text.size();
  int const result = uncompress(reinterpret_cast<Bytef*>(text.data()), &size,
                                reinterpret_cast<Bytef const*>(bytes.data()), bytes.size());
  if (result == Z_BUF_ERROR && size == text.size()) return "";
  if (result != Z_OK) return bytes;
  text.resize(size);
  return text;
}

/// Of a list as many elements from the front as there is room for.
plist::value cut_to_fit(plist::value const& value) {
  auto const fits = [](plist::value const& v) {
    return attribute_bytes(v).size() <= max_attribute_size;
  };
  if (fits(value)) return value;
  auto const& all = value.elements();
  std::size_t kept = 0;
  for (std::size_t beyond = all.size(); beyond - kept > 1;) {
    std::size_t const middle = kept + (beyond - kept) / 2;
    auto const last = all.begin() + static_cast<std::ptrdiff_t>(middle);
    (fits(plist::array(all.begin(), last)) ? kept : beyond) = middle;
  }
  if (kept == 0) return {};
  return plist::array(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(kept));
}

bool is_in_folder(std::string const& path, std::string const& folder) {
  return folder == "/" || path == folder ||
         (path.starts_with(folder) && path.size() > folder.size() && path[folder.size()] == '/');
}

}  // namespace

std::string attribute_bytes(plist::value const& value) {
  return compressed(plist::PrettyPrintPList(value));
}

plist::value attribute_value(std::string const& bytes) {
  return plist::convert(uncompressed(bytes));
}

std::string filesystem(std::string const& path) {
  std::string const place = path::resolve(path);
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> const mounts(setmntent("/proc/self/mounts", "re"),
                                                               endmntent);
  std::string type = "unknown";
  std::size_t longest = 0;
  mntent entry;
  char names[4096];
  // Of two that are mounted on one folder the later one is seen.
  while (mounts && getmntent_r(mounts.get(), &entry, names, sizeof names)) {
    std::string const folder = entry.mnt_dir;
    if (folder.size() < longest || !is_in_folder(place, folder)) continue;
    longest = folder.size();
    type = entry.mnt_type;
  }
  return type;
}

bool disable_xattr(std::string const& path) {
  auto const setting = settings::store().get("WynDocumentDisableFSMetaData");
  auto const* const types = setting.as_array();
  if (types == nullptr) return setting.integer_or(0) != 0;
  plist::value const type = filesystem(path);
  return std::find(types->begin(), types->end(), type) != types->end();
}

attribute_file::attribute_file(std::string const& path) : file_(path::file_system_calls::system()) {
  if (disable_xattr(path)) return;
  // To open what is no regular file may do something already.
  if (stat(path.c_str(), &info_) != 0 || !S_ISREG(info_.st_mode)) return;
  if (file_.open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY) != 0) return;
  if (fstat(file_.get(), &info_) != 0 || !S_ISREG(info_.st_mode)) file_.close();
}

bool attribute_file::is(path::file_version const& file) const {
  return file_.get() >= 0 && info_.st_dev == file.device && info_.st_ino == file.inode;
}

plist::value attribute_file::get(std::string const& name) const {
  std::string const full_name = "user." + name;
  if (fgetxattr(file_.get(), full_name.c_str(), nullptr, 0) < 1) return {};
  std::string bytes(max_value_size, '\0');  // it may have grown since it was asked for
  ssize_t const size = fgetxattr(file_.get(), full_name.c_str(), bytes.data(), bytes.size());
  if (size < 1) return {};
  bytes.resize(static_cast<std::size_t>(size));
  return attribute_value(bytes);
}

void attribute_file::set(std::string const& name, plist::value const& value) const {
  auto const wanted = cut_to_fit(value);
  if (wanted == get(name)) return;
  std::string const full_name = "user." + name;
  if (!wanted) {
    fremovexattr(file_.get(), full_name.c_str());
    return;
  }
  std::string const bytes = attribute_bytes(wanted);
  fsetxattr(file_.get(), full_name.c_str(), bytes.data(), bytes.size(), 0);
}

plist::value GetFileAttribute(std::string const& path, std::string const& name) {
  return attribute_file(path).get(name);
}

void savePlistMetadata(std::string const& path, plist::value const& value,
                       std::string const& name) {
  attribute_file(path).set(name, value);
}

}  // namespace documents
