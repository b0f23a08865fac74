// Does with whole files what must not change them, in a view of the language whose outermost scope
// is SCOPE, and says which files come out otherwise.
//
//     replay_typing typed|pasted|indented|restored SCOPE FILE...
//
// typed: types the file key by key, as somebody would who wants just that text. Every unit is a
// key. Where a line is indented in another way than in the file, that is corrected as soon as it
// can be seen, and counted. A line that is left blank loses its blanks. What differs at the end is
// said: the first line that came out otherwise, or the closing marks that are left after the
// caret, with the places of the keys that brought them.
//
// pasted: cuts blocks and pastes them back: lines, what begins with a line's text and ends with a
// line, and any range.
//
// indented: indents all lines anew. Lines count here, since few files are indented as anybody's
// rules say throughout.
//
// restored: moves blocks of lines by a level, and indents them anew; lines count, too.

#include "bundles/BundleManager.h"
#include "documents/WynDocument.h"
#include "headless/headless_desktop.h"
#include "headless/headless_view_host.h"
#include "platform/own_defaults.h"
#include "platform/utf.h"
#include "styles/indent_patterns.h"
#include "text/views/view.h"
#include "textview/WynTextView.h"
#include "textview/view_will_change.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <optional>
#include <random>
#include <string>
#include <utility>
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

