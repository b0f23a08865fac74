#include "documents/line_diff.h"
#include "test.h"

namespace {

using documents::lines_of;

std::u16string diff(std::u16string const& a, std::u16string const& b) {
  auto const x = lines_of(a), y = lines_of(b);
  return documents::unified_diff(x, y, documents::differing_lines(x, y), u"a", u"b");
}

TEST(line_diff, unified_format_is_that_of_other_programs) {
  std::u16string const old_text = u"1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11\n12";
  EXPECT_EQ(diff(old_text, u"1\n2\nx\n4\n5\n6\n7\n8\n9\n10\n12\n13"),
            u"--- a\n+++ b\n@@ -1,6 +1,6 @@\n 1\n 2\n-3\n+x\n 4\n 5\n 6\n@@ -8,5 +8,5 @@\n 8\n 9\n"
            u" 10\n-11\n 12\n+13\n");
  EXPECT_EQ(diff(u"1\n2\n3\n4\n5\n6", u"1\n2\n3\n4\nnew\n5\n6"),
            u"--- a\n+++ b\n@@ -2,5 +2,6 @@\n 2\n 3\n 4\n+new\n 5\n 6\n");
}

/// The length of the longest common subsequence, by the plain table.
std::size_t common(documents::text_lines const& a, documents::text_lines const& b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (auto const& line : a) {
    std::size_t diagonal = 0;
    for (std::size_t j = 0; j < b.size(); ++j) {
      std::size_t const above = row[j + 1];
      row[j + 1] = line == b[j] ? diagonal + 1 : std::max(above, row[j]);
      diagonal = above;
    }
  }
  return row.back();
}

TEST(line_diff, finds_the_fewest_lines) {
  std::mt19937 random(1);
  for (int i = 0; i < 3000; ++i) {
    std::u16string a, b;
    for (unsigned n = random() % 12; n > 0; --n) a += u"a\nb\nc\n"[random() % 6];
    for (unsigned n = random() % 12; n > 0; --n) b += u"a\nb\nc\n"[random() % 6];
    auto const x = lines_of(a), y = lines_of(b);
    std::size_t old_at = 0, new_at = 0, differing = 0;
    for (auto const& c : documents::differing_lines(x, y)) {
      ASSERT_EQ(c.old_begin - old_at, c.new_begin - new_at);
      for (; old_at < c.old_begin; ++old_at, ++new_at) ASSERT_EQ(x[old_at], y[new_at]);
      differing += c.old_end - c.old_begin + c.new_end - c.new_begin;
      old_at = c.old_end, new_at = c.new_end;
    }
    ASSERT_EQ(x.size() - old_at, y.size() - new_at);
    ASSERT_EQ(differing, x.size() + y.size() - 2 * common(x, y));
  }
}

TEST(line_diff, gives_up_on_texts_that_have_little_in_common) {
  std::mt19937 random(2);
  std::u16string a, b;
  for (int i = 0; i < 200000; ++i) (a += char16_t(u'a' + random() % 26)) += u'\n';
  for (int i = 0; i < 200000; ++i) (b += char16_t(u'a' + random() % 26)) += u'\n';
  EXPECT_EQ(documents::differing_lines(lines_of(a), lines_of(b)).size(), 1u);
}

}  // namespace
