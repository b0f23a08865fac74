#include "regex/parser.h"

#include "data_rows.h"
#include "regex/parse.h"

namespace {

using namespace regex::parse_tree;

/// Writes a parse list as nested brackets.
class printer final : public visitor {
 public:
  static std::string print(node_list const& list) {
    std::string result;
    for (node const* n = list.head; n; n = n->next) {
      EXPECT_EQ(n->next ? n->next->prev : list.tail, n);
      result += (result.empty() ? "" : " ") + print(*n);
    }
    return result;
  }

 private:
  static std::string print(node const& n) {
    printer p;
    n.accept(p);
    return p.out_;
  }
  static std::string number(int n) { return std::to_string(n); }
  static std::string of(class_data const& d) {
    return (d.negate ? "!" : "") + number(static_cast<int>(d.code));
  }

  void visit(literal_data const& d) override { out_ = static_cast<char>(d.unit); }
  void visit(class_data const& d) override { out_ = "class" + of(d); }
  void visit(range_data const& d) override {
    out_ = d.negate ? "[^" : "[";
    for (auto const& [low, high] : d.ranges)
      out_ += std::string(1, static_cast<char>(low)) + "-" + static_cast<char>(high);
    for (auto const& c : d.classes) out_ += "class" + of(c);
    out_ += "]";
  }
  void visit(anchor_data const& d) override { out_ = "anchor" + number(static_cast<int>(d.code)); }
  void visit(backreference_data const& d) override { out_ = "back" + number(d.group); }
  void visit(repeat_data const& d) override {
    out_ = "repeat(" + number(d.min) + "," + number(d.max) + (d.greedy ? " " : "? ");
    out_ += (d.content ? print(*d.content) : "nothing") + ")";
  }
  void visit(group_data const& d) override {
    out_ = "group" + number(static_cast<int>(d.type));
    if (d.options) out_ += "/" + number(d.options);
    if (d.number) out_ += "#" + number(d.number);
    out_ += "(" + print(d.content) + ")";
  }
  void visit(or_data const& d) override {
    out_ = "or(" + print(d.left) + ", " + print(d.right) + ")";
  }
  void visit(condition_data const& d) override {
    out_ = "if" + number(d.group) + "(" + print(d.if_set) + ", " + print(d.if_unset) + ")";
  }

  std::string out_;
};

struct parsed {
  std::string tree, messages;
};

parsed parse(std::string const& pattern) {
  testing::internal::CaptureStderr();
  regex::parser<char> p;
  EXPECT_EQ(p.parse(pattern.data(), pattern.data() + pattern.size()) - pattern.data(),
            static_cast<std::ptrdiff_t>(pattern.size()));
  return {printer::print(p.list()), testing::internal::GetCapturedStderr()};
}

TEST(parser, trees) {
  for (auto const& c : data_rows("own_patterns.txt", "trees"))
    EXPECT_EQ(parse(c[0]).tree, c[1]) << c[0];
}

TEST(parser, stops_before_its_stop) {
  std::string const pattern = "a(b:c):d";
  regex::parser<char> p;
  EXPECT_EQ(p.parse(pattern.data(), pattern.data() + pattern.size(), ':') - pattern.data(), 6);
  EXPECT_EQ(printer::print(p.list()), "a group1#1(b : c)");
}

TEST(parser, messages) {
  for (auto const& c : data_rows("own_patterns.txt", "messages"))
    EXPECT_EQ(parse(c[0]).messages, c[1]) << c[0];
}

TEST(parse_escape, codes) {
  struct escape_case {
    char const* text;
    unsigned unit;
    int length;
  };
  escape_case const cases[] = {
      {"a", 7, 1},       {"f", 12, 1},      {"n", 10, 1},
      {"r", 13, 1},      {"t", 9, 1},       {"v", 11, 1},
      {"e", 27, 1},      {"0", 0, 1},       {"01012", 65, 4},
      {"08", 0, 1},      {"x", 0, 1},       {"x4g", 4, 2},
      {"x414", 0x41, 3}, {"x{41}", 65, 5},  {"x{20aC}", 0x20ac, 7},
      {"xfF", 255, 3},   {"0777", 0777, 4}, {"x{}", 0, 3},
      {".", '.', 1},     {"q", 'q', 1},     {"", '\\', 0},
  };
  for (auto const& c : cases) {
    std::string const text = c.text;
    char16_t unit = 0xffff;
    EXPECT_EQ(regex::parse_escape(text.begin(), text.end(), unit) - text.begin(), c.length) << text;
    EXPECT_EQ(unit, c.unit) << text;
  }
}

}  // namespace
