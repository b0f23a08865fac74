#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "headless/headless_desktop.h"
#include "platform/user_defaults.h"
#include "platform/utf.h"
#include "search/WynFindManager.h"
#include "search/find_highlights.h"
#include "search/replace_all.h"
#include "text/storage.h"

// hostile_patterns [LENGTH]...: how long a window is kept from handling events by finding with
// patterns that are made to be slow, in one line of each length given (10 to 10,000,000 units
// otherwise). Each pattern is sought as by the panel: its matches in sight, then Find Next and
// Count, both cancelled after a fifth of a second; in a process of its own, so that what runs on
// after that cannot disturb the next one. Prints each pattern that kept the window waiting for more
// than 50 ms, and a line a length: the waits by the clock on the wall; the same without the time in
// the queue for a processor, which other load adds; and the work of the window's own thread. At the
// end the searches that still ran 50 ms after they were cancelled, in an attempt to match.

namespace {

using namespace std::chrono;

/// Repetitions within repetitions, overlapping alternatives, scans that are quadratic, references
/// back, recursion and look-around: each core with each quantifier in each frame.
std::vector<std::string> patterns() {
  char const* const cores[] = {"a",       "(a|a)",    "(a|ab|b)", "(?:a+)",         "(a*)",
                               "(?>a|b)", "(?=a+)a",  "(?<=a)a",  "(?<n>a\\g<n>?)", "(a)\\1",
                               "[ab]",    "(?:\\w|a)"};
  char const* const repeats[] = {"+", "*", "+?", "*+", "{1,40}"};
  char const* const frames[] = {"%c",          "(?:%)+c", "^(?:%)*[cd]$", "%%%[cd]", "%(?=\\d)",
                                "(?m:.*%.*c)", "(?i:%)#", "(?<!c)%\\b!",  "(?!%c)%d"};
  std::vector<std::string> result;
  for (std::string const core : cores) {
    for (char const* repeat : repeats) {
      for (std::string const frame : frames) {
        std::string pattern;
        for (char c : frame) pattern += c == '%' ? core + repeat : std::string(1, c);
        result.push_back(pattern);
      }
    }
  }
  return result;
}

/// What this thread has waited for a processor that other programs had, as Linux tells it.
nanoseconds queued() {
  unsigned long long ran = 0, waited = 0;
  if (std::FILE* const file = std::fopen("/proc/thread-self/schedstat", "r")) {
    if (std::fscanf(file, "%llu %llu", &ran, &waited) != 2) waited = 0;
    std::fclose(file);
  }
  return nanoseconds(waited);
}

/// Counts the time between two looks at events, but for what other load adds to it.
class stopwatch : public headless::headless_desktop {
 public:
  class meter : public headless::scripted_busy {
   public:
    bool is_wanted() const override { return true; }
    bool handle_events(double seconds) override {
      away_ended();
      std::this_thread::sleep_for(duration<double>(seconds));
      back_ = steady_clock::now();
      worked_ = own_time();
      queued_ = queued();
      return back_ - begun_ > milliseconds(200);
    }
    void begin() {
      begun_ = back_ = steady_clock::now();
      worked_ = own_time();
      queued_ = queued();
    }
    void away_ended() {
      nanoseconds const wait = steady_clock::now() - back_;
      longest.add({wait, wait - (queued() - queued_), own_time() - worked_});
    }

    /// The longest of each kind.
    struct waits {
      nanoseconds wall{0}, unqueued{0}, work{0};
      void add(waits const& other) {
        wall = std::max(wall, other.wall);
        unqueued = std::max(unqueued, other.unqueued);
        work = std::max(work, other.work);
      }
    };
    waits longest;

   private:
    static nanoseconds own_time() {
      timespec now{};
      clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
      return seconds(now.tv_sec) + nanoseconds(now.tv_nsec);
    }

    steady_clock::time_point begun_, back_;
    nanoseconds worked_{0}, queued_{0};
  };
  meter& busy() override { return meter_; }

