#include "documents/line_diff.h"

#include <algorithm>
#include <unordered_map>

#include "platform/utf.h"

namespace documents {
namespace {

constexpr long most_differences = 2000;  // lines; what is remembered of the way grows by its square
constexpr long most_steps = 50'000'000;

/// A part of two sequences of numbers, equal for equal lines.
struct sequences {
  std::vector<int> a, b;
};

sequences numbered(text_lines const& a, text_lines const& b, std::size_t begin, std::size_t end) {
  sequences result;
  std::unordered_map<std::u16string_view, int> numbers;
  auto const number = [&](std::u16string_view line) {
    return numbers.emplace(line, static_cast<int>(numbers.size())).first->second;
  };
  for (std::size_t i = begin; i < a.size() - end; ++i) result.a.push_back(number(a[i]));
  for (std::size_t i = begin; i < b.size() - end; ++i) result.b.push_back(number(b[i]));
  return result;
}

/// A point reached: `x` lines of a, `y` of b used.
struct point {
  long x, y;
};

class shortest_way {
 public:
  explicit shortest_way(sequences const& s)
      : s_(s), n_(static_cast<long>(s.a.size())), m_(static_cast<long>(s.b.size())) {}

  /// The points at which a line of only one text is used, last one first. False if there are too
  /// many or it takes too long.
  bool find(std::vector<point>& steps) {
    for (long d = 0; d <= most_differences; ++d) {
      trace_.emplace_back(static_cast<std::size_t>(2 * d + 1));
      for (long k = -d; k <= d; k += 2) {
        point const p = slide(d == 0 ? point{0, 0} : after_step(d, k));
        at(d, k) = p.x;
        if (p.x >= n_ && p.y >= m_) return walk_back(d, steps), true;
      }
      if (work_ > most_steps) return false;
    }
    return false;
  }

 private:
  long& at(long d, long k) {
    return trace_[static_cast<std::size_t>(d)][static_cast<std::size_t>(k + d)];
  }
  bool comes_from_above(long d, long k) {
    return k == -d || (k != d && at(d - 1, k - 1) < at(d - 1, k + 1));
  }
  point after_step(long d, long k) {
    long const x = comes_from_above(d, k) ? at(d - 1, k + 1) : at(d - 1, k - 1) + 1;
    return {x, x - k};
  }
  point slide(point p) {
    ++work_;
    while (p.x < n_ && p.y < m_ &&
           s_.a[static_cast<std::size_t>(p.x)] == s_.b[static_cast<std::size_t>(p.y)])
      ++p.x, ++p.y, ++work_;
    return p;
  }
  void walk_back(long d, std::vector<point>& steps) {
    for (long k = n_ - m_; d > 0; --d) {
      bool const above = comes_from_above(d, k);
      k += above ? 1 : -1;
      long const x = at(d - 1, k);
      steps.push_back({x, x - k});
      steps.push_back(above ? point{x, x - k + 1} : point{x + 1, x - k});
    }
  }

  sequences const& s_;
  long const n_, m_;
  long work_ = 0;
  std::vector<std::vector<long>> trace_;
};

void add(std::vector<changed_lines>& changes, changed_lines const& next) {
  if (!changes.empty() && changes.back().old_end == next.old_begin &&
      changes.back().new_end == next.new_begin) {
    changes.back().old_end = next.old_end;
    changes.back().new_end = next.new_end;
  } else {
    changes.push_back(next);
  }
}

std::u16string number(std::size_t n) {
  return unicode::to_utf16(std::to_string(n));
}

std::u16string range(std::size_t begin, std::size_t end) {
  return number(begin == end ? begin : begin + 1) + u"," + number(end - begin);
}

}  // namespace

text_lines lines_of(std::u16string_view text) {
  text_lines lines;
  for (;;) {
    auto const end = text.find(u'\n');
    lines.push_back(text.substr(0, end));
    if (end == text.npos) return lines;
    text.remove_prefix(end + 1);
  }
}

text_lines whole_lines_of(std::u16string_view text) {
  text_lines lines;
  while (!text.empty()) {
    lines.push_back(text.substr(0, std::min(text.find(u'\n'), text.size() - 1) + 1));
    text.remove_prefix(lines.back().size());
  }
  return lines;
}

std::vector<changed_lines> differing_lines(text_lines const& a, text_lines const& b) {
  std::size_t const shorter = std::min(a.size(), b.size());
  std::size_t begin = 0, end = 0;
  while (begin < shorter && a[begin] == b[begin]) ++begin;
  while (end < shorter - begin && a[a.size() - 1 - end] == b[b.size() - 1 - end]) ++end;
  std::vector<changed_lines> changes;
  if (begin == a.size() - end && begin == b.size() - end) return changes;

  sequences const middle = numbered(a, b, begin, end);
  std::vector<point> steps;
  if (!shortest_way(middle).find(steps)) return {{begin, a.size() - end, begin, b.size() - end}};
  for (std::size_t i = steps.size(); i > 0; i -= 2) {
    point const from = steps[i - 2], to = steps[i - 1];
    add(changes,
        {begin + static_cast<std::size_t>(from.x), begin + static_cast<std::size_t>(to.x),
         begin + static_cast<std::size_t>(from.y), begin + static_cast<std::size_t>(to.y)});
  }
  return changes;
}

std::u16string unified_diff(text_lines const& a, text_lines const& b,
                            std::vector<changed_lines> const& changes,
                            std::u16string const& old_name, std::u16string const& new_name,
                            bool of_whole_lines) {
  constexpr std::size_t context = 3;
  std::u16string out = u"--- " + old_name + u"\n+++ " + new_name + u"\n";
  auto const put = [&](char16_t mark, text_lines const& lines, std::size_t i, std::size_t end) {
    for (; i < end; ++i) {
      (out += mark).append(lines[i]);
      if (lines[i].ends_with(u'\n')) continue;
      out += u'\n';
      if (of_whole_lines) out += u"\\ No newline at end of file\n";
    }
  };
  for (std::size_t first = 0, next; first < changes.size(); first = next) {
    next = first + 1;
    while (next < changes.size() &&
           changes[next].old_begin - changes[next - 1].old_end <= 2 * context)
      ++next;
    changed_lines const &head = changes[first], &tail = changes[next - 1];
    std::size_t const before = std::min(context, head.old_begin);
    std::size_t const after = std::min(context, a.size() - tail.old_end);
    out += u"@@ -" + range(head.old_begin - before, tail.old_end + after) + u" +" +
           range(head.new_begin - before, tail.new_end + after) + u" @@\n";
    std::size_t at = head.old_begin - before;
    for (std::size_t i = first; i < next; ++i) {
      put(u' ', a, at, changes[i].old_begin);
      put(u'-', a, changes[i].old_begin, changes[i].old_end);
      put(u'+', b, changes[i].new_begin, changes[i].new_end);
      at = changes[i].old_end;
    }
    put(u' ', a, at, at + after);
  }
  return out;
}

}  // namespace documents
