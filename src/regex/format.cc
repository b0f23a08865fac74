#include "regex/format.h"

#include <string>

namespace regex::detail {

namespace {

template <class T>
class format_parser {
 public:
  using iterator = T const*;
  using kind = format_node::kind;
  using node_list = std::vector<format_node>;

  format_parser(iterator last, unsigned nesting) : last_(last), nesting_(nesting) {}

  iterator parse(iterator first, std::string const& stops, node_list& nodes) {
    ++nesting_;
    while (first != last_ && !is_stop(first, stops)) first = parse_node(first, stops, nodes);
    --nesting_;
    return first;
  }

 private:
  // The letter E among the stops stands for "\E".
  bool is_stop(iterator first, std::string const& stops) const {
    unit_t const u = to_unit(*first);
    if (u == u'\\') return begins_with(first, last_, "\\E") && stops.find('E') != stops.npos;
    return u < 128 && u != u'E' && stops.find(static_cast<char>(u)) != stops.npos;
  }

  bool digit_follows(iterator first) const {
    return first + 1 != last_ && detail::between(to_unit(first[1]), '0', '9');
  }

  iterator parse_node(iterator first, std::string const& stops, node_list& nodes) {
    bool const may_nest = nesting_ < max_nesting;
    switch (to_unit(*first)) {
      case u'$':
        if (digit_follows(first)) return parse_capture(first + 1, nodes);
        break;
      case u'?':
        if (digit_follows(first) && may_nest) return parse_condition(first + 1, stops, nodes);
        break;
      case u'(':
        if (may_nest) return parse_group(first + 1, stops, nodes);
        break;
      case u'\\':
        return parse_backslash(first + 1, stops, nodes);
    }
    nodes.push_back({kind::literal, to_unit(*first), 0, {}});
    return first + 1;
  }

  iterator parse_capture(iterator first, node_list& nodes) {
    format_node capture{kind::capture, 0, 0, {}};
    first = parse_number(first, last_, capture.group);
    nodes.push_back(std::move(capture));
    return first;
  }

  iterator parse_condition(iterator first, std::string const& stops, node_list& nodes) {
    format_node condition{kind::condition, 0, 0, {}};
    first = parse_number(first, last_, condition.group);
    first = parse(first, stops + ':', condition.content);
    if (begins_with(first, last_, ":")) first = parse(first + 1, stops, condition.if_unset);
    nodes.push_back(std::move(condition));
    return first;
  }

  iterator parse_group(iterator first, std::string const&, node_list& nodes) {
    format_node group{kind::group, 0, 0, {}};
    first = parse_char(parse(first, ")", group.content), last_, ')');
    nodes.push_back(std::move(group));
    return first;
  }

  iterator parse_backslash(iterator first, std::string const& stops, node_list& nodes) {
    bool const upper = begins_with(first, last_, "U");
    if ((upper || begins_with(first, last_, "L")) && nesting_ < max_nesting) {
      format_node text{upper ? kind::upper_case : kind::lower_case, 0, 0, {}};
      first = parse(first + 1, stops + 'E', text.content);
      if (begins_with(first, last_, "\\E")) first += 2;
      nodes.push_back(std::move(text));
      return first;
    }
    unit_t unit;
    first = parse_escape(first, last_, unit);
    nodes.push_back({kind::literal, unit, 0, {}});
    return first;
  }

  iterator const last_;
  unsigned nesting_;
};

}  // namespace

template <class T>
T const* parse_format(T const* first, T const* last, std::string_view stops,
                      std::vector<format_node>& nodes, unsigned nesting) {
  return format_parser<T>(last, nesting).parse(first, std::string(stops), nodes);
}

template char const* parse_format(char const*, char const*, std::string_view,
                                  std::vector<format_node>&, unsigned);
template char16_t const* parse_format(char16_t const*, char16_t const*, std::string_view,
                                      std::vector<format_node>&, unsigned);

}  // namespace regex::detail
