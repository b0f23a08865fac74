#include "path/entries.h"

#include <fcntl.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

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
    if (count > 0) scanned = static_cast<std::size_t>(count);
  }
  helper_t(helper_t const&) = delete;
  helper_t& operator=(helper_t const&) = delete;
  ~helper_t() {
    std::for_each(array, array + scanned, std::free);
    std::free(array);
  }

  dirent** array = nullptr;
  std::size_t scanned = 0;
};

entries::entries(std::string const& folder)
    : helper_(std::make_shared<helper_t>(AT_FDCWD, folder.c_str())) {}

entries::entries(int descriptor) : helper_(std::make_shared<helper_t>(descriptor, ".")) {}

entries::iterator entries::begin() const {
  return helper_->array;
}
entries::iterator entries::end() const {
  return helper_->array + helper_->scanned;
}

}  // namespace path
