#include <string_view>

#include "bundles/index/index_format.h"
#include "fuzz/fuzz.h"

// Any bytes as the index of bundles, as a block in it and as the content of one: refused, or read;
// and what was read packs to what reads again.

namespace index_format = bundles::index;

namespace {

template <typename T>
void take_apart(std::string_view content) {
  T taken;
  if (!index_format::unpack(content, "/folder", taken)) return;
  std::string const packed = index_format::pack(taken, "/folder");
  T again;
  if (!index_format::unpack(packed, "/folder", again)) std::abort();
  if (index_format::pack(again, "/folder") != packed) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::string_view const bytes(reinterpret_cast<char const*>(data), size);
  take_apart<index_format::bundle_stubs>(bytes);
  take_apart<index_format::item_stubs>(bytes);
  take_apart<plist::value>(bytes);
  index_format::info_head head;
  index_format::unpack(bytes, "/folder", head);

  index_format::entries entries;
  if (!index_format::unpack_root(bytes, "3", entries)) return 0;
  for (auto const& [path, entry] : entries)
    if (auto const content = index_format::content_of(entry.block, path, entry.changed))
      take_apart<index_format::item_stubs>(*content);
  std::string const packed = index_format::pack_root("3", entries);
  index_format::entries again;
  if (!index_format::unpack_root(packed, "3", again) || again.size() != entries.size())
    std::abort();
  return 0;
}
