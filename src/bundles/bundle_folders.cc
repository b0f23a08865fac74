#include "bundles/bundle_folders.h"

#include "path/path.h"
#include "platform/system/library_folders.h"

#include <sys/stat.h>

#include <algorithm>

#include <fstream>

namespace bundles {
namespace {

constexpr char const* bundles_folder = "/Bundles";
constexpr char const* pristine_folder = "/Pristine Copy/Bundles";
// Of a file's name, so that number and extension fit below the 255 that a file system allows.
constexpr std::size_t longest_stem = 200;

std::string made(std::string folder, bool create) {
  if (create) platform::make_folders(folder);
  return folder;
}

bool is_taken(std::string const& path) {
  struct stat info;
  return ::lstat(path.c_str(), &info) == 0;
}

std::string file_stem(std::string_view name) {
  std::string stem(name.empty() ? "untitled" : name);
  if (stem.size() > longest_stem) {
    std::size_t cut = longest_stem;
    while (cut > 0 && (stem[cut] & 0xC0) == 0x80) --cut;
    stem.resize(cut);
  }
  std::replace(stem.begin(), stem.end(), '/', ':');
  std::replace(stem.begin(), stem.end(), '.', '_');
  std::replace(stem.begin(), stem.end(), '\0', '_');
  return stem;
}

}  // namespace

bundle_folders bundle_folders::standard() {
  return {platform::library_domains(), platform::shared_support_folder(),
          platform::cache_folder() + "/Bundle Index"};
}

std::string bundle_folders::LocalBundlePath(bool create) const {
  return made(domains.front() + bundles_folder, create);
}

std::string bundle_folders::PristineCopyBundlePath(bool create) const {
  return made(domains.front() + pristine_folder, create);
}

std::string bundle_folders::supportPath() const {
  std::vector<std::string> candidates;
  for (std::string const& domain : domains) {
    candidates.push_back(path::join(domain, "Support"));
    candidates.push_back(path::join(domain, "Pristine Copy/Support"));
  }
  candidates.push_back(path::join(shared_support, "Support"));
  std::string best;
  int highest = -1;
  for (std::string const& folder : candidates) {
    int version = 0;
    if (std::ifstream(path::join(folder, "version")) >> version && version > highest) {
      highest = version;
      best = folder;
    }
  }
  return best;
}

std::vector<std::string> bundle_folders::bundlePaths() const {
  std::vector<std::string> result;
  // The shared support folder of an installed program is one of the domains, too.
  auto const add = [&](std::string path) {
    if (std::find(result.begin(), result.end(), path) == result.end())
      result.push_back(std::move(path));
  };
  for (std::string const& domain : domains) {
    add(domain + bundles_folder);
    add(domain + pristine_folder);
  }
  add(shared_support + bundles_folder);
  return result;
}

bool is_below(std::string_view path, std::string_view folder) {
  return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

std::optional<std::string> UniqueFileInDirectory(std::string const& directory,
                                                 std::string_view name,
                                                 std::string_view extension) {
  if (!platform::make_folders(directory)) return std::nullopt;
  std::string const stem = directory + "/" + file_stem(name);
  std::string const end = extension.empty() ? "" : "." + std::string(extension);
  constexpr int tries = 10000;
  for (int n = 1; n <= tries; ++n) {
    std::string path = stem + (n == 1 ? "" : " " + std::to_string(n)) + end;
    if (!is_taken(path)) return path;
  }
  return std::nullopt;
}

}  // namespace bundles
