#include "snippets/parse_snippet.h"

#include "data_rows.h"
#include "platform/utf.h"
#include "text/random_text.h"

namespace {

/// A snippet as a tree that is expanded anew after each edit.
struct model {
  struct node {
    int index = 0;  // 0 for plain text
    std::string text;
    std::vector<node> content = {};
    bool has_content = false, upper = false;  // the latter is a mirror in upper case
    bool is_field = false;
  };

  std::vector<node> top;
  std::string source;
  std::set<int> gone;  // fields that were typed over

  /// Stops stand in stops of greater indices only, so none is in itself.
  std::vector<node> random_content(random_source& random, int below, int depth) {
    std::vector<node> result;
    for (std::size_t n = random.up_to(4); n != 0; --n) {
      node made;
      if (below > 1 && !random.one_in(3)) {
        made.index = 1 + static_cast<int>(random.below(static_cast<std::size_t>(below - 1)));
        made.upper = random.one_in(4);
        made.has_content = !made.upper && random.one_in(2);
        if (made.has_content && depth < 3)
          made.content = random_content(random, made.index, depth + 1);
      } else {
        made.text = unicode::to_utf8(random.text(random.up_to(2) + 1, u"abc .\u00e9"));
      }
      result.push_back(made);
    }
    return result;
  }

  template <typename Visit>
  static void each(std::vector<node>& nodes, Visit visit) {
    for (node& n : nodes) {
      visit(n);
      each(n.content, visit);
    }
  }

  explicit model(random_source& random)
      : top(random_content(random, 6, 0)), source(source_of(top)) {
    std::set<int> found;
    each(top, [&](node& n) {
      if (n.has_content && found.insert(n.index).second) n.is_field = true;
    });
    each(top, [&](node& n) {
      if (n.index != 0 && !n.upper && found.insert(n.index).second) n.is_field = true;
    });
    each(top, [&](node& n) {
      if (n.index != 0 && !n.is_field) remove_content(n);
    });
  }

  static std::string source_of(std::vector<node> const& nodes) {
    std::string result;
    for (node const& n : nodes) {
      std::string const number = std::to_string(n.index);
      if (n.index == 0)
        result += n.text;
      else if (n.upper)
        result += "${" + number + "/.+/\\U$0/}";
      else if (n.has_content)
        result += "${" + number + ":" + source_of(n.content) + "}";
      else
        result += "${" + number + "}";
    }
    return result;
  }

  node* field(int index) {
    node* result = nullptr;
    each(top, [&](node& n) {
      if (n.index == index && n.is_field) result = &n;
    });
    return result;
  }

  std::string value(std::vector<node>& nodes) {
    std::string result;
    for (node& n : nodes) {
      if (n.index == 0) {
        result += n.text;
      } else if (n.is_field) {
        result += value(n.content);
      } else if (node* const of = field(n.index); of != nullptr && !gone.contains(n.index)) {
        std::string text = value(of->content);
        if (n.upper)
          for (char& c : text) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c);
        result += text;
      }
    }
    return result;
  }

  void remove_content(node& n) {
    each(n.content, [&](node& inner) {
      if (inner.is_field) gone.insert(inner.index);
    });
    n.content.clear();
  }
  void set_value(int index, std::string const& text) {
    node& n = *field(index);
    remove_content(n);
    n.content.push_back({0, text});
  }
};

std::unique_ptr<snippet::snippet_t> parsed(std::string const& text,
                                           std::string const& indent = "") {
  std::string fault;
  std::vector<std::string> warnings;
  return snippet::parse(text, {.indent = indent}, fault, warnings);
}

}  // namespace

