#include "regex/onig_library.h"

namespace regex::onig_library {

void initialize() {
  [[maybe_unused]] static bool const done = [] {
    OnigEncoding encodings[] = {ONIG_ENCODING_UTF16_LE, ONIG_ENCODING_UTF8};
    onig_initialize(encodings, 2);
    onig_set_retry_limit_in_match(retries_per_match);
    onig_set_match_stack_limit_size(stack_entries);
    onig_set_subexp_call_limit_in_search(calls_per_search);
    onig_set_subexp_call_max_nest_level(nested_calls);
    return true;
  }();
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

}  // namespace regex::onig_library
