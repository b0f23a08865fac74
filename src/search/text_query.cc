#include "search/text_query.h"

#include "platform/unicode.h"
#include "regex/onig_library.h"
#include "regex/sliced_search.h"

#include <time.h>

#include <algorithm>

namespace search {
namespace {

constexpr std::size_t literal_slice = 1 << 21;  // units; a millisecond's work or less
constexpr std::size_t longest_examined = 2000;  // units of a bad pattern
constexpr double seconds_to_examine = 0.015;

bool is_of_word(char32_t c) {
  return c == U'_' || unicode::is_alnum(c);
}

/// Of processor time, so that the answer doesn't depend on what else runs.
double seconds_worked() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

}  // namespace

bool is_within_word(text::unit_view text, std::size_t at) {
  if (at == 0 || at >= text.size()) return false;
  bool const is_pair = at > 1 && unicode::code_point_at(text, at - 2) > 0xFFFF;
  return is_of_word(unicode::code_point_at(text, at - (is_pair ? 2 : 1))) &&
         is_of_word(unicode::code_point_at(text, at));
}

text_query::text_query(std::u16string_view sought, query_options options)
    : whole_words_(options.whole_words) {
  if (options.regular_expression)
    pattern_.emplace(sought.data(), sought.data() + sought.size(),
                     options.ignore_case ? ONIG_OPTION_IGNORECASE : ONIG_OPTION_NONE);
  else
    literal_.emplace(sought, options.ignore_case);
}

std::string text_query::message_of(std::exception const& error) {
  std::string const text = error.what();
  return text.substr(0, text.find(" for pattern "));
}

std::size_t text_query::error_offset(std::u16string_view pattern) {
  auto const message = [](std::u16string_view part) {
    try {
      oniguruma::ptrn_t const compiled(part.data(), part.data() + part.size(), ONIG_OPTION_NONE);
    } catch (std::invalid_argument const& error) {
      return message_of(error);
    }
    return std::string();
  };
  std::size_t length = std::min(pattern.size(), longest_examined);
  std::string const wrong = message(pattern.substr(0, length));
  bool const is_unfinished = wrong.starts_with("end pattern") || wrong.starts_with("premature end");
  auto const is_wrong_too = [&](std::string const& other) {
    return is_unfinished ? !other.empty() : other == wrong;
  };
  double const until = seconds_worked() + seconds_to_examine;
  while (length > 0 && seconds_worked() < until &&
         is_wrong_too(message(pattern.substr(0, length - 1))))
    --length;
  return length == 0 ? 0 : length - 1;
}

text_searcher::text_searcher(text_query const& query, text::unit_view text,
                             std::atomic<bool> const& cancelled)
    : query_(query), text_(text), cancelled_(cancelled) {
  if (query.pattern() != nullptr) valid_.emplace(text);
}

void text_searcher::set_limits(std::chrono::steady_clock::time_point deadline,
                               unsigned long retries) {
  deadline_ = deadline;
  retries_ = retries;
}

search_end text_searcher::interrupted() const {
  if (cancelled_) return search_end::cancelled;
  bool const late = deadline_ && std::chrono::steady_clock::now() > *deadline_;
  return late ? search_end::gave_up : search_end::found;
}

bool text_searcher::is_wanted() const {
  return !query_.whole_words() || (!is_within_word(text_, begin_) && !is_within_word(text_, end_));
}

search_end text_searcher::next(std::size_t first, std::size_t last) {
  for (;;) {
    search_end const end = next_of_any(first, last);
    if (end != search_end::found || is_wanted()) return end;
    if (auto const broken = interrupted(); broken != search_end::found) return broken;
    if (begin_ == last) return search_end::not_found;
    first = begin_ + 1;
  }
}

search_end text_searcher::previous(std::size_t first, std::size_t last) {
  for (;;) {
    search_end const end = previous_of_any(first, last);
    if (end != search_end::found || is_wanted()) return end;
    if (auto const broken = interrupted(); broken != search_end::found) return broken;
    last = query_.pattern() ? begin_ : end_ - 1;
  }
}

search_end text_searcher::next_of_any(std::size_t first, std::size_t last) {
  return query_.pattern() ? run(first, last, false) : next_literal(first, last);
}

search_end text_searcher::previous_of_any(std::size_t first, std::size_t last) {
  if (query_.pattern() == nullptr) return previous_literal(first, last);
  return first == last ? search_end::not_found : run(first, last - 1, true);
}

search_end text_searcher::run(std::size_t first, std::size_t last, bool backward) {
  using oniguruma::direction;
  using oniguruma::search_state;
  oniguruma::sliced_search search(*valid_, *query_.pattern(), first, last,
                                  backward ? direction::backward : direction::forward, retries_);
  for (;;) {
    switch (search.step()) {
      case search_state::more:
        if (auto const end = interrupted(); end != search_end::found) return end;
        break;
      case search_state::found:
        match_ = search.match();
        begin_ = static_cast<std::size_t>(match_.begin(0));
        end_ = static_cast<std::size_t>(match_.end(0));
        return search_end::found;
      case search_state::not_found:
        return search_end::not_found;
      case search_state::gave_up:
        return search_end::gave_up;
    }
  }
}

bool text_searcher::took(char16_t const* found, char16_t const* none) {
  if (found == none) return false;
  begin_ = static_cast<std::size_t>(found - text_.data());
  end_ = begin_ + query_.literal().size();
  return true;
}

search_end text_searcher::next_literal(std::size_t first, std::size_t last) {
  std::size_t const overlap = query_.literal().size() - 1;
  for (; first + overlap < last; first += literal_slice) {
    char16_t const* const stop = text_.data() + std::min(last, first + literal_slice + overlap);
    if (took(query_.literal().find(text_.data() + first, stop), stop)) return search_end::found;
    if (auto const end = interrupted(); end != search_end::found) return end;
  }
  return search_end::not_found;
}

search_end text_searcher::previous_literal(std::size_t first, std::size_t last) {
  std::size_t const overlap = query_.literal().size() - 1;
  for (std::size_t stop = last; first + overlap < stop;) {
    std::size_t const start = std::max(first, stop - std::min(stop, literal_slice + overlap));
    char16_t const* const end = text_.data() + stop;
    if (took(query_.literal().find_last(text_.data() + start, end), end)) return search_end::found;
    if (auto const broken = interrupted(); broken != search_end::found) return broken;
    if (start == first) break;
    stop = start + overlap;
  }
  return search_end::not_found;
}

}  // namespace search
