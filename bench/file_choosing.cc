// What Go to File costs, as a line of JSON in milliseconds of a processor.
//
//     file_choosing FOLDER LETTERS
//
// "collect": until all files of the folder can be chosen. Then for each of the letters, typed one
// after the other, the time until the rows in sight are known: the longest of them is "letter", all
// of them "letters". Other load on the machine counts for little, as the least of five is taken.

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "headless/headless_desktop.h"
#include "platform/utf.h"
#include "projects/file_chooser.h"
#include "projects/file_collector.h"

namespace {

constexpr int repetitions = 5;
constexpr std::size_t rows_in_sight = 12;

double milliseconds(clockid_t clock, std::function<void()> const& work) {
  timespec begin{}, end{};
  clock_gettime(clock, &begin);
  work();
  clock_gettime(clock, &end);
  return static_cast<double>(end.tv_sec - begin.tv_sec) * 1e3 +
         static_cast<double>(end.tv_nsec - begin.tv_nsec) * 1e-6;
}

void collect(std::string const& folder, projects::file_chooser& chooser) {
  projects::file_collector::request request;
  request.roots = {{folder, true, projects::filter_patterns::standard()}};
  request.wanted = projects::offered_extensions::standard();
  projects::file_collector files(std::move(request));
  bool is_done = false;
  while (!is_done) {
    is_done = files.is_done();
    for (auto const& batch : files.take()) chooser.add(batch);
    if (!is_done) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

void look_at_rows(projects::file_chooser const& chooser) {
  for (std::size_t row = 0; row < std::min(rows_in_sight, chooser.size()); ++row) {
    if (chooser.path(row).empty()) std::abort();
    static_cast<void>(chooser.components_shown(row));
    static_cast<void>(chooser.mask(row));
  }
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) return 2;
  headless::headless_desktop const desktop;
  std::string const folder = arguments[1];
  std::u16string const letters = unicode::to_utf16(arguments[2]);
  double collecting = 1e9;
  projects::file_chooser chooser;
  for (int n = 0; n < repetitions; ++n) {
    chooser.replace({});
    collecting = std::min(
        collecting, milliseconds(CLOCK_PROCESS_CPUTIME_ID, [&] { collect(folder, chooser); }));
  }
  double longest = 0, all = 0;
  for (std::size_t typed = 1; typed <= letters.size(); ++typed) {
    double least = 1e9;
    for (int n = 0; n < repetitions; ++n) {
      chooser.search(projects::typed_file_name(letters.substr(0, typed - 1)));
      least = std::min(least, milliseconds(CLOCK_THREAD_CPUTIME_ID, [&] {
                         chooser.search(projects::typed_file_name(letters.substr(0, typed)));
                         look_at_rows(chooser);
                       }));
    }
    longest = std::max(longest, least);
    all += least;
  }
  std::printf(
      "{\"files\": %zu, \"found\": %zu, \"collect\": %.3f, \"letter\": %.3f, "
      "\"letters\": %.3f}\n",
      chooser.total(), chooser.size(), collecting, longest, all);
}
