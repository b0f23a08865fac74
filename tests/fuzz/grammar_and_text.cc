#include "fuzz/fuzz.h"
#include "grammar/line_parser.h"
#include "platform/utf.h"
#include "plist/text_reader.h"

// A grammar as a property list in text form, then a zero byte, then the text: it is tokenised to
// its end, tokens are in order and have scopes, and a parser that is set up with the state at a
// line's beginning finds the same.

static void check(grammar::line_tokens const& tokens, grammar::path_tree const& paths,
                  std::size_t size) {
  std::uint32_t next = 0;
  for (grammar::token const t : tokens) {
    if (t.column < next || t.column > size) std::abort();
    next = t.column + 1;
    paths.scopes(t.path);
  }
  if (tokens[0].column != 0) std::abort();
}

static void tokenize(plist::value const& content, std::u16string const& text) {
  using namespace grammar;
  auto const all_rules = std::make_shared<catalogue const>(
      std::vector<catalogue::entry>{{"r", "", "fuzz", [content] { return content; }}});
  auto const paths = std::make_shared<path_tree>(*all_rules, 0);
  line_parser parser(all_rules, 0, paths);
  reference_stack references;
  std::atomic<bool> const stop = false;
  path_tree::id state = 0;
  for (std::size_t begin = 0; begin <= text.size();) {
    std::size_t const end = std::min(text.find(u'\n', begin), text.size());
    bool const is_last = end == text.size();
    std::u16string const line = text.substr(begin, end - begin + (is_last ? 0 : 1));
    begin = end + 1;
    line_tokens tokens, again;
    reference_stack old_references = references;
    parser.parse_line(line, is_last, tokens, references, stop);
    check(tokens, *paths, line.size());
    line_parser resumed(all_rules, 0, paths);
    resumed.setup_stack(state);
    resumed.parse_line(line, is_last, again, old_references, stop);
    if (tokens != again || references != old_references) std::abort();
    state = tokens.back().path;
  }
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::string text = input_text(data, size, 4096);
  plist::dictionary error;
  plist::value const content = plist::convert(take_until('\0', text).c_str(), &error);
  if (text.size() > 300) text.resize(300);
  if (content) tokenize(content, unicode::to_utf16(text));
  return 0;
}
