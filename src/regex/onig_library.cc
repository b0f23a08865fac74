#include "regex/onig_library.h"

#include <algorithm>
#include <memory>
#include <new>

#include "platform/system/memory_reserve.h"

namespace regex::onig_library {
namespace {

constexpr std::u16string_view callout = u"observed";

int call_observer(OnigCalloutArgs* args, void* observer) {
  OnigUChar const* const start = onig_get_start_by_callout_args(args);
  bool const go_on = static_cast<attempt_observer*>(observer)->before_attempt(start);
  return go_on ? ONIG_CALLOUT_SUCCESS : ONIG_ABORT;
}

void register_callout() {
  auto const name = [](std::size_t i) { return const_cast<OnigUChar*>(bytes(callout.data() + i)); };
  onig_set_callout_of_name(ONIG_ENCODING_UTF16_LE, ONIG_CALLOUT_TYPE_SINGLE, name(0),
                           name(callout.size()), ONIG_CALLOUT_IN_PROGRESS, call_observer, nullptr,
                           0, nullptr, 0, nullptr);
}

/// The parameters of searches on this thread; what a search sets, the next one sets again.
OnigMatchParam* match_param() {
  struct free {
    void operator()(OnigMatchParam* p) const { onig_free_match_param(p); }
  };
  thread_local std::unique_ptr<OnigMatchParam, free> const param(onig_new_match_param());
  if (param == nullptr) throw std::bad_alloc();
  return param.get();
}

}  // namespace

void initialize() {
  [[maybe_unused]] static bool const done = [] {
    OnigEncoding encodings[] = {ONIG_ENCODING_UTF16_LE, ONIG_ENCODING_UTF8};
    onig_initialize(encodings, 2);
    onig_set_retry_limit_in_match(retries_per_match);
    onig_set_match_stack_limit_size(stack_entries);
    onig_set_subexp_call_limit_in_search(calls_per_search);
    onig_set_subexp_call_max_nest_level(nested_calls);
    register_callout();
    return true;
  }();
}

int new_regex(regex_t** regex, OnigUChar const* first, OnigUChar const* last,
              OnigOptionType options, OnigEncoding encoding, OnigSyntaxType* syntax,
              OnigErrorInfo* info) {
  constexpr auto room = std::size_t{2} << 20;  // more than compiling takes
  platform::require_spare_memory(room + 64 * static_cast<std::size_t>(last - first));
  int const error = onig_new(regex, first, last, options, encoding, syntax, info);
  if (error == ONIGERR_MEMORY) throw std::bad_alloc();
  return error;
}

bool gave_up(int result) {
  return result < 0 && result != ONIG_MISMATCH;
}

std::string message(int error, OnigErrorInfo const& info) {
  OnigUChar buffer[ONIG_MAX_ERROR_MESSAGE_LEN];
  // The place in the pattern is used for those errors that have one.
  int const length = onig_error_code_to_str(buffer, error, &info);
  return std::string(reinterpret_cast<char const*>(buffer), static_cast<std::size_t>(length));
}

regex_t* new_observed(std::u16string_view pattern, unsigned options) {
  // The pattern keeps the pointer.
  static OnigSyntaxType syntax = [] {
    OnigSyntaxType ruby = *ONIG_SYNTAX_RUBY;
    ruby.op2 |= ONIG_SYN_OP2_ASTERISK_CALLOUT_NAME;
    return ruby;
  }();
  std::u16string const source = u"(*" + std::u16string(callout) + u")" + std::u16string(pattern);
  regex_t* regex = nullptr;
  OnigErrorInfo info{};
  int const error = new_regex(&regex, bytes(source.data()), bytes(source.data() + source.size()),
                              options, ONIG_ENCODING_UTF16_LE, &syntax, &info);
  return error == ONIG_NORMAL ? regex : nullptr;
}

int search_within(unsigned long retries, regex_t* regex, OnigUChar const* text,
                  OnigUChar const* end, OnigUChar const* start, OnigRegion* region,
                  OnigOptionType options) {
  OnigMatchParam* const param = match_param();
  onig_set_retry_limit_in_match_of_match_param(param, retries_per_match);
  onig_set_retry_limit_in_search_of_match_param(param, retries);
  int const found = onig_search_with_param(regex, text, end, start, end, region, options, param);
  onig_set_retry_limit_in_search_of_match_param(param, 0);
  return found;
}

int search_observed(regex_t* regex, OnigUChar const* text, OnigUChar const* end,
                    OnigUChar const* start, OnigUChar const* range, OnigRegion* region,
                    attempt_observer& observer, unsigned long retries, OnigOptionType options) {
  OnigMatchParam* const param = match_param();
  onig_set_callout_user_data_of_match_param(param, &observer);
  onig_set_retry_limit_in_match_of_match_param(param, retries ? retries : retries_per_match);
  return onig_search_with_param(regex, text, end, start, range, region, options, param);
}

int search_briefly(regex_t* regex, OnigUChar const* text, OnigUChar const* end,
                   OnigUChar const* start, OnigRegion* region, unsigned long retries) {
  OnigMatchParam* const param = match_param();
  onig_set_retry_limit_in_match_of_match_param(param, std::min(retries, retries_per_match));
  onig_set_retry_limit_in_search_of_match_param(param, retries);
  int const found =
      onig_search_with_param(regex, text, end, start, end, region, ONIG_OPTION_NONE, param);
  onig_set_retry_limit_in_search_of_match_param(param, 0);
  return found;
}

}  // namespace regex::onig_library
