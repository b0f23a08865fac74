#include "grammar/pattern.h"

#include <oniguruma.h>

#include <cctype>
#include <ctime>

#include "platform/utf.h"
#include "regex/onig_library.h"

namespace grammar {

using regex::onig_library::bytes;

namespace {

// An attempt is bounded by the library, but a search makes one at each position. In short lines
// those of nearly all patterns go back no more often than this together; other searches are done
// again with a time limit.
constexpr unsigned long unobserved_retries = 1'000'000;
constexpr std::uint32_t short_line = 4096;

/// Ends a search after a second of this thread's time, or when it is no longer wanted.
class second_hand final : public regex::onig_library::attempt_observer {
 public:
  explicit second_hand(std::atomic<bool> const* stop) : stop_(stop) {}

  bool before_attempt(OnigUChar const*) override {
    if (stop_ != nullptr && stop_->load(std::memory_order_relaxed)) return false;
    return ++attempts_ % 16 != 0 || now() < end_;
  }

 private:
  static double now() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
  }

  std::atomic<bool> const* stop_;
  unsigned attempts_ = 0;
  double end_ = now() + 1;
};

OnigRegion* region_of_this_thread() {
  static thread_local std::unique_ptr<OnigRegion, void (*)(OnigRegion*)> const region(
      onig_region_new(), [](OnigRegion* r) { onig_region_free(r, 1); });
  return region.get();
}

void make_valid(std::u16string& text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if ((text[i] & 0xf800) != 0xd800) continue;
    if (text[i] < 0xdc00 && i + 1 < text.size() && (text[i + 1] & 0xfc00) == 0xdc00)
      ++i;
    else
      text[i] = 0xfffd;
  }
}

}  // namespace

std::unique_ptr<pattern const> pattern::compile(std::u16string source, std::string& reason) {
  regex::onig_library::initialize();
  std::unique_ptr<pattern> made(new pattern);
  made->source_ = std::move(source);
  make_valid(made->source_);
  made->depends_on_start_ = made->source_.find(u"\\G") != std::u16string::npos ||
                            made->source_.find(u"\\K") != std::u16string::npos;
  std::string const narrow = unicode::to_utf8(made->source_);
  OnigErrorInfo info{};
  int const error = regex::onig_library::new_regex(
      &made->narrow_, bytes(narrow.data()), bytes(narrow.data() + narrow.size()),
      ONIG_OPTION_CAPTURE_GROUP, ONIG_ENCODING_UTF8, ONIG_SYNTAX_RUBY, &info);
  if (error == ONIG_NORMAL) {
    made->forms_ = fixed_forms::of(made->source_);
    return made;
  }
  reason = regex::onig_library::message(error, info);
  made->narrow_ = nullptr;
  // Bytes by their number may be good in one encoding alone.
  if (made->wide() == nullptr) return nullptr;
  return made;
}

// A number such as \x41 is that of a byte, which in UTF-16 is no unit.
static std::u16string wide_source(std::u16string const& source) {
  std::u16string made;
  auto const is_hex = [&](std::size_t i) {
    return i < source.size() && source[i] < 128 && std::isxdigit(source[i]);
  };
  for (std::size_t i = 0; i < source.size(); ++i) {
    made += source[i];
    if (source[i] != u'\\' || ++i == source.size()) continue;
    made += source[i];
    if (source[i] != u'x' || !is_hex(i + 1)) continue;
    std::size_t const digits = is_hex(i + 2) ? 2 : 1;
    made += u'{' + source.substr(i + 1, digits) + u'}';
    i += digits;
  }
  return made;
}

re_pattern_buffer* pattern::wide() const {
  std::call_once(wide_compiled_, [this] {
    std::u16string const source = wide_source(source_);
    char16_t const* const first = source.data();
    OnigErrorInfo info{};
    if (regex::onig_library::new_regex(&wide_, bytes(first), bytes(first + source.size()),
                                       ONIG_OPTION_CAPTURE_GROUP, ONIG_ENCODING_UTF16_LE,
                                       ONIG_SYNTAX_RUBY, &info) != ONIG_NORMAL)
      wide_ = nullptr;
  });
  return wide_;
}

pattern::~pattern() {
  if (narrow_) onig_free(narrow_);
  if (wide_) onig_free(wide_);
  if (observed_) onig_free(observed_);
}

