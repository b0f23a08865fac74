#include <cstring>
#include <optional>

#include "bundles/index/index_format.h"
#include "bundles/index/index_visitor.h"
#include "plist/xml_reader.h"

// Property lists in the index. Dates (their seconds) and reals are extensions: a number of eight
// bytes in this machine's order, since the file doesn't leave it. The library would pack a real
// without a fraction as an integer.
namespace bundles::index {
namespace {

constexpr std::int8_t date_type = 1, real_type = 2;

void pack_number(packer& out, std::int8_t type, double number) {
  out.other().pack_ext(sizeof number, type);
  out.other().pack_ext_body(reinterpret_cast<char const*>(&number), sizeof number);
}

void pack_value(packer& out, plist::value const& v) {
  switch (v.kind()) {
    case plist::kind::none:
      out.other().pack_nil();
      break;
    case plist::kind::boolean:
      out.other().pack(v.boolean_or(false));
      break;
    case plist::kind::integer:
      out.other().pack(v.integer_or(0));
      break;
    case plist::kind::real:
      pack_number(out, real_type, v.real_or(0));
      break;
    case plist::kind::string:
      out.text(*v.as_string());
      break;
    case plist::kind::date:
      pack_number(out, date_type, v.as_date()->seconds);
      break;
    case plist::kind::data:
      out.bytes(v.as_data()->data(), v.as_data()->size());
      break;
    case plist::kind::array:
      out.array(v.elements().size());
      for (plist::value const& element : v.elements()) pack_value(out, element);
      break;
    case plist::kind::dictionary:
      out.map(v.entries().size());
      for (auto const& [key, element] : v.entries()) {
        out.text(key);
        pack_value(out, element);
      }
      break;
  }
}

class value_visitor : public refusing_visitor {
 public:
  plist::value result;

  bool visit_nil() { return add({}); }
  bool visit_boolean(bool b) { return add(b); }
  bool visit_positive_integer(std::uint64_t n) { return add(static_cast<std::int64_t>(n)); }
  bool visit_negative_integer(std::int64_t n) { return add(n); }
  bool visit_str(char const* text, std::uint32_t size) {
    std::string_view const string(text, size);
    if (!reads_key_) return add(string);
    open_.back().key = string;
    return true;
  }
  bool visit_bin(char const* bytes, std::uint32_t size) {
    return add(plist::data(bytes, bytes + size));
  }
  bool visit_ext(char const* bytes, std::uint32_t size) {
    // The type stands before the content.
    double number;
    if (size != 1 + sizeof number) return false;
    std::memcpy(&number, bytes + 1, sizeof number);
    if (bytes[0] == date_type) return add(plist::date{number});
    return bytes[0] == real_type && add(number);
  }
  bool start_array(std::uint32_t) { return open(true); }
  bool end_array() { return close(plist::value(std::move(open_.back().elements))); }
  bool start_map(std::uint32_t) { return open(false); }
  bool start_map_key() { return reads_key_ = true; }
  bool end_map_key() {
    reads_key_ = false;
    return true;
  }
  bool end_map() { return close(plist::value(std::move(open_.back().entries))); }

 private:
  struct container {
    bool is_array;
    plist::array elements;
    plist::dictionary entries;
    std::string key;
  };

  bool open(bool is_array) {
    if (reads_key_ || open_.size() >= plist::max_depth) return false;
    open_.push_back({is_array, {}, {}, {}});
    return true;
  }
  bool close(plist::value v) {
    open_.pop_back();
    return add(std::move(v));
  }
  bool add(plist::value v) {
    if (reads_key_) return false;
    if (open_.empty())
      result = std::move(v);
    else if (open_.back().is_array)
      open_.back().elements.push_back(std::move(v));
    else
      open_.back().entries.insert_or_assign(std::move(open_.back().key), std::move(v));
    return true;
  }

  std::vector<container> open_;

 protected:
  std::size_t depth() const { return open_.size(); }
  std::string const& key() const { return open_.back().key; }
  bool reads_key_ = false;
};

/// Leaves containers under these keys of the outermost dictionary empty.
class head_visitor : public value_visitor {
 public:
  bool visit_nil() { return is_inside_ || value_visitor::visit_nil(); }
  bool visit_boolean(bool b) { return is_inside_ || value_visitor::visit_boolean(b); }
  bool visit_positive_integer(std::uint64_t n) {
    return is_inside_ || value_visitor::visit_positive_integer(n);
  }
  bool visit_negative_integer(std::int64_t n) {
    return is_inside_ || value_visitor::visit_negative_integer(n);
  }
  bool visit_str(char const* text, std::uint32_t size) {
    return is_inside_ || value_visitor::visit_str(text, size);
  }
  bool visit_bin(char const* bytes, std::uint32_t size) {
    return is_inside_ || value_visitor::visit_bin(bytes, size);
  }
  bool visit_ext(char const* bytes, std::uint32_t size) {
    return is_inside_ || value_visitor::visit_ext(bytes, size);
  }
  bool start_array(std::uint32_t n) { return enter() || value_visitor::start_array(n); }
  bool start_map(std::uint32_t n) { return enter() || value_visitor::start_map(n); }
  bool start_map_key() { return is_inside_ || value_visitor::start_map_key(); }
  bool end_map_key() { return is_inside_ || value_visitor::end_map_key(); }
  bool end_array() { return leave() || value_visitor::end_array(); }
  bool end_map() { return leave() || value_visitor::end_map(); }

 private:
  /// True within what is left empty, whose own outermost container is still made.
  bool enter() {
    if (is_inside_) return ++inner_ != 0;
    is_inside_ = depth() == 1 && !reads_key_ && (key() == "mainMenu" || key() == "ordering");
    return false;
  }
  bool leave() {
    if (inner_ != 0) return inner_-- != 0;
    is_inside_ = false;
    return false;
  }

  bool is_inside_ = false;
  std::size_t inner_ = 0;
};

}  // namespace

std::string pack(plist::value const& value, std::string_view) {
  packer out;
  pack_value(out, value);
  return out.result();
}

bool unpack(std::string_view content, std::string_view, plist::value& value) {
  value_visitor visitor;
  if (!parse_all(content, visitor)) return false;
  value = std::move(visitor.result);
  return true;
}

bool unpack(std::string_view content, std::string_view, info_head& head) {
  head_visitor visitor;
  if (!parse_all(content, visitor)) return false;
  head.content = std::move(visitor.result);
  return true;
}

}  // namespace bundles::index
