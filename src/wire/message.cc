#include "wire/message.h"

#include <exception>
#include <utility>

#include <msgpack.hpp>

namespace wire {
namespace {

using packer = msgpack::packer<msgpack::sbuffer>;

constexpr std::size_t length_bytes = 4;
constexpr std::size_t deepest = 8;  // a message has three levels
constexpr std::size_t most_entries = std::size_t{1} << 20;

constexpr std::pair<request::purpose, char const*> purposes[] = {
    {request::purpose::protocol_version, "quirnoteServerProtocolVersion"},
    {request::purpose::open_files, "openFiles"},
    {request::purpose::open_url, "openURL"},
};
constexpr std::pair<answer::kind, char const*> kinds[] = {
    {answer::kind::result, "result"},
    {answer::kind::closed, "didClose"},
    {answer::kind::failed, "error"},
};

template <class Value, std::size_t N>
char const* name_of(std::pair<Value, char const*> const (&table)[N], Value value) {
  for (auto const& [each, name] : table)
    if (each == value) return name;
  return table[0].second;
}

template <class Value, std::size_t N>
bool find_name(std::pair<Value, char const*> const (&table)[N], std::string_view name,
               Value& value) {
  for (auto const& [each, known] : table) {
    if (name != known) continue;
    value = each;
    return true;
  }
  return false;
}

// Paths are bytes, which need not be text: they are packed as bytes.
void pack_bytes(packer& to, std::string const& bytes) {
  to.pack_bin(static_cast<std::uint32_t>(bytes.size()));
  to.pack_bin_body(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

void pack_key(packer& to, char const* key) {
  to.pack(key);
}

// The members of a message, for both directions: `visit(name, member)` for each.
template <class Request, class Visitor>
void each_member(Request& message, Visitor visit) {
  visit("changeDirectory", message.changes_directory);
  visit("addToRecent", message.adds_to_recent);
  visit("newWindow", message.in_new_window);
  visit("wait", message.waits);
  visit("diff", message.shows_differences);
  visit("input", message.has_input);
  visit("url", message.url);
  visit("waiter", message.waiter);
  visit("activationToken", message.activation_token);
  visit("environment", message.environment);
  visit("files", message.files);
}

struct packing {
  packer& to;

  void operator()(char const* name, bool value) {
    pack_key(to, name);
    to.pack(value);
  }
  void operator()(char const* name, std::string const& value) {
    pack_key(to, name);
    pack_bytes(to, value);
  }
  void operator()(char const* name, std::vector<std::string> const& values) {
    pack_key(to, name);
    to.pack_array(static_cast<std::uint32_t>(values.size()));
    for (std::string const& value : values) pack_bytes(to, value);
  }
  void operator()(char const* name, std::vector<file_to_open> const& files) {
    pack_key(to, name);
    to.pack_array(static_cast<std::uint32_t>(files.size()));
    for (file_to_open const& file : files) {
      to.pack_map(2);
      (*this)("QuirnoteOpenFilePath", file.path);
      (*this)("QuirnoteOpenFileLine", file.line);
    }
  }
};

bool take(msgpack::object const& from, std::string& to) {
  if (from.type == msgpack::type::BIN)
    to.assign(from.via.bin.ptr, from.via.bin.size);
  else if (from.type == msgpack::type::STR)
    to.assign(from.via.str.ptr, from.via.str.size);
  else
    return false;
  return true;
}

bool take(msgpack::object const& from, std::int64_t& to) {
  if (from.type != msgpack::type::POSITIVE_INTEGER && from.type != msgpack::type::NEGATIVE_INTEGER)
    return false;
  if (from.type == msgpack::type::POSITIVE_INTEGER && from.via.u64 > INT64_MAX) return false;
  to = from.via.i64;
  return true;
}

// An integer will do: other languages have no other flags.
bool take(msgpack::object const& from, bool& to) {
  std::int64_t number = 0;
  if (from.type == msgpack::type::BOOLEAN)
    to = from.via.boolean;
  else if (take(from, number))
    to = number != 0;
  else
    return false;
  return true;
}

// Calls `visit(key, value)` for each entry, until that gives false.
template <class Visitor>
bool each_entry(msgpack::object const& from, Visitor visit) {
  if (from.type != msgpack::type::MAP) return false;
  for (std::uint32_t n = 0; n < from.via.map.size; ++n) {
    std::string key;
    msgpack::object_kv const& entry = from.via.map.ptr[n];
    if (!take(entry.key, key) || !visit(key, entry.val)) return false;
  }
  return true;
}

bool take(msgpack::object const& from, file_to_open& to) {
  bool const is_whole = each_entry(from, [&](std::string const& key, msgpack::object const& value) {
    if (key == "QuirnoteOpenFilePath") return take(value, to.path);
    if (key == "QuirnoteOpenFileLine") return take(value, to.line);
    return true;
  });
  return is_whole && to.path.starts_with('/') && to.path.find('\0') == std::string::npos;
}

template <class Value>
bool take(msgpack::object const& from, std::vector<Value>& to) {
  if (from.type != msgpack::type::ARRAY) return false;
  to.clear();
  for (std::uint32_t n = 0; n < from.via.array.size; ++n)
    if (!take(from.via.array.ptr[n], to.emplace_back())) return false;
  return true;
}

bool take_entry(std::string const& key, msgpack::object const& value, request& to) {
  if (key == "message") {
    std::string name;
    return take(value, name) && find_name(purposes, name, to.what);
  }
  bool is_right = true;
  each_member(to, [&](char const* name, auto& member) {
    if (key == name) is_right = take(value, member);
  });
  return is_right;
}

bool take_entry(std::string const& key, msgpack::object const& value, answer& to) {
  std::int64_t number = 0;
  if (key == "message") {
    std::string name;
    return take(value, name) && find_name(kinds, name, to.what);
  }
  if (key == "result") return take(value, to.result);
  if (key == "saved") return take(value, to.is_saved);
  if (key == "reason") return take(value, to.reason);
  if (key != "file") return true;
  if (!take(value, number) || number < 0) return false;
  to.file = static_cast<std::size_t>(number);
  return true;
}

template <class Message>
std::optional<Message> decode(std::string_view bytes) try {
  msgpack::unpack_limit const limit(most_entries, most_entries, longest_message, longest_message, 0,
                                    deepest);
  std::size_t end = 0;
  auto const handle = msgpack::unpack(bytes.data(), bytes.size(), end, nullptr, nullptr, limit);
  Message message;
  bool has_name = false;
  bool const is_right =
      each_entry(handle.get(), [&](std::string const& key, msgpack::object const& value) {
        has_name = has_name || key == "message";
        return take_entry(key, value, message);
      });
  if (!is_right || !has_name || end != bytes.size()) return std::nullopt;
  return message;
} catch (std::exception const&) {
  return std::nullopt;  // no MessagePack, more of it than may be, or no memory for it
}

std::string bytes_of(msgpack::sbuffer const& buffer) {
  return {buffer.data(), buffer.size()};
}

}  // namespace

std::string encoded(request const& message) {
  msgpack::sbuffer buffer;
  packer to(buffer);
  std::uint32_t members = 1;
  each_member(message, [&](char const*, auto const&) { ++members; });
  to.pack_map(members);
  pack_key(to, "message");
  to.pack(name_of(purposes, message.what));
  each_member(message, packing{to});
  return bytes_of(buffer);
}

std::string encoded(answer const& message) {
  msgpack::sbuffer buffer;
  packer to(buffer);
  to.pack_map(5);
  pack_key(to, "message");
  to.pack(name_of(kinds, message.what));
  pack_key(to, "result");
  to.pack(message.result);
  pack_key(to, "file");
  to.pack(static_cast<std::uint64_t>(message.file));
  packing{to}("saved", message.is_saved);
  packing{to}("reason", message.reason);
  return bytes_of(buffer);
}

std::optional<request> decode_request(std::string_view bytes) {
  return decode<request>(bytes);
}

std::optional<answer> decode_answer(std::string_view bytes) {
  return decode<answer>(bytes);
}

std::string framed(std::string_view message) {
  std::string result;
  for (std::size_t n = length_bytes; n-- > 0;)
    result += static_cast<char>(message.size() >> (8 * n) & 0xFF);
  return result.append(message);
}

bool frame_reader::add(std::string_view bytes) {
  bytes_.erase(0, std::exchange(begin_, 0));
  bytes_.append(bytes);
  // Looked at as each comes, so that a message that is too long isn't gathered.
  for (std::size_t at = 0; bytes_.size() - at >= length_bytes;) {
    std::size_t length = 0;
    for (std::size_t n = 0; n < length_bytes; ++n)
      length = length << 8 | static_cast<unsigned char>(bytes_[at + n]);
    if (length > longest_message) return false;
    if (bytes_.size() - at - length_bytes < length) break;
    at += length_bytes + length;
  }
  return true;
}

std::optional<std::string> frame_reader::next() {
  if (bytes_.size() - begin_ < length_bytes) return std::nullopt;
  std::size_t length = 0;
  for (std::size_t n = 0; n < length_bytes; ++n)
    length = length << 8 | static_cast<unsigned char>(bytes_[begin_ + n]);
  if (bytes_.size() - begin_ - length_bytes < length) return std::nullopt;
  std::string message = bytes_.substr(begin_ + length_bytes, length);
  begin_ += length_bytes + length;
  return message;
}

}  // namespace wire