void line_text::set(std::u16string_view units, bool is_last) {
  units_ = units;
  size_ = units.size();
  is_last_ = is_last;
  make_valid(units_);
  unsigned all = 0;
  for (char16_t const unit : units_) all |= unit;
  narrow_.clear();
  if (all < 0x80) narrow_.assign(units_.begin(), units_.end());
}

namespace {

/// The line as one of a pattern's two programs sees it.
struct subject {
  subject(line_text const& line, bool is_narrow)
      : unit(is_narrow ? 1 : 2),
        first(is_narrow ? bytes(line.narrow().data()) : bytes(line.units().data())),
        size(static_cast<std::uint32_t>(line.units().size())),
        options(line.is_last() ? ONIG_OPTION_NONE : ONIG_OPTION_NOTEOL) {}

  OnigUChar const* at(std::size_t index) const {
    return first + static_cast<std::size_t>(unit) * index;
  }
  void groups_of(OnigRegion const& region, match_groups& found) const {
    found.groups.resize(static_cast<std::size_t>(region.num_regs));
    for (std::size_t i = 0; i < found.groups.size(); ++i) {
      bool const is_set = region.beg[i] >= 0;
      found.groups[i] = {is_set ? region.beg[i] / unit : -1, is_set ? region.end[i] / unit : -1};
    }
  }

  int unit;
  OnigUChar const* first;
  std::uint32_t size;
  OnigOptionType options;
};

}  // namespace

int pattern::search_observed(line_text const& line, std::uint32_t from,
                             std::atomic<bool> const* stop) const {
  std::call_once(observed_compiled_, [this] {
    observed_ = regex::onig_library::new_observed(wide_source(source_), ONIG_OPTION_CAPTURE_GROUP);
  });
  if (observed_ == nullptr) return ONIG_MISMATCH;
  subject const text(line, false);
  second_hand clock(stop);
  return regex::onig_library::search_observed(observed_, text.first, text.at(text.size),
                                              text.at(from), text.at(text.size),
                                              region_of_this_thread(), clock, 0, text.options);
}

pattern::result pattern::search(line_text const& line, std::uint32_t from, match_groups& found,
                                std::atomic<bool> const* stop) const {
  bool is_narrow = narrow_ && line.is_narrow();
  re_pattern_buffer* const regex = is_narrow ? narrow_ : wide();
  if (regex == nullptr) return result::none;
  int index = ONIGERR_RETRY_LIMIT_IN_SEARCH_OVER;
  if (line.units().size() - from <= short_line) {
    subject const text(line, is_narrow);
    index = regex::onig_library::search_within(unobserved_retries, regex, text.first,
                                               text.at(text.size), text.at(from),
                                               region_of_this_thread(), text.options);
  }
  if (index == ONIGERR_RETRY_LIMIT_IN_SEARCH_OVER) {
    is_narrow = false;
    index = search_observed(line, from, stop);
  }
  subject const text(line, is_narrow);
  if (index == ONIG_MISMATCH) return result::none;
  if (index < 0) return result::gave_up;
  text.groups_of(*region_of_this_thread(), found);
  return result::found;
}

pattern::result pattern::match(line_text const& line, std::uint32_t at, bool with_groups,
                               match_groups& found) const {
  auto const tell = [&](std::size_t size) {
    auto const begin = static_cast<std::int32_t>(at);
    found.groups.assign(1, {begin, begin + static_cast<std::int32_t>(size)});
    return result::found;
  };
  if (!with_groups && !forms_.empty()) {
    std::size_t size = 0;
    auto const fits = forms_.match(line.units(), at, size);
    if (fits == fixed_forms::result::no) return result::none;
    if (fits == fixed_forms::result::yes) return tell(size);
  }
  bool const is_narrow = narrow_ && line.is_narrow();
  re_pattern_buffer* const regex = is_narrow ? narrow_ : wide();
  if (regex == nullptr) return result::none;
  subject const text(line, is_narrow);
  OnigRegion* const region = with_groups ? region_of_this_thread() : nullptr;
  int const size =
      onig_match(regex, text.first, text.at(text.size), text.at(at), region, text.options);
  if (size == ONIG_MISMATCH) return result::none;
  if (size < 0) return result::gave_up;
  if (!with_groups) return tell(static_cast<std::size_t>(size / text.unit));
  text.groups_of(*region, found);
  return result::found;
}

}  // namespace grammar
