#include "plist/value.h"

#include <charconv>
#include <optional>
#include <type_traits>

#include "plist/blanks.h"
#include "plist/description.h"

namespace plist {
namespace {

// Containers are freed through this node, so that a value nested a hundred thousand deep does not
// take the stack down with it: below a certain depth nodes are queued, and the outermost frees
// them one after the other. The thread-local state is trivial, which makes it usable while
// statics are being destroyed.
struct container_node {
  container_node* next = nullptr;
  virtual ~container_node() = default;
};

template <typename T>
struct container_of final : container_node {
  explicit container_of(T content) : content(std::move(content)) {}
  T content;
};

constexpr int max_nested_frees = 64;
thread_local int nested_frees = 0;
thread_local container_node* queued_frees = nullptr;

void free_node(container_node* node) {
  if (nested_frees >= max_nested_frees) {
    node->next = queued_frees;
    queued_frees = node;
    return;
  }
  ++nested_frees;
  delete node;
  while (nested_frees == 1 && queued_frees) {
    container_node* next = queued_frees;
    queued_frees = next->next;
    delete next;
  }
  --nested_frees;
}

template <typename T>
std::shared_ptr<T const> make_container(T content) {
  auto* node = new container_of<T>(std::move(content));
  return {std::shared_ptr<container_node>(node, free_node), &node->content};
}

bool equals_ignoring_case(std::string_view text, std::string_view lower_case) {
  if (text.size() != lower_case.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    if (c != lower_case[i]) return false;
  }
  return true;
}

template <typename T>
std::optional<T> whole_number(std::string_view text) {
  text = trimmed(text);
  if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
  T result{};
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), result);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return result;
}

std::optional<std::int64_t> truncated(double d) {
  // 2^63 is a double, the largest std::int64_t is not.
  constexpr double limit = 9223372036854775808.0;
  if (!(d >= -limit && d < limit)) return std::nullopt;
  return static_cast<std::int64_t>(d);
}

}  // namespace

value::value(char const* s) : value(std::string_view(s)) {}
value::value(std::string s) : content_(std::make_shared<std::string const>(std::move(s))) {}
value::value(std::string_view s) : value(std::string(s)) {}
value::value(plist::data bytes) : content_(std::make_shared<plist::data const>(std::move(bytes))) {}
value::value(plist::array elements) : content_(make_container(std::move(elements))) {}
value::value(plist::dictionary entries) : content_(make_container(std::move(entries))) {}

std::string const* value::as_string() const {
  auto const* p = std::get_if<std::shared_ptr<std::string const>>(&content_);
  return p ? p->get() : nullptr;
}

plist::array const* value::as_array() const {
  auto const* p = std::get_if<std::shared_ptr<plist::array const>>(&content_);
  return p ? p->get() : nullptr;
}

plist::dictionary const* value::as_dictionary() const {
  auto const* p = std::get_if<std::shared_ptr<plist::dictionary const>>(&content_);
  return p ? p->get() : nullptr;
}

plist::data const* value::as_data() const {
  auto const* p = std::get_if<std::shared_ptr<plist::data const>>(&content_);
  return p ? p->get() : nullptr;
}

plist::date const* value::as_date() const {
  return std::get_if<plist::date>(&content_);
}

bool value::boolean_or(bool fallback) const {
  switch (kind()) {
    case kind::boolean:
      return std::get<bool>(content_);
    case kind::integer:
      return std::get<std::int64_t>(content_) != 0;
    case kind::real:
      return std::get<double>(content_) != 0;
    case kind::string:
      break;
    default:
      return fallback;
  }
  std::string_view const text = trimmed(*as_string());
  if (equals_ignoring_case(text, "yes") || equals_ignoring_case(text, "true")) return true;
  if (equals_ignoring_case(text, "no") || equals_ignoring_case(text, "false")) return false;
  auto const number = whole_number<double>(text);
  return number ? *number != 0 : fallback;
}

std::int64_t value::integer_or(std::int64_t fallback) const {
  switch (kind()) {
    case kind::boolean:
      return std::get<bool>(content_);
    case kind::integer:
      return std::get<std::int64_t>(content_);
    case kind::real:
      return truncated(std::get<double>(content_)).value_or(fallback);
    case kind::string:
      break;
    default:
      return fallback;
  }
  if (auto const number = whole_number<std::int64_t>(*as_string())) return *number;
  if (auto const number = whole_number<double>(*as_string()))
    return truncated(*number).value_or(fallback);
  return fallback;
}

double value::real_or(double fallback) const {
  switch (kind()) {
    case kind::boolean:
      return std::get<bool>(content_);
    case kind::integer:
      return static_cast<double>(std::get<std::int64_t>(content_));
    case kind::real:
      return std::get<double>(content_);
    case kind::string:
      return whole_number<double>(*as_string()).value_or(fallback);
    default:
      return fallback;
  }
}

std::string value::string_or(std::string_view fallback) const {
  switch (kind()) {
    case kind::boolean:
    case kind::integer:
    case kind::real:
      return description(*this);
    case kind::string:
      return *as_string();
    default:
      return std::string(fallback);
  }
}

value const& value::operator[](std::string_view key) const {
  static auto const& nothing = *new value;
  auto const& all = entries();
  auto const found = all.find(key);
  return found == all.end() ? nothing : found->second;
}

plist::array const& value::elements() const& {
  static auto const& none = *new plist::array;
  auto const* array = as_array();
  return array ? *array : none;
}

plist::dictionary const& value::entries() const& {
  static auto const& none = *new plist::dictionary;
  auto const* dictionary = as_dictionary();
  return dictionary ? *dictionary : none;
}

bool operator==(value const& a, value const& b) {
  if (a.content_.index() != b.content_.index()) return false;
  return std::visit(
      [&b](auto const& left) {
        using T = std::decay_t<decltype(left)>;
        auto const& right = std::get<T>(b.content_);
        if constexpr (requires { *left; })
          return left == right || *left == *right;
        else
          return left == right;
      },
      a.content_);
}

}  // namespace plist
