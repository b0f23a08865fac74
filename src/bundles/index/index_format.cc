#include "bundles/index/index_format.h"

#include <zlib.h>

#include <algorithm>

#include "bundles/index/index_visitor.h"

namespace bundles::index {
namespace {

constexpr std::string_view version_key = "version";
constexpr std::string_view contents_key = "pathContents";
constexpr std::string_view dates_key = "pathLastChanged";

constexpr std::size_t checksum_size = 4;

std::string checksum_of(std::string_view content, std::string_view path, std::int64_t changed) {
  uLong sum = 0;
  for (std::string_view const part :
       {path, std::string_view(reinterpret_cast<char const*>(&changed), sizeof changed), content})
    sum = ::crc32_z(sum, reinterpret_cast<Bytef const*>(part.data()), part.size());
  auto const result = static_cast<std::uint32_t>(sum);
  return {reinterpret_cast<char const*>(&result), checksum_size};
}

// Knows whether it is at the key of a map, and how deep in containers.
class nested_visitor : public refusing_visitor {
 public:
  bool start_map_key() { return reads_key_ = true; }
  bool end_map_key() {
    reads_key_ = false;
    return true;
  }

 protected:
  bool reads_key_ = false;
  int depth_ = 0;
};

class root_visitor : public nested_visitor {
 public:
  root_visitor(entries& content, std::size_t size) : content_(content), size_(size) {}

  std::string version;

  bool start_map(std::uint32_t count) {
    if (reads_key_ || ++depth_ > 2 || (depth_ == 2 && !in_map())) return false;
    // Whatever the count says, an entry takes more than a byte.
    if (depth_ == 2) content_.reserve(std::min<std::size_t>(count, size_));
    return true;
  }
  bool end_map() { return depth_-- > 0; }
  bool visit_str(char const* bytes, std::uint32_t size) {
    std::string_view const text(bytes, size);
    if (reads_key_ && depth_ == 1) key_ = text;
    if (reads_key_ && depth_ == 2) entry_ = &content_[text];
    if (reads_key_) return true;
    if (depth_ != 1 || key_ != version_key) return false;
    version = text;
    return true;
  }
  bool visit_bin(char const* bytes, std::uint32_t size) {
    if (depth_ != 2 || reads_key_ || key_ != contents_key) return false;
    entry_->block = {bytes, size};
    return true;
  }
  bool visit_positive_integer(std::uint64_t n) { return date(static_cast<std::int64_t>(n)); }
  bool visit_negative_integer(std::int64_t n) { return date(n); }

 private:
  bool in_map() const { return key_ == contents_key || key_ == dates_key; }
  bool date(std::int64_t n) {
    if (depth_ != 2 || reads_key_ || key_ != dates_key) return false;
    entry_->changed = n;
    return true;
  }

  entries& content_;
  std::size_t size_;
  entry* entry_ = nullptr;
  std::string key_;
};

std::string_view relative(std::string_view path, std::string_view directory) {
  return path.substr(directory.size() + 1);
}

std::string absolute(std::string_view name, std::string_view directory) {
  std::string result;
  result.reserve(directory.size() + 1 + name.size());
  return result.append(directory).append("/").append(name);
}

class bundles_visitor : public nested_visitor {
 public:
  bundles_visitor(std::string_view directory, bundle_stubs& stubs)
      : directory_(directory), stubs_(stubs) {}

  bool start_array(std::uint32_t) { return !reads_key_ && ++depth_ == 1; }
  bool start_map(std::uint32_t) { return !reads_key_ && depth_ == 1; }
  bool visit_str(char const* bytes, std::uint32_t size) {
    std::string_view const text(bytes, size);
    if (depth_ != 1) return false;
    if (reads_key_)
      stubs_.push_back({std::string(text), {}});
    else if (stubs_.empty())
      return false;
    else
      stubs_.back().path = absolute(text, directory_);
    return true;
  }

 private:
  std::string_view directory_;
  bundle_stubs& stubs_;
};

// Depths: 1 the map of kinds, 2 the list of items, 3 an item, 4 its keys, 5 its extensions.
class items_visitor : public nested_visitor {
 public:
  items_visitor(std::string_view directory, item_stubs& stubs)
      : directory_(directory), stubs_(stubs) {}

