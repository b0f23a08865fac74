#include "platform/clusters.h"

#include <unicode/uchar.h>
#include <unicode/uscript.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <memory>

#include "platform/unicode.h"

// A walk over code points with little state. What it asks of a code point is one byte of a table,
// made page by page when a page is first needed. tests/platform/clusters.cc compares the breaks
// with those of ICU's break iterator.

namespace unicode {

bool splits_pair(std::u16string_view text, std::size_t at) {
  return at > 0 && at < text.size() && U16_IS_TRAIL(text[at]) && U16_IS_LEAD(text[at - 1]);
}

namespace {

enum part : std::uint8_t {
  other,
  control,
  extend,
  non_joiner,  // extends, but no conjunct
  linker,      // extends, and makes a conjunct with the consonant that follows
  joiner,
  spacing,
  prepend,
  flag_letter,
  pictograph,
  consonant,
  hangul_l,
  hangul_v,
  hangul_t,
  hangul_lv,
  hangul_lvt
};

/// What counts of a code point: its part, its columns, and how it goes with variation selectors.
class properties {
 public:
  properties(part p, unsigned columns, bool is_emoji, bool shows_as_emoji)
      : bits_(static_cast<std::uint8_t>(p | columns << 4 | unsigned{is_emoji} << 6 |
                                        unsigned{shows_as_emoji} << 7)) {}
  properties() = default;

  part kind() const { return static_cast<part>(bits_ & 15); }
  unsigned columns() const { return bits_ >> 4 & 3; }
  bool is_emoji() const { return (bits_ & 0x40) != 0; }
  bool shows_as_emoji() const { return (bits_ & 0x80) != 0; }

 private:
  std::uint8_t bits_ = 0;
};

constexpr char32_t text_selector = 0xFE0E, emoji_selector = 0xFE0F;

int property(UChar32 c, UProperty which) {
  return u_getIntPropertyValue(c, which);
}

/// The scripts in which a virama joins the consonants at both sides to one cluster.
bool has_conjuncts(UChar32 c) {
  UErrorCode status = U_ZERO_ERROR;
  switch (uscript_getScript(c, &status)) {
    case USCRIPT_BENGALI:
    case USCRIPT_DEVANAGARI:
    case USCRIPT_GUJARATI:
    case USCRIPT_MALAYALAM:
    case USCRIPT_ORIYA:
    case USCRIPT_TELUGU:
      return true;
    default:
      return false;
  }
}

part part_of(UChar32 c) {
  switch (property(c, UCHAR_GRAPHEME_CLUSTER_BREAK)) {
    case U_GCB_CONTROL:
    case U_GCB_CR:
    case U_GCB_LF:
      return control;
    case U_GCB_EXTEND:
      if (c == 0x200C) return non_joiner;
      return property(c, UCHAR_INDIC_SYLLABIC_CATEGORY) == U_INSC_VIRAMA && has_conjuncts(c)
                 ? linker
                 : extend;
    case U_GCB_ZWJ:
      return joiner;
    case U_GCB_SPACING_MARK:
      return spacing;
    case U_GCB_PREPEND:
      return prepend;
    case U_GCB_REGIONAL_INDICATOR:
      return flag_letter;
    case U_GCB_L:
      return hangul_l;
    case U_GCB_V:
      return hangul_v;
    case U_GCB_T:
      return hangul_t;
    case U_GCB_LV:
      return hangul_lv;
    case U_GCB_LVT:
      return hangul_lvt;
    default:
      break;
  }
  if (u_hasBinaryProperty(c, UCHAR_EXTENDED_PICTOGRAPHIC)) return pictograph;
  return property(c, UCHAR_INDIC_SYLLABIC_CATEGORY) == U_INSC_CONSONANT && has_conjuncts(c)
             ? consonant
             : other;
}

properties look_up(char32_t c) {
  auto const point = static_cast<UChar32>(c);
  unsigned const columns = is_zero_width(c) ? 0 : is_wide(c) ? 2 : 1;
  bool const is_emoji = u_hasBinaryProperty(point, UCHAR_EMOJI);
  return {part_of(point), columns, is_emoji,
          is_emoji && u_hasBinaryProperty(point, UCHAR_EMOJI_PRESENTATION)};
}

constexpr std::size_t page_size = 256, page_count = 0x110000 / page_size;
using page = std::array<properties, page_size>;
// Pages stay to the end of the process, which other threads and static objects may outlive.
constinit std::atomic<page const*> pages[page_count] = {};

page const& make_page(std::size_t index) {
  auto made = std::make_unique<page>();
  for (std::size_t i = 0; i < page_size; ++i)
    (*made)[i] = look_up(static_cast<char32_t>(index * page_size + i));
  page const* present = nullptr;
  if (pages[index].compare_exchange_strong(present, made.get())) return *made.release();
  return *present;
}

inline properties properties_of(char32_t c) {
  page const* const known = pages[c / page_size].load(std::memory_order_acquire);
  return (known != nullptr ? *known : make_page(c / page_size))[c % page_size];
}

inline bool is_special(char16_t unit) {
  return unit >= first_special_unit;
}

struct code_point {
  char32_t value;
  std::size_t end;
};

inline code_point decode(std::u16string_view text, std::size_t at) {
  char16_t const unit = text[at];
  if (U16_IS_LEAD(unit) && at + 1 < text.size() && U16_IS_TRAIL(text[at + 1]))
    return {static_cast<char32_t>(U16_GET_SUPPLEMENTARY(unit, text[at + 1])), at + 2};
  return {unit, at + 1};
}

/// The start of the code point that ends at `at` > 0.
inline std::size_t code_point_before(std::u16string_view text, std::size_t at) {
  return at - (at > 1 && splits_pair(text, at - 1) ? 2 : 1);
}

bool is_hangul_pair(part a, part b) {
  switch (a) {
    case hangul_l:
      return b == hangul_l || b == hangul_v || b == hangul_lv || b == hangul_lvt;
    case hangul_lv:
    case hangul_v:
      return b == hangul_v || b == hangul_t;
    case hangul_lvt:
    case hangul_t:
      return b == hangul_t;
    default:
      return false;
  }
}

bool is_continuation(part p) {
  return p == extend || p == non_joiner || p == linker || p == joiner || p == spacing;
}

enum class pair_rule { breaks, joins, depends };

/// What two parts next to each other say alone.
pair_rule rule_for(part a, part b) {
  if (a == other && b == other) return pair_rule::breaks;
  if (a == control || b == control) return pair_rule::breaks;
  if (is_continuation(b) || a == prepend || is_hangul_pair(a, b)) return pair_rule::joins;
  if (b == flag_letter && a == flag_letter) return pair_rule::depends;
  if (b == pictograph && a == joiner) return pair_rule::depends;
  if (b == consonant && (a == linker || a == extend || a == joiner)) return pair_rule::depends;
  return pair_rule::breaks;
}

/// The state of a walk from the start of a cluster.
class walk {
 public:
  explicit walk(part first) : last_(first) { follow(first); }