std::vector<text::unit_view> lines_of(text::unit_view text) {
  std::vector<text::unit_view> lines;
  for (std::size_t at = 0; at <= text.size();) {
    std::size_t const end = std::min(text.find(u'\n', at), text.size());
    lines.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return lines;
}

// The widest level of spaces that four of five indented lines have whole ones of.
unsigned usual_indent(text::unit_view text) {
  constexpr std::size_t widest = 8;
  std::size_t indented = 0, whole[widest + 1] = {0};
  for (text::unit_view const line : lines_of(text)) {
    std::size_t const width = leading_blanks(line);
    if (width < 2 || width == line.size() || line[width] == u'*') continue;
    ++indented;
    for (std::size_t level = 2; level <= widest; ++level) whole[level] += width % level == 0;
  }
  for (unsigned const level : {8u, 4u, 3u})
    if (indented == 0 || whole[level] * 5 >= indented * 4) return indented == 0 ? 4 : level;
  return 2;
}

class edited_view {
 public:
  edited_view(std::string const& language, text::unit_view wanted) : wanted_(wanted) {
    host_.seen = std::getenv("REPLAY_SEEN") != nullptr;
    view_.setDocument(WynDocument::document());
    view_.changeLanguageToAndLearn(language, false);
    bool const by_spaces = wanted.find(u"\n  ") < wanted.find(u"\n\t");
    view_.setSoftTabs(by_spaces);
    bool const by_both = by_spaces && wanted.find(u"\n\t") != wanted.npos;
    view_.setTabSize(by_spaces && !by_both ? usual_indent(wanted) : 8);
  }

  std::string fault;
  std::size_t parts = 0, changed = 0;  ///< lines or blocks

 protected:
  text::storage& storage() { return *view_.view()->storage; }
  text::iterator caret() { return view_.view()->selection.current_mark.base; }
  void set_caret(text::iterator const& at) {
    view_.view()->selection.set_caret({view_.view(), at});
  }
  void fill() {
    textview::view_will_change const scope(view_, true);
    storage().insert(text::iterator(0, 0, &storage()), wanted_.begin(), wanted_.end());
    set_caret({0, 0, &storage()});
  }
  void say(std::size_t line, text::unit_view text) {
    constexpr std::size_t enough = 4000;  // bytes
    if (fault.size() < enough)
      fault += "\n  " + std::to_string(line + 1) + ": " + unicode::to_utf8(text.substr(0, 120));
  }

  text::unit_view const wanted_;
  WynTextView view_;
  headless::headless_view_host host_{view_};
};

class typed_file : public edited_view {
 public:
  using edited_view::edited_view;
  bool run();

 private:
  std::size_t units_after_caret() {
    std::size_t count = storage().size(caret().line) - caret().column;
    for (std::size_t line = caret().line + 1; line < storage().lines(); ++line)
      count += storage().size(line) + 1;
    return count;
  }
  bool closes_block(text::unit_view line) const {
    return styles::indent_patterns(view_.stylesForCaretWait(true))
        .matches(styles::indent_patterns::decrease, line);
  }

  void type(char16_t unit);
  void type_line(text::unit_view line);
  void correct_indent(std::size_t number, text::unit_view wanted);

  std::vector<text::pos> marks_;  ///< the keys that put in what stands after the caret, by unit
};

void typed_file::type(char16_t unit) {
  if (unit == u'\n')
    view_.performSelectorWithObject("insertNewline:", {});
  else
    view_.insert_text(std::u16string_view(&unit, 1));
  std::size_t const left = units_after_caret();
  if (left < marks_.size())
    marks_.erase(marks_.begin(), marks_.end() - static_cast<std::ptrdiff_t>(left));
  marks_.insert(marks_.begin(), left - marks_.size(), caret().pos());
}

// Of blanks alone, without the caret being moved from its text.
void typed_file::correct_indent(std::size_t number, text::unit_view wanted) {
  textview::view_will_change const scope(view_, true);
  text::iterator const begin = storage().begin_of_line(number);
  bool const is_here = caret().line == number;
  std::size_t old = leading_blanks(storage().line_units(number));
  if (is_here) old = std::min<std::size_t>(old, caret().column);
  text::iterator const at = caret();
  storage().erase(begin, begin + static_cast<std::ptrdiff_t>(old));
  storage().insert(begin, wanted.begin(), wanted.end());
  std::size_t const column = is_here ? at.column - old + wanted.size() : at.column;
  set_caret({at.line, column, &storage()});
}

// What the line is indented by is corrected at once, but where its text may yet do it.
void typed_file::type_line(text::unit_view line) {
  std::size_t const blanks = leading_blanks(line), number = caret().line;
  text::unit_view const indent = line.substr(0, blanks);
  auto const is_right = [&] {
    text::unit_view const now = storage().line_units(number).substr(0, caret().column);
    return now.substr(0, leading_blanks(now)) == indent;
  };
  bool const has_text = blanks < line.size();
  bool right = !has_text || is_right() || closes_block(line);
  if (!right) correct_indent(number, indent);
  for (char16_t const unit : line.substr(blanks)) type(unit);
  if (!has_text) return;
  if (!is_right()) {
    correct_indent(number, indent);
    right = false;
  }
  ++parts;
  if (right) return;
  ++changed;
  if (std::getenv("REPLAY_INDENT") != nullptr)
    std::printf("  %zu: %s\n", number + 1, unicode::to_utf8(line).c_str());
}

bool typed_file::run() {
  std::vector<text::unit_view> const lines = lines_of(wanted_);
  for (std::size_t n = 0; n < lines.size(); ++n) {
    std::size_t const number = caret().line;
    type_line(lines[n]);
    if (n + 1 < lines.size()) type(u'\n');
    auto const now = [&] {
      text::unit_view const line = storage().line_units(number);
      return number == caret().line ? line.substr(0, caret().column) : line;
    };
    if (leading_blanks(now()) == now().size()) correct_indent(number, lines[n]);
    if (now() == lines[n]) continue;
    say(number, lines[n]);
    fault += "\n    came out as " + unicode::to_utf8(now());
    return false;
  }
  if (units_after_caret() == 0) return true;
  std::u16string const left(caret(), view_.view()->end().base);
  fault = "left behind: " + unicode::to_utf8(text::unit_view(left).substr(0, 120));
  for (text::pos const& place : marks_) say(place.line, lines[place.line]);
  return false;
}

class pasted_file : public edited_view {
 public:
  using edited_view::edited_view;
  bool run() {
    fill();
    for (int n = 0; n < 60 && storage().lines() > 2; ++n) {
      auto const [first, last] = block(n % 3);
      if (first == last) continue;
      ++parts;
      set_caret(first);
      view_.view()->selection.select_to({view_.view(), last}, false);
      view_.performSelectorWithObject("cut:", {});
      view_.performSelectorWithObject("paste:", {});
      if (std::equal(wanted_.begin(), wanted_.end(), text::iterator(0, 0, &storage()),
                     view_.view()->end().base))
        continue;
      if (changed++ == 0)
        fault += "\n  from " + std::to_string(first.column) + " to " + std::to_string(last.column) +
                 " in";
      for (auto line = first.line; line <= last.line; ++line) say(line, lines_of(wanted_)[line]);
      view_.performSelectorWithObject("undo:", {});
      view_.performSelectorWithObject("undo:", {});
    }
    return changed == 0;
  }

 private:
  std::pair<text::iterator, text::iterator> block(int kind) {
    std::size_t const first = random_() % (storage().lines() - 1);
    std::size_t const last = std::min<std::size_t>(first + random_() % 12, storage().lines() - 2);
    text::unit_view const line = storage().line_units(first);
    if (kind == 0) return {storage().begin_of_line(first), storage().begin_of_line(last + 1)};
    if (kind == 1) return {{first, leading_blanks(line), &storage()}, storage().end(last)};
    text::iterator const a(first, random_() % (line.size() + 1), &storage());
    text::iterator const b(last, random_() % (storage().size(last) + 1), &storage());
    return {std::min(a, b), std::max(a, b)};
  }

  std::mt19937 random_{1};
};

class indented_file : public edited_view {
 public:
  using edited_view::edited_view;
  bool run() {
    fill();
    view_.performSelectorWithObject("selectAll:", {});
    view_.performSelectorWithObject("indent:", {});
    std::vector<text::unit_view> const lines = lines_of(wanted_);
    for (std::size_t n = 0; n < lines.size(); ++n) {
      if (leading_blanks(lines[n]) == lines[n].size()) continue;
      ++parts;
      if (storage().line_units(n) == lines[n]) continue;
      ++changed;
      say(n, lines[n]);
      if (changed == 1) fault += "\n    came out as " + unicode::to_utf8(storage().line_units(n));
    }
    return changed == 0;
  }
};

class restored_file : public edited_view {
 public:
  using edited_view::edited_view;
  bool run() {
    std::vector<text::unit_view> const lines = lines_of(wanted_);
    fill();
    for (int n = 0; n < 40 && lines.size() > 2; ++n) {
      std::size_t const first = 1 + random_() % (lines.size() - 1);
      std::size_t const last = std::min(first + random_() % 8, lines.size() - 1);
      set_caret({first, 0, &storage()});
      view_.view()->selection.select_to({view_.view(), storage().end(last)}, false);
      bool const more = random_() % 2 != 0;
      view_.performSelectorWithObject(more ? "shiftRight:" : "shiftLeft:", {});
      bool const moved = storage().line_units(first) != lines[first];
      view_.performSelectorWithObject("indent:", {});
      for (std::size_t line = first; line <= last; ++line) {
        if (leading_blanks(lines[line]) == lines[line].size()) continue;
        parts += moved;
        if (!moved || storage().line_units(line) == lines[line]) continue;
        ++changed;
        say(line, lines[line]);
        fault += "\n    came out as " + unicode::to_utf8(storage().line_units(line));
      }
      storage().erase({0, 0, &storage()}, view_.view()->end().base);
      fill();
    }
    return changed == 0;
  }

 private:
  std::mt19937 random_{1};
};

template <typename File>
int run_on_files(std::string const& language, int count, char** files) {
  std::size_t done = 0, equal = 0, parts = 0, changed = 0;
  for (int i = 0; i < count; ++i) {
    auto const text = text_of_file(files[i]);
    if (!text) continue;
    File file(language, *text);
    ++done;
    if (file.run())
      ++equal;
    else
      std::printf("%s: %s\n", files[i], file.fault.c_str());
    parts += file.parts;
    changed += file.changed;
  }
  std::printf("%zu of %zu files as they were; otherwise were %zu of %zu lines or blocks\n", equal,
              done, changed, parts);
  return equal == done ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 4) return 2;
  headless::headless_desktop desktop;
  own_defaults const defaults;
  std::string const what = arguments[1], language = language_with_scope(arguments[2]);
  if (language.empty()) return 2;
  auto* const run = what == "typed"      ? &run_on_files<typed_file>
                    : what == "pasted"   ? &run_on_files<pasted_file>
                    : what == "indented" ? &run_on_files<indented_file>
                    : what == "restored" ? &run_on_files<restored_file>
                                         : nullptr;
  return run == nullptr ? 2 : run(language, count - 3, arguments + 3);
}
