// Types whole files key by key, as somebody would who wants just that text, and compares.
//
//     replay_typing SCOPE FILE...
//
// Every unit is a key, in a view of the language whose outermost scope is SCOPE. Where a line is
// indented in another way than in the file, that is corrected as soon as it can be seen, and
// counted. A line that is left blank loses its blanks. What differs at the end is said: the first
// line that came out otherwise, or the closing marks that are left behind the caret, with the
// places of the keys that brought them.

#include "bundles/BundleManager.h"
#include "documents/WynDocument.h"
#include "grammar/tokenize_filter.h"
#include "headless/headless_desktop.h"
#include "headless/headless_view_host.h"
#include "platform/own_defaults.h"
#include "platform/utf.h"
#include "text/view.h"
#include "textview/WynTextView.h"
#include "textview/indent_patterns.h"
#include "textview/view_will_change.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace {

std::optional<std::u16string> text_of_file(char const* path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  std::string bytes{std::istreambuf_iterator<char>(file), {}};
  std::erase(bytes, '\r');
  return unicode::to_utf16(bytes);
}

std::string language_with_scope(std::string const& scope) {
  for (plist::value const& language : BundleManager::sharedInstance().languages())
    if (language["scopeName"].string_or("") == scope) return language["uuid"].string_or("");
  return {};
}

std::size_t leading_blanks(text::unit_view line) {
  return std::min(line.find_first_not_of(u" \t"), line.size());
}

// By how many spaces lines are most often indented more than the one above.
unsigned usual_indent(std::u16string const& text) {
  unsigned times[9] = {0};
  std::size_t above = 0;
  for (std::size_t at = 0; at < text.size();) {
    std::size_t const end = std::min(text.find(u'\n', at), text.size());
    text::unit_view const line = text::unit_view(text).substr(at, end - at);
    std::size_t const width = leading_blanks(line);
    if (width < line.size() && line[width] != u'*') {
      if (width > above && width - above <= 8) ++times[width - above];
      above = width;
    }
    at = end + 1;
  }
  unsigned const* const most = std::max_element(std::begin(times) + 2, std::end(times));
  return *most == 0 ? 4 : static_cast<unsigned>(most - std::begin(times));
}

struct key_place {
  std::size_t line, column;
};

class replay {
 public:
  replay(std::string const& language, std::u16string const& wanted, bool seen) : wanted_(wanted) {
    host_.seen = seen;
    view_.setDocument(WynDocument::document());
    view_.changeLanguageToAndLearn(language, false);
    bool const by_spaces = wanted.find(u"\n  ") < wanted.find(u"\n\t");
    view_.setSoftTabs(by_spaces);
    view_.setTabSize(by_spaces ? usual_indent(wanted) : 8);
  }

  /// Whether the text is what was wanted.
  bool run();
  std::string const& fault() const { return fault_; }

  std::size_t lines = 0, corrected = 0;  ///< those that hold text, those indented otherwise

 private:
  text::storage& storage() { return *view_.view()->storage; }
  text::iterator caret() { return view_.view()->selection.current_mark.base; }
  std::size_t units_after_caret() {
    std::size_t count = storage().size(caret().line) - caret().column;
    for (std::size_t line = caret().line + 1; line < storage().lines(); ++line)
      count += storage().size(line) + 1;
    return count;
  }

  void type(char16_t unit);
  bool type_line(text::unit_view line);
  void correct_indent(std::size_t number, text::unit_view wanted);
  bool closes_block(text::unit_view line) const;
  void note_marks(char16_t typed);

  std::u16string const& wanted_;
  WynTextView view_;
  headless::headless_view_host host_{view_};
  std::string fault_;
  std::vector<key_place> marks_;  ///< the keys that put in what stands behind the caret, by unit
};

void replay::type(char16_t unit) {
  if (unit == u'\n')
    view_.performSelectorWithObject("insertNewline:", {});
  else
    view_.insert_text(std::u16string_view(&unit, 1));
  std::size_t const left = units_after_caret();
  if (left < marks_.size()) marks_.erase(marks_.begin(), marks_.end() - std::ptrdiff_t(left));
  while (marks_.size() < left) marks_.insert(marks_.begin(), {caret().line, caret().column});
}