  /// Whether `next` belongs to the same cluster; if so, it is taken in.
  bool joins(part next) {
    pair_rule const rule = rule_for(last_, next);
    bool const joined =
        rule == pair_rule::joins ||
        (rule == pair_rule::depends && (next == flag_letter  ? has_odd_flag_letter_
                                        : next == pictograph ? emoji_ == emoji::joined
                                                             : conjunct_ == conjunct::linked));
    if (!joined) return false;
    follow(next);
    last_ = next;
    return true;
  }

 private:
  enum class emoji : std::uint8_t { none, begun, joined };
  enum class conjunct : std::uint8_t { none, begun, linked };

  void follow(part p) {
    has_odd_flag_letter_ = p == flag_letter && !has_odd_flag_letter_;
    if (p == pictograph)
      emoji_ = emoji::begun;
    else if (p == joiner)
      emoji_ = emoji_ == emoji::begun ? emoji::joined : emoji::none;
    else if (!(p == extend || p == linker || p == non_joiner) || emoji_ == emoji::joined)
      emoji_ = emoji::none;
    if (p == consonant)
      conjunct_ = conjunct::begun;
    else if (p == linker && conjunct_ != conjunct::none)
      conjunct_ = conjunct::linked;
    else if (p != extend && p != joiner)
      conjunct_ = conjunct::none;
  }

  part last_;
  bool has_odd_flag_letter_ = false;
  emoji emoji_ = emoji::none;
  conjunct conjunct_ = conjunct::none;
};

}  // namespace

cluster cluster_at(std::u16string_view text, std::size_t from) {
  char16_t const unit = text[from];
  if (!is_special(unit) && (from + 1 == text.size() || !is_special(text[from + 1]))) {
    bool const is_line_end = unit == u'\r' && from + 1 < text.size() && text[from + 1] == u'\n';
    return {from + (is_line_end ? 2 : 1), 1};
  }
  code_point const first = decode(text, from);
  properties before = properties_of(first.value);
  cluster result{first.end, before.columns()};
  walk state(before.kind());
  while (result.end < text.size()) {
    code_point const next = decode(text, result.end);
    properties const follows = properties_of(next.value);
    if (!state.joins(follows.kind())) break;
    if (next.value == emoji_selector && before.is_emoji())
      result.columns = 2;
    else if (next.value == text_selector && before.shows_as_emoji() && result.columns > 0)
      --result.columns;
    else
      result.columns = std::min(result.columns + follows.columns(), 2u);
    result.end = next.end;
    before = follows;
  }
  return result;
}

bool surely_breaks(std::u16string_view text, std::size_t at) {
  if (at == 0 || at >= text.size()) return false;
  char16_t const before = text[at - 1], after = text[at];
  if (!is_special(before) && !is_special(after)) return before != u'\r' || after != u'\n';
  if (splits_pair(text, at)) return false;
  part const a = properties_of(decode(text, code_point_before(text, at)).value).kind();
  return rule_for(a, properties_of(decode(text, at).value).kind()) == pair_rule::breaks;
}

std::size_t sure_break_before(std::u16string_view text, std::size_t at) {
  if (splits_pair(text, at)) --at;
  while (at > 0 && at < text.size() && !surely_breaks(text, at)) at = code_point_before(text, at);
  return at;
}

bool is_grapheme_break(std::u16string_view text, std::size_t at) {
  if (at == 0 || at >= text.size() || surely_breaks(text, at)) return true;
  if (splits_pair(text, at)) return false;
  std::size_t start = sure_break_before(text, at);
  while (start < at) start = cluster_at(text, start).end;
  return start == at;
}

std::size_t next_grapheme_break(std::u16string_view text, std::size_t from) {
  if (from >= text.size()) return text.size();
  if (surely_breaks(text, from + 1)) return from + 1;
  std::size_t start = sure_break_before(text, from);
  while (start <= from) start = cluster_at(text, start).end;
  return start;
}

std::size_t previous_grapheme_break(std::u16string_view text, std::size_t from) {
  from = std::min(from, text.size());
  if (from <= 1) return 0;
  if (surely_breaks(text, from - 1) && (from == text.size() || !splits_pair(text, from)))
    return from - 1;
  std::size_t start = sure_break_before(text, from - 1);
  for (std::size_t end; (end = cluster_at(text, start).end) < from;) start = end;
  return start;
}

}  // namespace unicode
