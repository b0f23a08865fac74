#include "grammar/pattern.h"

#include <oniguruma.h>

#include <algorithm>
#include <chrono>

#include "platform/utf.h"
#include "regex/onig_library.h"

namespace grammar {

using regex::onig_library::bytes;

namespace {

using clock = std::chrono::steady_clock;
constexpr auto time_limit = std::chrono::seconds(1);
// An attempt is bounded by the library, but a search makes one at each position: the clock is
// looked at after so many of them.
constexpr std::uint32_t slice = 1024;

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
  char16_t const* const first = made->source_.data();
  OnigErrorInfo info{};
  int const error =
      onig_new(&made->regex_, bytes(first), bytes(first + made->source_.size()),
               ONIG_OPTION_CAPTURE_GROUP, ONIG_ENCODING_UTF16_LE, ONIG_SYNTAX_RUBY, &info);
  if (error != ONIG_NORMAL) {
    reason = regex::onig_library::message(error, info);
    made->regex_ = nullptr;
    return nullptr;
  }
  std::string const narrow = unicode::to_utf8(made->source_);
  if (onig_new(&made->narrow_, bytes(narrow.data()), bytes(narrow.data() + narrow.size()),
               ONIG_OPTION_CAPTURE_GROUP, ONIG_ENCODING_UTF8, ONIG_SYNTAX_RUBY,
               &info) != ONIG_NORMAL)
    made->narrow_ = nullptr;
  return made;
}

pattern::~pattern() {
  if (regex_) onig_free(regex_);
  if (narrow_) onig_free(narrow_);
}

void line_text::set(std::u16string units, bool is_last) {
  units_ = std::move(units);
  is_last_ = is_last;
  make_valid(units_);
  unsigned all = 0;
  for (char16_t const unit : units_) all |= unit;
  narrow_.clear();
  if (all < 0x80) narrow_.assign(units_.begin(), units_.end());
}

pattern::result pattern::search(line_text const& line, std::uint32_t from,
                                match_groups& found) const {
  std::u16string const& text = line.units();
  OnigRegion* const region = region_of_this_thread();
  bool const narrow = narrow_ && line.is_narrow();
  int const unit = narrow ? 1 : 2;
  OnigUChar const* const first = narrow ? bytes(line.narrow().data()) : bytes(text.data());
  auto const at_unit = [&](std::size_t index) {
    return first + static_cast<std::size_t>(unit) * index;
  };
  OnigOptionType options = line.is_last() ? ONIG_OPTION_NONE : ONIG_OPTION_NOTEOL;
  auto const size = static_cast<std::uint32_t>(text.size());
  clock::time_point const start = size - from > slice ? clock::now() : clock::time_point();
  for (std::uint32_t at = from;;) {
    std::uint32_t range = std::min(size, at + slice);
    // Not between the halves of a pair.
    if (range < size && (text[range] & 0xfc00) == 0xdc00) ++range;
    int const index = onig_search(narrow ? narrow_ : regex_, first, at_unit(size), at_unit(at),
                                  at_unit(range), region, options);
    if (index >= 0) break;
    if (index != ONIG_MISMATCH) return result::gave_up;
    if (range == size) return result::none;
    if (clock::now() - start > time_limit) return result::gave_up;
    at = range;
    options |= ONIG_OPTION_NOT_BEGIN_POSITION;
  }
  found.groups.resize(static_cast<std::size_t>(region->num_regs));
  for (std::size_t i = 0; i < found.groups.size(); ++i) {
    bool const is_set = region->beg[i] >= 0;
    found.groups[i] = {is_set ? region->beg[i] / unit : -1, is_set ? region->end[i] / unit : -1};
  }
  return result::found;
}

}  // namespace grammar
