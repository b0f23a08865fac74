// How long the command "true" takes from a view that holds a text, until its result is in. Prints
// the median of many, in milliseconds, as a line of JSON.
//
//     command_timing TEXT

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

#include "documents/WynDocument.h"
#include "headless/headless_desktop.h"
#include "platform/user_defaults.h"
#include "textview/WynTextView.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: command_timing TEXT\n", stderr);
    return 2;
  }
  headless::headless_desktop desktop;
  platform::user_defaults::set_standard(std::make_unique<platform::user_defaults>(""));
  WynTextView view;
  headless::headless_view_host host{view};
  view.setDocument(WynDocument::documentWithContentsOfFile(argv[1]));
  plist::dictionary const command{
      {"command", "true"}, {"input", "none"}, {"output", "replaceSelectedText"}};
  using clock = std::chrono::steady_clock;
  std::vector<double> took;
  for (int n = 0; n < 51; ++n) {
    auto const begun = clock::now();
    view.performSelectorWithObject("executeCommandWithOptions:", command);
    took.push_back(std::chrono::duration<double, std::milli>(clock::now() - begun).count());
  }
  std::nth_element(took.begin(), took.begin() + 25, took.end());
  std::printf("{\"ms\": %.3f, \"lines\": %zu}\n", took[25], view.view()->storage->lines());
}
