#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "headless/headless_desktop.h"
#include "platform/user_defaults.h"
#include "platform/utf.h"
#include "text/storage.h"
#include "textview/WynFindManager.h"
#include "textview/find_highlights.h"
#include "textview/replace_all.h"

// hostile_patterns [LENGTH]...: how long a window is kept from handling events by finding with
// patterns that are made to be slow, in one line of each length given (10 to 10,000,000 units
// otherwise). Each pattern is sought as by the panel: its matches in sight, then Find Next and
// Count, both cancelled after a fifth of a second. Prints a line a length, with how much of the
// wait was work of the window's own thread, and each pattern that kept it waiting for more than
// 50 ms.

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
      longest = std::max(longest, steady_clock::now() - back_ - (queued() - queued_));
      longest_work = std::max(longest_work, own_time() - worked_);
    }

    steady_clock::duration longest{0};
    nanoseconds longest_work{0};

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
  void add(search_end end) {
    ++searches;
    gave_up += end == search_end::gave_up;
    cancelled += end == search_end::cancelled;
  }
};

steady_clock::duration longest_wait(stopwatch& desktop, text::view& view,
                                    std::string const& pattern, tally& ends) {
  auto& meter = desktop.busy();
  meter.longest = {};
  auto const measured = [&](auto const& act) {
    meter.begin();
    act();
    meter.away_ended();
  };
  measured([&] {
    auto query = std::make_shared<text_query const>(unicode::to_utf16(pattern), true, false);
    find_highlights().in_window(view, std::move(query), {0, 1, 0, 200});
  });
  measured([&] {
    WynFindManager::sharedInstance().setOptions(
        {{"findString", pattern}, {"regularExpression", true}});
    ends.add(find_in_view(view, false).end);
  });
  measured([&] { ends.add(count_all(view, {pattern, "", true}).end); });
  view.selection.set_caret(view.begin(0));
  return meter.longest;
}

long long in_ms(nanoseconds time) {
  return duration_cast<milliseconds>(time).count();
}

}  // namespace

int main(int argc, char* argv[]) {
  std::vector<std::size_t> lengths = {10, 1000, 100'000, 10'000'000};
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
    int count = 0, long_waits = 0;
    steady_clock::duration longest{0};
    desktop.busy().longest_work = {};
    tally ends;
    for (auto const& pattern : patterns()) try {
        auto const wait = longest_wait(desktop, view, pattern, ends);
        ++count;
        longest = std::max(longest, wait);
        if (wait <= milliseconds(50)) continue;
        ++long_waits;
        std::printf("  %5lld ms  %s\n", in_ms(wait), pattern.c_str());
      } catch (std::invalid_argument const&) {
      }
    std::printf(
        "%zu units: %d patterns, longest wait %lld ms, %d beyond 50 ms, longest work %lld "
        "ms; of %d searches %d gave up, %d were cancelled\n",
        length, count, in_ms(longest), long_waits, in_ms(desktop.busy().longest_work),
        ends.searches, ends.gave_up, ends.cancelled);
    std::fflush(stdout);
  }
}
