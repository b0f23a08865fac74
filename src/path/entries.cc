#include "path/entries.h"

#include <fcntl.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "path/glob.h"
#include "path/path.h"

namespace path {
namespace {

int is_no_meta_entry(dirent const* entry) {
  std::string_view const name = entry->d_name;
  return name != "." && name != "..";
}

}  // namespace

/// Owns the array and each of its entries.
struct entries::helper_t {
  helper_t(int descriptor, char const* folder) {
    int const count = scandirat(descriptor, folder, &array, is_no_meta_entry, nullptr);
    if (count > 0) scanned = matching = static_cast<std::size_t>(count);
  }
  helper_t(helper_t const&) = delete;
  helper_t& operator=(helper_t const&) = delete;
  ~helper_t() {
    std::for_each(array, array + scanned, std::free);
    std::free(array);
  }

  dirent** array = nullptr;
  std::size_t scanned = 0;
  std::size_t matching = 0;  ///< of these, which come first
};

entries::entries(std::string const& folder, std::string const& glob)
    : helper_(std::make_shared<helper_t>(AT_FDCWD, folder.c_str())) {
  if (glob.empty()) return;
  glob_t const wanted(glob);
  dirent** const last = std::partition(
      helper_->array, helper_->array + helper_->scanned,
      [&](dirent const* entry) { return wanted.does_match(join(folder, entry->d_name)); });
  helper_->matching = static_cast<std::size_t>(last - helper_->array);
}

entries::entries(int descriptor) : helper_(std::make_shared<helper_t>(descriptor, ".")) {}

entries::iterator entries::begin() const {
  return helper_->array;
}
entries::iterator entries::end() const {
  return helper_->array + helper_->matching;
}
std::size_t entries::scanned() const {
  return helper_->scanned;
}

}  // namespace path
