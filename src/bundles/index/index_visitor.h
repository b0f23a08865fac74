#pragma once

#include <cstddef>
#include <string_view>

#include <msgpack.hpp>

/// Bytes of MessagePack as calls, for classes that take apart one known form each.
namespace bundles::index {

/// Base of visitors: refuses everything. A derived class hides what it accepts; each call tells by
/// false that the bytes have the wrong form, which ends the parsing.
struct refusing_visitor : msgpack::null_visitor {
  bool visit_nil() { return false; }
  bool visit_boolean(bool) { return false; }
  bool visit_positive_integer(std::uint64_t) { return false; }
  bool visit_negative_integer(std::int64_t) { return false; }
  bool visit_float32(float) { return false; }
  bool visit_float64(double) { return false; }
  bool visit_str(char const*, std::uint32_t) { return false; }
  bool visit_bin(char const*, std::uint32_t) { return false; }
  bool visit_ext(char const*, std::uint32_t) { return false; }
  bool start_array(std::uint32_t) { return false; }
  bool start_map(std::uint32_t) { return false; }
};

/// Whether `bytes` are exactly one object that the visitor accepts.
template <typename Visitor>
bool parse_all(std::string_view bytes, Visitor& visitor) {
  std::size_t offset = 0;
  if (bytes.empty()) return false;
  return msgpack::parse(bytes.data(), bytes.size(), offset, visitor) && offset == bytes.size();
}

/// Packs into a string.
class packer {
 public:
  void text(std::string_view s) {
    packer_.pack_str(static_cast<std::uint32_t>(s.size()));
    packer_.pack_str_body(s.data(), static_cast<std::uint32_t>(s.size()));
  }
  void bytes(void const* data, std::size_t size) {
    packer_.pack_bin(static_cast<std::uint32_t>(size));
    packer_.pack_bin_body(static_cast<char const*>(data), static_cast<std::uint32_t>(size));
  }
  void array(std::size_t size) { packer_.pack_array(static_cast<std::uint32_t>(size)); }
  void map(std::size_t size) { packer_.pack_map(static_cast<std::uint32_t>(size)); }
  msgpack::packer<msgpack::sbuffer>& other() { return packer_; }

  std::string result() const { return {buffer_.data(), buffer_.size()}; }

 private:
  msgpack::sbuffer buffer_;
  msgpack::packer<msgpack::sbuffer> packer_{buffer_};
};

}  // namespace bundles::index
