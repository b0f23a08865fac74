#include "platform/html/html_text.h"

#include <gtest/gtest.h>

namespace {

std::string text_of(std::string const& html, std::size_t step) {
  platform::html_text reader;
  std::string text;
  auto const add = [&](std::vector<platform::html_text::span> const& spans) {
    for (auto const& span : spans)
      text += span.link.empty() ? span.text : "[" + span.text + "](" + span.link + ")";
  };
  for (std::size_t at = 0; at < html.size(); at += step) add(reader.put(html.substr(at, step)));
  add(reader.finish());
  return text;
}

TEST(html_text, is_about_what_a_page_shows) {
  struct {
    char const* html;
    char const* text;
  } const cases[] = {
      {"Some <b>bold</b> words,\n  and<br> a\tbreak", "Some bold words, and\na break"},
      {"<html>\n<head><title>t</title><style>p{}</style></head>\n<body>\n<p> a </p>\n<p>b</p>x",
       "a\n\nb\n\nx"},
      {"<ul><li>one<li>two</ul><table><tr><td>a</td><td>b</td></tr></table>c",
       "\u2022 one\n\u2022 two\na\tb\t\nc"},
      {"x<pre>\n  a\n\n b</pre>y", "x\n  a\n\n b\ny"},
      {"<script>if (a<b) '</p>'</script>&lt;&#65;&#x42;&amp;amp; &unknown; &",
       "<AB&amp; &unknown; &"},
      {"a < b <!-- > --> c<!DOCTYPE x><?x?><", "a < b c<"},
      {"&#0;&#xD800;&#x110000;&#99999999999;", "\uFFFD\uFFFD\uFFFD&#99999999999;"},
      {"<a x=1 HREF = 'u?a&amp;b'>l</a>", "[l](u?a&b)"},
      {"<p title='>'>1<P>2", "1\n\n2"},
      {"unfinished <b title='", "unfinished"}};
  for (auto const& each : cases) {
    EXPECT_EQ(text_of(each.html, 10000), each.text);
    if (std::string(each.html).find("HREF") == std::string::npos) {
      EXPECT_EQ(text_of(each.html, 1), each.text) << "byte by byte";
    }
  }
}

}  // namespace