// Of blanks alone, without the caret being moved.
void replay::correct_indent(std::size_t number, text::unit_view wanted) {
  view_will_change const scope(view_, true);
  text::iterator const begin = storage().begin_of_line(number);
  bool const is_here = caret().line == number;
  std::size_t old = leading_blanks(storage().line_units(number));
  if (is_here) old = std::min<std::size_t>(old, caret().column);
  text::iterator const at = caret();
  storage().erase(begin, begin + std::ptrdiff_t(old));
  storage().insert(begin, wanted.begin(), wanted.end());
  std::size_t const column = is_here ? at.column - old + wanted.size() : at.column;
  view_.view()->selection.set_caret({view_.view(), text::iterator(at.line, column, &storage())});
}

bool replay::closes_block(text::unit_view line) const {
  return indent_patterns(view_.stylesForCaretWait(true)).matches(indent_patterns::decrease, line);
}

// What the line is indented by is corrected at once, but where its text may yet do it.
bool replay::type_line(text::unit_view line) {
  std::size_t const blanks = leading_blanks(line), number = caret().line;
  text::unit_view const indent = line.substr(0, blanks);
  auto const is_right = [&] {
    text::unit_view const now = storage().line_units(number);
    return now.substr(0, std::min<std::size_t>(leading_blanks(now), caret().column)) == indent;
  };
  bool const has_text = blanks < line.size();
  bool right = !has_text || is_right();
  if (!right && !closes_block(line)) correct_indent(number, indent);
  for (char16_t const unit : line.substr(blanks)) type(unit);
  if (has_text) {
    ++lines;
    right = right || is_right();
    if (!is_right()) correct_indent(number, indent), right = false;
    if (!right) ++corrected;
    if (std::getenv("REPLAY_INDENT") && !right)
      std::printf("  indent %zu: %s\n", number + 1, unicode::to_utf8(line).c_str());
  }
  return true;
}

bool replay::run() {
  for (std::size_t at = 0; at <= wanted_.size();) {
    std::size_t const end = std::min(wanted_.find(u'\n', at), wanted_.size());
    text::unit_view const line = text::unit_view(wanted_).substr(at, end - at);
    std::size_t const number = caret().line;
    type_line(line);
    if (end < wanted_.size()) type(u'\n');
    if (line.find_first_not_of(u" \t") == line.npos && storage().line_units(number) != line)
      correct_indent(number, line);
    text::unit_view now = storage().line_units(number);
    if (number == caret().line) now = now.substr(0, caret().column);
    if (now != line) {
      fault_ = std::to_string(number + 1) + ": " + unicode::to_utf8(line) + "\n    came out as " +
               unicode::to_utf8(now);
      return false;
    }
    at = end + 1;
  }
  std::size_t const left = units_after_caret();
  if (left == 0) return true;
  fault_ = "left behind: ";
  text::iterator const here = caret();
  fault_ += unicode::to_utf8(std::u16string(here, view_.view()->end().base));
  for (key_place const& place : marks_)
    fault_ += "\n    by " + std::to_string(place.line + 1) + ":" + std::to_string(place.column);
  return false;
}

}  // namespace

int main(int count, char** arguments) {
  bool const seen = std::getenv("REPLAY_SEEN") != nullptr;
  headless::headless_desktop desktop;
  own_defaults const defaults;
  if (count < 3) return 2;
  std::string const language = language_with_scope(arguments[1]);
  if (language.empty()) return 2;
  std::size_t files = 0, equal = 0, lines = 0, corrected = 0;
  for (int i = 2; i < count; ++i) {
    auto const text = text_of_file(arguments[i]);
    if (!text) continue;
    replay typed(language, *text, seen);
    ++files;
    if (typed.run())
      ++equal;
    else
      std::printf("%s:%s\n", arguments[i], typed.fault().c_str());
    if (std::getenv("REPLAY_INDENT"))
      std::printf("%s: %zu of %zu\n", arguments[i], typed.corrected, typed.lines);
    lines += typed.lines;
    corrected += typed.corrected;
  }
  std::printf("%s: %zu of %zu files as typed; %zu of %zu lines indented otherwise\n", arguments[1],
              equal, files, corrected, lines);
  return equal == files ? 0 : 1;
}
