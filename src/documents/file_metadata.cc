#include "documents/file_metadata.h"

#include <mntent.h>
#include <sys/xattr.h>
#include <zlib.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>

#include "path/file_system.h"
#include "platform/user_defaults.h"
#include "plist/text_reader.h"
#include "plist/text_writer.h"

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
std::string uncompressed(std::string const& bytes) {
  constexpr uLong enough = 0x100000;
  std::string text;
  int result = Z_BUF_ERROR;
  for (uLong size = bytes.size() * 5; result == Z_BUF_ERROR && size < enough;) {
    size *= 4;
    text.resize(size);
    uLongf used = size;
    result = uncompress(reinterpret_cast<Bytef*>(text.data()), &used,
                        reinterpret_cast<Bytef const*>(bytes.data()), bytes.size());
    if (result == Z_OK) text.resize(used);
  }
  return result == Z_OK ? text : bytes;
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
  auto const setting = platform::user_defaults::standard().get("WynDocumentDisableFSMetaData");
  auto const* const types = setting.as_array();
  if (types == nullptr) return setting.integer_or(0) != 0;
  plist::value const type = filesystem(path);
  return std::find(types->begin(), types->end(), type) != types->end();
}

plist::value GetFileAttribute(std::string const& path, std::string const& name) {
  if (disable_xattr(path)) return {};
  std::string const full_name = "user." + name;
  if (getxattr(path.c_str(), full_name.c_str(), nullptr, 0) < 1) return {};
  std::string bytes(max_value_size, '\0');  // it may have grown since it was asked for
  ssize_t const size = getxattr(path.c_str(), full_name.c_str(), bytes.data(), bytes.size());
  if (size < 1) return {};
  bytes.resize(static_cast<std::size_t>(size));
  return attribute_value(bytes);
}

void savePlistMetadata(std::string const& path, plist::value const& value,
                       std::string const& name) {
  auto const present = GetFileAttribute(path, name);
  auto const wanted = cut_to_fit(value);
  if (wanted == present) return;
  std::string const full_name = "user." + name;
  if (!wanted) {
    removexattr(path.c_str(), full_name.c_str());
    return;
  }
  std::string const bytes = attribute_bytes(wanted);
  setxattr(path.c_str(), full_name.c_str(), bytes.data(), bytes.size(), 0);
}

}  // namespace documents
