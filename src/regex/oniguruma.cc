#include "regex/oniguruma.h"

#include <algorithm>
#include <stdexcept>

#include "platform/utf.h"
#include "regex/line_pattern.h"
#include "regex/onig_library.h"

namespace oniguruma {

using namespace regex::onig_library;

ptrn_t::ptrn_t(char16_t const* first, char16_t const* last, unsigned options)
    : source_(std::make_unique<char16_t[]>(static_cast<std::size_t>(last - first))),
      length_(static_cast<std::size_t>(last - first)),
      options_(options) {
  initialize();
  std::copy(first, last, source_.get());
  regex::valid_text const valid(source());
  OnigErrorInfo info{};
  int const error = new_regex(&regex_, bytes(valid.data()), bytes(valid.data() + valid.size()),
                              options, ONIG_ENCODING_UTF16_LE, ONIG_SYNTAX_RUBY, &info);
  stays_in_line_ = regex::is_line_pattern(valid.units(), options);
  if (error == ONIG_NORMAL) return;
  throw std::invalid_argument(message(error, info) + " for pattern " + unicode::to_utf8(source()));
}

ptrn_t::~ptrn_t() {
  onig_free(regex_);
  onig_free(ticking_regex_);
}

ptrn_t::ptrn_t(ptrn_t&& other) noexcept
    : regex_(std::exchange(other.regex_, nullptr)),
      source_(std::move(other.source_)),
      length_(std::exchange(other.length_, 0)),
      options_(other.options_),
      stays_in_line_(other.stays_in_line_),
      ticking_regex_(other.ticking_regex_.exchange(nullptr)) {}

ptrn_t& ptrn_t::operator=(ptrn_t&& other) noexcept {
  std::swap(regex_, other.regex_);
  std::swap(source_, other.source_);
  std::swap(length_, other.length_);
  std::swap(options_, other.options_);
  std::swap(stays_in_line_, other.stays_in_line_);
  ticking_regex_ = other.ticking_regex_.exchange(ticking_regex_);
  return *this;
}

regex_t* ptrn_t::ticking_regex() const {
  regex_t* existing = ticking_regex_;
  // With the anchor the place where a slice begins would count.
  if (existing || !regex_ || source().find(u"\\G") != source().npos) return existing;
  regex::valid_text const valid(source());
  regex_t* const made = new_observed(valid.units(), options_);
  if (ticking_regex_.compare_exchange_strong(existing, made)) return made;
  onig_free(made);
  return existing;
}

bool ptrn_t::operator==(ptrn_t const& other) const {
  return source_ == other.source_ || source() == other.source();
}

// Shared by all threads, so it is not counted.
match_t::record match_t::broken_off_record{nullptr, 0};

match_t::match_t(re_registers* region) : record_(region ? new record{region, 1} : nullptr) {}

match_t::match_t(match_t const& other) : record_(other.record_) {
  if (region()) ++record_->count;
}

match_t& match_t::operator=(match_t const& other) {
  if (record_ == other.record_) return *this;
  release();
  record_ = other.record_;
  if (region()) ++record_->count;
  return *this;
}

void match_t::release() {
  record* const r = std::exchange(record_, nullptr);
  if (!r || !r->region || --r->count > 0) return;
  onig_region_free(r->region, 1);
  delete r;
}

match_t match_t::broken_off() {
  match_t result;
  result.record_ = &broken_off_record;
  return result;
}

bool match_t::gave_up() const {
  return record_ == &broken_off_record;
}

std::size_t match_t::size() const {
  return region() ? static_cast<std::size_t>(region()->num_regs) : 0;
}

bool match_t::is_set(std::size_t i) const {
  return i < size() && region()->beg[i] >= 0;
}

std::ptrdiff_t match_t::begin(std::size_t i) const {
  return i < size() ? region()->beg[i] / 2 : -1;
}

std::ptrdiff_t match_t::end(std::size_t i) const {
  return i < size() ? region()->end[i] / 2 : -1;
}

match_t find(char16_t const* buffer, std::ptrdiff_t from, std::ptrdiff_t to, ptrn_t const* ptrn,
             unsigned options, std::ptrdiff_t text_end) {
  if (!ptrn || !ptrn->regex()) return {};
  std::ptrdiff_t const size = text_end < 0 ? to : text_end;
  regex::valid_text const text({buffer, static_cast<std::size_t>(size)});
  return find(text, from, to, ptrn, options);
}

match_t find(regex::valid_text const& text, std::ptrdiff_t from, std::ptrdiff_t to,
             ptrn_t const* ptrn, unsigned options) {
  if (!ptrn || !ptrn->regex()) return {};
  if (text.size() > max_bytes / 2) return match_t::broken_off();
  if (text.splits_pair(static_cast<std::size_t>(from))) {
    if (from == to) return {};
    from += from < to ? 1 : -1;
  }
  OnigUChar const* const first = bytes(text.data());
  std::unique_ptr<OnigRegion, void (*)(OnigRegion*)> region(
      onig_region_new(), [](OnigRegion* r) { onig_region_free(r, 1); });
  int const found = onig_search(ptrn->regex(), first, first + 2 * text.size(), first + 2 * from,
                                first + 2 * to, region.get(), options);
  if (found >= 0) return match_t(region.release());
  return gave_up(found) ? match_t::broken_off() : match_t();
}

captures_t captures_of(match_t const& match) {
  captures_t result;
  for (std::size_t i = 0; i < match.size(); ++i) {
    if (!match.is_set(i) || match.end(i) == 0) continue;
    result[static_cast<int>(i)] = {static_cast<int>(match.begin(i)),
                                   static_cast<int>(match.end(i))};
  }
  return result;
}

bool find_all(char16_t const* first, char16_t const* last, ptrn_t const& ptrn,
              std::vector<captures_t>& result) {
  regex::valid_text const text({first, static_cast<std::size_t>(last - first)});
  auto const size = static_cast<std::ptrdiff_t>(text.size());
  std::ptrdiff_t pos = 0;
  for (;;) {
    match_t const found = find(text, pos, size, &ptrn);
    if (!found) return !found.gave_up();
    result.push_back(captures_of(found));
    pos = found.end(0);
    if (found.begin(0) != pos) continue;
    if (pos == size) return true;
    ++pos;
  }
}

}  // namespace oniguruma
