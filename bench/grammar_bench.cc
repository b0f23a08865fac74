// What the tokenizer's thread does of 5 MB of C, in the editor's own filter.

#include <benchmark/benchmark.h>

#include <chrono>
#include <string>

#include "bundles/BundleManager.h"
#include "documents/WynDocument.h"
#include "grammar/tokenize_filter.h"
#include "headless/headless_desktop.h"
#include "platform/user_defaults.h"
#include "textview/WynTextView.h"

namespace {

std::u16string source_code() {
  std::u16string text;
  for (int n = 0; text.size() < 5'000'000; ++n) {
    text += u"static int function(char const* name, int count) {\n";
    text += u"\tif (name == NULL) return 0;  // nothing\n\treturn 2 * count + 1;\n}\n\n";
  }
  return text;
}

struct parsed_text {
  parsed_text() {
    platform::user_defaults::set_standard(std::make_unique<platform::user_defaults>(""));
    view.setDocument(WynDocument::document());
    std::u16string const text = source_code();
    storage().insert(storage().end(-1), text.begin(), text.end());
    for (plist::value const& each : BundleManager::sharedInstance().languages())
      if (each["name"].string_or("") == "C")
        view.changeLanguageToAndLearn(each["uuid"].string_or(""), false);
    wait();
  }

  text::storage& storage() { return *view.view()->storage; }
  void wait() { view.tokenizer()->wait_for(~std::size_t{0}, std::chrono::minutes(5)); }

  headless::headless_desktop desktop;
  WynTextView view;
  headless::headless_view_host host{view};
};

// Opens a comment over everything, or closes it again.
void comment_in_the_first_line(benchmark::State& state) {
  bool const closes = state.range(0) != 0;
  parsed_text parsed;
  text::storage& text = parsed.storage();
  std::u16string_view const begin = u"/*";
  auto const set = [&](bool open) {
    if (open)
      text.insert(text.begin_of_line(0), begin.begin(), begin.end());
    else
      text.erase(text.begin_of_line(0), text.begin_of_line(0) + 2);
    parsed.wait();
  };
  for (auto _ : state) {
    state.PauseTiming();
    if (closes) set(true);
    state.ResumeTiming();
    set(!closes);
    state.PauseTiming();
    if (!closes) set(false);
    state.ResumeTiming();
  }
}
BENCHMARK(comment_in_the_first_line)
    ->ArgName("closes")
    ->Arg(0)
    ->Arg(1)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