 private:
  meter meter_;
};

struct tally {
  int searches = 0, gave_up = 0, cancelled = 0;
  void add(search::search_end end) {
    ++searches;
    gave_up += end == search::search_end::gave_up;
    cancelled += end == search::search_end::cancelled;
  }
};

/// What one pattern came to, as it is sent from its process.
struct outcome {
  bool is_pattern = false;
  stopwatch::meter::waits waits{};
  tally ends;
  int running_on = 0;
};

int other_threads() {
  auto const tasks = std::filesystem::directory_iterator("/proc/self/task");
  return static_cast<int>(std::distance(begin(tasks), end(tasks))) - 1;
}

outcome measure(stopwatch& desktop, text::view& view, std::string const& pattern) {
  outcome result;
  auto& meter = desktop.busy();
  auto const measured = [&](auto const& act) {
    meter.begin();
    act();
    meter.away_ended();
  };
  try {
    auto query = std::make_shared<search::text_query const>(
        unicode::to_utf16(pattern), search::query_options{.regular_expression = true});
    result.is_pattern = true;
    search::find_highlights highlights;
    measured([&] { highlights.in_window(view, std::move(query), {0, 1, 0, 200}); });
  } catch (std::invalid_argument const&) {
    return result;
  }
  measured([&] {
    WynFindManager::sharedInstance().setOptions(
        {{"findString", pattern}, {"regularExpression", true}});
    result.ends.add(search::find_in_view(view, false).end);
  });
  measured([&] {
    result.ends.add(search::all_matches(view, {pattern, "", true}, true).answer().end);
  });
  result.waits = meter.longest;
  std::this_thread::sleep_for(milliseconds(other_threads() > 0 ? 50 : 0));
  result.running_on = other_threads();
  return result;
}

outcome measure_apart(stopwatch& desktop, text::view& view, std::string const& pattern) {
  int ends[2];
  outcome result;
  if (pipe(ends) != 0) std::exit(1);
  pid_t const child = fork();
  if (child < 0) std::exit(1);
  if (child == 0) {
    result = measure(desktop, view, pattern);
    _exit(write(ends[1], &result, sizeof result) == sizeof result ? 0 : 1);
  }
  close(ends[1]);
  bool const came = read(ends[0], &result, sizeof result) == sizeof result;
  close(ends[0]);
  waitpid(child, nullptr, 0);
  if (!came) std::printf("  crashed: %s\n", pattern.c_str());
  return result;
}

long long in_ms(nanoseconds time) {
  return duration_cast<milliseconds>(time).count();
}

}  // namespace

int main(int argc, char* argv[]) {
  std::vector<std::size_t> lengths = {10, 100, 1000, 10'000, 100'000, 1'000'000, 10'000'000};
  if (argc > 1) lengths.clear();
  for (int i = 1; i < argc; ++i) lengths.push_back(std::strtoul(argv[i], nullptr, 10));
  stopwatch desktop;
  platform::user_defaults::set_standard(std::make_unique<platform::user_defaults>(""));
  for (std::size_t const length : lengths) {
    std::u16string units;
    while (units.size() < length) units += units.size() % 50 == 49 ? u'b' : u'a';
    text::storage storage;
    storage.insert(storage.end(-1), text::text_block::copy(units));
    text::view view(storage);
    int count = 0, long_waits = 0, long_unqueued = 0, running_on = 0, gave_up = 0, cancelled = 0;
    stopwatch::meter::waits longest;
    for (auto const& pattern : patterns()) {
      outcome const one = measure_apart(desktop, view, pattern);
      count += one.is_pattern;
      gave_up += one.ends.gave_up;
      cancelled += one.ends.cancelled;
      running_on += one.running_on;
      longest.add(one.waits);
      long_unqueued += one.waits.unqueued > milliseconds(50);
      if (one.waits.wall <= milliseconds(50)) continue;
      ++long_waits;
      std::printf("  %5lld ms, %lld without the queue  %s\n", in_ms(one.waits.wall),
                  in_ms(one.waits.unqueued), pattern.c_str());
    }
    std::printf(
        "%zu units: %d patterns, longest wait %lld ms, %d beyond 50 ms; without the queue %lld ms, "
        "%d; longest work %lld ms; of %d searches %d gave up, %d were cancelled, %d ran on\n",
        length, count, in_ms(longest.wall), long_waits, in_ms(longest.unqueued), long_unqueued,
        in_ms(longest.work), 2 * count, gave_up, cancelled, running_on);
    std::fflush(stdout);
  }
}
