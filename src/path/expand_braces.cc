#include "path/expand_braces.h"

#include <algorithm>
#include <utility>

namespace path {
namespace {

using texts = std::vector<std::string>;

std::size_t bytes_of(texts const& all) {
  std::size_t bytes = 0;
  for (auto const& text : all) bytes += text.size() + sizeof text;
  return bytes;
}

/// Expands on its way: what has been read of an alternative is the list of its texts so far.
class parse_braces_t {
 public:
  explicit parse_braces_t(std::size_t max_bytes) : max_bytes_(max_bytes) {}

  /// False if it comes to too much.
  bool parse(std::string_view text) {
    constexpr std::string_view special = "{,}\\";
    for (std::size_t at = 0; at < text.size() && has_room(0);) {
      char const c = text[at];
      bool const escapes =
          c == '\\' && special.find(text.substr(at + 1, 1)) != text.npos && at + 1 < text.size();
      std::size_t const first = at + escapes;
      at = first + 1;
      if (c == '{') {
        open_.push_back({texts{""}});
      } else if (c == '}') {
        close();
      } else if (c == ',' && open_.size() > 1) {
        open_.back().push_back(texts{""});
      } else {
        at = std::min(text.find_first_of(special, at), text.size());
        append(text.substr(first, at - first));
      }
    }
    open_rest();
    return has_room(0);
  }
  texts result() && { return std::move(open_.front().front()); }

 private:
  using alternatives = std::vector<texts>;

  texts& current() { return open_.back().back(); }

  void append(std::string_view text) {
    if (current().size() > 1 && !has_room(current().size() * text.size())) return;
    for (auto& head : current()) head += text;
  }

  void append(texts const& tails) {
    if (tails.size() == 1) return append(tails.front());
    texts const heads = std::exchange(current(), {});
    if (!has_room(tails.size() * bytes_of(heads) + heads.size() * bytes_of(tails))) return;
    for (auto const& head : heads)
      for (auto const& tail : tails) current().push_back(head + tail);
  }

  bool has_room(std::size_t bytes) {
    bytes_ += bytes;
    return bytes_ <= max_bytes_;
  }

  /// At a closing brace. A group of one is none, and the brace closes the group around it.
  void close() {
    while (open_.size() > 1 && open_.back().size() == 1) {
      texts const content = std::move(current());
      open_.pop_back();
      append("{");
      append(content);
    }
    if (open_.size() == 1) return append("}");
    texts all;
    for (auto const& alternative : open_.back())
      all.insert(all.end(), alternative.begin(), alternative.end());
    open_.pop_back();
    append(all);
  }

  /// At the end: groups that were never closed are none.
  void open_rest() {
    std::vector<alternatives> const unclosed(open_.begin() + 1, open_.end());
    open_.resize(1);
    for (auto const& group : unclosed)
      for (std::size_t i = 0; i < group.size(); ++i) {
        append(i == 0 ? "{" : ",");
        append(group[i]);
      }
  }

  std::vector<alternatives> open_ = {{texts{""}}};  // the first is what stands outside of groups
  std::size_t max_bytes_;
  std::size_t bytes_ = 0;  // made of alternatives
};

}  // namespace

std::vector<std::string> expand_braces(std::string_view text, std::size_t max_bytes) {
  parse_braces_t parser(max_bytes);
  if (parser.parse(text)) return std::move(parser).result();
  return {std::string(text)};
}

}  // namespace path
