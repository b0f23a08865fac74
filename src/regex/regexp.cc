#include "regex/regexp.h"

#include "platform/log.h"
#include "regex/onig_library.h"

namespace regexp {

using namespace regex::onig_library;

pattern_t::pattern_t(std::string source, unsigned options) : source_(std::move(source)) {
  initialize();
  regex::valid_utf8 const valid(source_);
  regex_t* regex = nullptr;
  OnigErrorInfo info{};
  int const error =
      new_regex(&regex, bytes(valid.data()), bytes(valid.data() + valid.size()),
                options | ONIG_OPTION_CAPTURE_GROUP, ONIG_ENCODING_UTF8, ONIG_SYNTAX_RUBY, &info);
  if (error == ONIG_NORMAL) {
    regex_.reset(regex, onig_free);
  } else {
    platform::log_text("ERROR " + message(error, info) + " (" + source_ + ")\n");
  }
}

match_t match_t::broken_off() {
  match_t result;
  result.gave_up_ = true;
  return result;
}

std::size_t match_t::size() const {
  return region_ ? static_cast<std::size_t>(region_->num_regs) : 0;
}

bool match_t::did_match(std::size_t i) const {
  return i < size() && region_->beg[i] >= 0;
}

std::size_t match_t::begin() const {
  return region_ ? static_cast<std::size_t>(region_->beg[0]) : static_cast<std::size_t>(-1);
}

std::size_t match_t::end() const {
  return region_ ? static_cast<std::size_t>(region_->end[0]) : static_cast<std::size_t>(-1);
}

std::size_t match_t::begin(std::size_t i) const {
  return did_match(i) ? static_cast<std::size_t>(region_->beg[i]) : end();
}

std::size_t match_t::end(std::size_t i) const {
  return did_match(i) ? static_cast<std::size_t>(region_->end[i]) : end();
}

namespace {

struct extraction {
  char const* text;
  OnigRegion const* region;
  match_t::captures_t& captures;

  std::string group(int i) const {
    return std::string(text + region->beg[i], text + region->end[i]);
  }
};

int copy_matches_for_name(OnigUChar const* name, OnigUChar const* name_end, int count, int* groups,
                          regex_t*, void* data) {
  auto const& to = *static_cast<extraction*>(data);
  std::string joined;
  bool any = false;
  for (int i = 0; i < count; ++i) {
    if (to.region->beg[groups[i]] < 0) continue;
    joined += to.group(groups[i]);
    any = true;
  }
  if (any) to.captures.emplace(std::string(name, name_end), joined);
  return 0;
}

void extract_captures(char const* text, OnigRegion const* region, regex_t* regex,
                      match_t::captures_t& captures) {
  extraction to{text, region, captures};
  for (int i = 0; i < region->num_regs; ++i) {
    if (region->beg[i] >= 0) captures.emplace(std::to_string(i), to.group(i));
  }
  onig_foreach_name(regex, copy_matches_for_name, &to);
}

}  // namespace

match_t::captures_t const& match_t::captures() const {
  if (!captures_) {
    captures_ = std::make_shared<captures_t>();
    if (region_) extract_captures(text_, region_.get(), regex_.get(), *captures_);
  }
  return *captures_;
}

static match_t search_range(pattern_t const& pattern, regex::valid_utf8 const& text,
                            std::size_t from, std::size_t to, unsigned options) {
  if (!pattern) return {};
  if (text.size() > max_bytes) return match_t::broken_off();
  OnigUChar const* const first = bytes(text.data());
  std::shared_ptr<OnigRegion> const region(onig_region_new(),
                                           [](OnigRegion* r) { onig_region_free(r, 1); });
  int const found = onig_search(pattern.regex().get(), first, first + text.size(), first + from,
                                first + to, region.get(), options);
  if (found >= 0) return match_t(region, pattern.regex(), text.original().data());
  return regex::onig_library::gave_up(found) ? match_t::broken_off() : match_t();
}

match_t search(pattern_t const& pattern, char const* first, char const* last, char const* from,
               char const* to, unsigned options) {
  regex::valid_utf8 const text({first, static_cast<std::size_t>(last - first)});
  return search_range(pattern, text, from ? static_cast<std::size_t>(from - first) : 0,
                      to ? static_cast<std::size_t>(to - first) : text.size(), options);
}

match_t search(pattern_t const& pattern, regex::valid_utf8 const& text, std::size_t from) {
  return search_range(pattern, text, from, text.size(), ONIG_OPTION_NONE);
}

}  // namespace regexp
