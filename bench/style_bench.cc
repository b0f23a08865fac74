// The style of many scope paths with many theme rules and preferences, looked up once and once
// more: microseconds of a processor for each, as a line of JSON.
//
//     style_bench SCOPES RULES
//
// Needs a bundle with a language "Many" that gives each word w0, w1, ... a scope of its own.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <set>
#include <string>

#include "bundles/BundleManager.h"
#include "documents/WynDocument.h"
#include "grammar/tokenize_filter.h"
#include "headless/headless_desktop.h"
#include "platform/user_defaults.h"
#include "textview/WynTextView.h"

namespace {

plist::value theme(int rules) {
  plist::array made;
  for (int n = 0; n < rules; ++n) {
    std::string const kind = std::to_string(n % 10), group = std::to_string(n % 100);
    made.push_back(plist::dictionary{
        {"name", "rule " + std::to_string(n)},
        {"scope", "source.many keyword.kind" + kind + ".group" + group + ", string.n" + kind},
        {"settings", plist::dictionary{{"foreground", "#10" + kind + kind + "20"}}}});
  }
  return made;
}

double thread_time() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) * 1e-3;
}

}  // namespace

int main(int argc, char** argv) {
  int const scopes = argc > 2 ? std::atoi(argv[1]) : 0, rules = argc > 2 ? std::atoi(argv[2]) : 0;
  if (scopes < 1 || rules < 1) {
    std::fputs("usage: style_bench SCOPES RULES\n", stderr);
    return 2;
  }
  headless::headless_desktop desktop;
  platform::user_defaults::set_standard(std::make_unique<platform::user_defaults>(""));
  WynTextView view;
  headless::headless_view_host host{view};
  view.setDocument(WynDocument::document());
  text::storage& text = *view.view()->storage;
  for (int n = 0; n < scopes; ++n) {
    std::string const line = "w" + std::to_string(n) + "\n";
    text.insert(text.end(-1), line.begin(), line.end());
  }
  for (plist::value const& each : BundleManager::sharedInstance().languages())
    if (each["name"].string_or("") == "Many")
      view.changeLanguageToAndLearn(each["uuid"].string_or(""), false);
  if (view.tokenizer() == nullptr) {
    std::fputs("style_bench: no language Many\n", stderr);
    return 1;
  }
  view.tokenizer()->wait_for(~std::size_t{0}, std::chrono::minutes(1));
  view.setCurrentStyleSheet(theme(rules));
  std::set<grammar::path_tree::id> paths;
  {
    std::lock_guard const lock(text.mutex);
    for (std::size_t line = 0; line < text.lines(); ++line)
      paths.insert(view.tokenizer()->tokens(line).at(0).path);
  }
  auto const look_up = [&] {
    double const start = thread_time();
    for (auto const path : paths) view.stylesForContext(view.tokenizer()->paths()->path(path));
    return (thread_time() - start) / static_cast<double>(paths.size());
  };
  double const first = look_up(), second = look_up();
  std::printf("{\"paths\": %zu, \"first\": %.3f, \"second\": %.4f}\n", paths.size(), first, second);
}