TEST(snippet, texts_as_the_file_says) {
  for (auto const& row : data_rows("snippets.txt", "texts")) {
    std::string fault;
    std::vector<std::string> warnings;
    snippet::parse_options const options{
        .indent = ">",
        .variables = {{"NAME", "value"}, {"EMPTY", ""}},
        .run_command = [](std::string const& code, auto const&) { return "<" + code + ">\n"; }};
    auto const snippet = snippet::parse(row[0], options, fault, warnings);
    if (!snippet) {
      EXPECT_EQ(row[1], "-") << row[0];
      EXPECT_FALSE(fault.empty()) << row[0];
      EXPECT_FALSE(snippet::validate(row[0], fault)) << row[0];
      continue;
    }
    EXPECT_TRUE(snippet::validate(row[0], fault)) << row[0];
    EXPECT_EQ(unicode::to_utf8(snippet->text()), row[1]) << row[0];
    std::string fields;
    snippet::snippet_t at = *snippet;
    while (true) {
      auto const& field = at.current();
      fields += std::to_string(field.index == snippet::end_index ? 0 : field.index) + "@" +
                std::to_string(field.first.offset) + "-" + std::to_string(field.last.offset);
      if (at.is_at_end()) break;
      fields += ' ';
      at.next();
    }
    EXPECT_EQ(fields, row[2]) << row[0];
    std::string told;
    for (auto const& warning : warnings) told += warning;
    EXPECT_EQ(told, row.size() > 3 ? row[3] : "") << row[0];
  }
}

TEST(snippet, is_as_if_it_were_expanded_anew_after_each_edit) {
  for (unsigned seed = 0; seed < 4000; ++seed) {
    random_source random(seed);
    model expected(random);
    SCOPED_TRACE("seed " + std::to_string(seed) + ": " + expected.source);
    auto const made = parsed(expected.source);
    ASSERT_NE(made, nullptr);
    snippet::snippet_t live = *made;
    std::u16string text = live.text();
    snippet::buffer_storage_t storage(text);
    ASSERT_EQ(unicode::to_utf8(text), expected.value(expected.top));
    for (int step = 0; step < 6; ++step) {
      std::size_t const moves = random.up_to(3);
      for (std::size_t n = 0; n < moves; ++n) random.one_in(3) ? live.previous() : live.next();
      if (live.current().index == snippet::end_index) continue;
      std::size_t const first = live.current().first.offset, last = live.current().last.offset;
      std::size_t const from = first + random.up_to(last - first);
      std::size_t const erased = random.up_to(last - from);
      auto const typed = random.text(random.up_to(2), u"xyz");
      text.replace(from, erased, typed);
      expected.set_value(live.current().index, unicode::to_utf8(text.substr(
                                                   first, last - first - erased + typed.size())));
      live.did_replace(storage, from, erased, typed.size());
      ASSERT_EQ(unicode::to_utf8(text), expected.value(expected.top)) << "step " << step;
      for (auto const& stop : live.stops()) {
        if (stop.is_removed || stop.index == snippet::end_index || !stop.is_field) continue;
        ASSERT_EQ(
            unicode::to_utf8(text.substr(stop.first.offset, stop.last.offset - stop.first.offset)),
            expected.value(expected.field(stop.index)->content))
            << "field " << stop.index << ", step " << step;
      }
    }
  }
}

TEST(snippet, tabs_of_formats_indent_as_others_do) {
  std::string fault;
  std::vector<std::string> warnings;
  auto const made = snippet::parse("\t${A/a/\t\\t/}|${1:b}${1/b/\t/}",
                                   {.tab_size = 2, .soft_tabs = true, .variables = {{"A", "a"}}},
                                   fault, warnings);
  ASSERT_NE(made, nullptr) << fault;
  EXPECT_EQ(unicode::to_utf8(made->text()), "    \t|b  ");
}

TEST(snippet, of_hostile_size_ends_in_a_fault_or_well) {
  std::string nested;
  for (int i = 0; i < 10'000; ++i) nested += "${" + std::to_string(i + 1) + ":";
  EXPECT_EQ(parsed(nested + std::string(10'000, '}')), nullptr);
  EXPECT_EQ(parsed(repeated("$1", 1'000'000)), nullptr);
  EXPECT_NE(parsed(repeated("$1", 20'000)), nullptr);
}