  bool start_map(std::uint32_t) {
    ++depth_;
    return !reads_key_ && (depth_ == 1 || (depth_ == 4 && part_ == 2));
  }
  bool end_map() { return depth_-- > 0; }
  bool start_array(std::uint32_t) {
    ++depth_;
    if (depth_ == 3) {
      stubs_.emplace_back();
      part_ = 0;
    }
    return !reads_key_ && (depth_ == 2 || depth_ == 3 || (depth_ == 5 && field_ == nullptr));
  }
  bool end_array() { return depth_-- > 0; }
  bool start_array_item() {
    if (depth_ == 3) ++part_;
    return true;
  }
  bool visit_str(char const* bytes, std::uint32_t size) {
    std::string_view const text(bytes, size);
    if (reads_key_) return depth_ == 1 || (depth_ == 4 && set_field(text));
    if (depth_ == 3 && part_ == 1) {
      stubs_.back().path = absolute(text, directory_);
    } else if (depth_ == 4 && field_ != nullptr) {
      stubs_.back().keys.*field_ = text;
    } else if (depth_ == 5) {
      stubs_.back().keys.draggedFileExtensions.emplace_back(text);
    } else {
      return false;
    }
    return true;
  }
  bool visit_bin(char const* bytes, std::uint32_t size) {
    return depth_ == 3 && part_ == 3 && unpack({bytes, size}, {}, stubs_.back().more);
  }

 private:
  bool set_field(std::string_view key) {
    field_ = nullptr;
    for (item_text_key const& f : item_text_keys)
      if (f.key == key) field_ = f.field;
    return field_ != nullptr || key == dragged_extensions_key;
  }

  std::string_view directory_;
  item_stubs& stubs_;
  int part_ = 0;  // of an item, from 1
  std::string item_keys::*field_ = nullptr;
};

void pack_keys(packer& out, item_keys const& keys) {
  std::size_t count = keys.draggedFileExtensions.empty() ? 0 : 1;
  for (item_text_key const& f : item_text_keys) count += (keys.*f.field).empty() ? 0 : 1;
  out.map(count);
  for (item_text_key const& f : item_text_keys) {
    if ((keys.*f.field).empty()) continue;
    out.text(f.key);
    out.text(keys.*f.field);
  }
  if (keys.draggedFileExtensions.empty()) return;
  out.text(dragged_extensions_key);
  out.array(keys.draggedFileExtensions.size());
  for (std::string const& extension : keys.draggedFileExtensions) out.text(extension);
}

}  // namespace

std::string pack_root(std::string_view version, entries const& content) {
  packer out;
  out.map(3);
  out.text(version_key);
  out.text(version);
  out.text(contents_key);
  out.map(content.size());
  for (auto const& [path, entry] : content) {
    out.text(path);
    out.bytes(entry.block.data(), entry.block.size());
  }
  out.text(dates_key);
  out.map(content.size());
  for (auto const& [path, entry] : content) {
    out.text(path);
    out.other().pack(entry.changed);
  }
  return out.result();
}

bool unpack_root(std::string_view bytes, std::string_view version, entries& content,
                 std::string* found) {
  root_visitor visitor(content, bytes.size());
  if (!parse_all(bytes, visitor)) return false;
  if (visitor.version != version) content.clear();
  if (found != nullptr) *found = std::move(visitor.version);
  return true;
}

std::string block_with(std::string_view content, std::string_view path, std::int64_t changed) {
  return checksum_of(content, path, changed).append(content);
}

std::optional<std::string_view> content_of(std::string_view block, std::string_view path,
                                           std::int64_t changed) {
  if (block.size() < checksum_size) return std::nullopt;
  std::string_view const content = block.substr(checksum_size);
  if (block.substr(0, checksum_size) != checksum_of(content, path, changed)) return std::nullopt;
  return content;
}

std::string pack(bundle_stubs const& stubs, std::string_view directory) {
  packer out;
  out.array(stubs.size());
  for (BundleStub const& stub : stubs) {
    out.map(1);
    out.text(stub.UUID);
    out.text(relative(stub.path, directory));
  }
  return out.result();
}

bool unpack(std::string_view content, std::string_view directory, bundle_stubs& stubs) {
  bundles_visitor visitor(directory, stubs);
  return parse_all(content, visitor);
}

std::string pack(item_stubs const& stubs, std::string_view directory) {
  packer out;
  out.map(1);
  out.text(directory.substr(directory.rfind('/') + 1));
  out.array(stubs.size());
  for (BundleItemStub const& stub : stubs) {
    out.array(stub.more ? 3 : 2);
    out.text(relative(stub.path, directory));
    pack_keys(out, stub.keys);
    if (!stub.more) continue;
    std::string const more = pack(stub.more, {});
    out.bytes(more.data(), more.size());
  }
  return out.result();
}

bool unpack(std::string_view content, std::string_view directory, item_stubs& stubs) {
  items_visitor visitor(directory, stubs);
  if (!parse_all(content, visitor)) return false;
  // An older run may have had another form.
  for (BundleItemStub& stub : stubs)
    stub.keys.keyEquivalent = normalized_key_equivalent(stub.keys.keyEquivalent);
  return true;
}

}  // namespace bundles::index
