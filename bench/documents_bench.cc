#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "documents/WynDocument.h"
#include "headless/headless_desktop.h"
#include "platform/user_defaults.h"

// Loading and saving 100 MB in $TMPDIR or /tmp. To see saves beside cp under the same load:
//
//     documents_bench --benchmark_filter='save|cp' --benchmark_enable_random_interleaving=true
//         --benchmark_repetitions=9 --benchmark_report_aggregates_only=true

namespace {

/// A file of some 100 MB of program text, and a folder for settings and safety copies.
class large_file {
 public:
  large_file() : folder_(std::filesystem::temp_directory_path() / "quirnote-documents-bench") {
    std::filesystem::create_directories(folder_);
    setenv("XDG_STATE_HOME", (folder_ / "state").c_str(), 1);
    std::ofstream file(path(), std::ios::binary);
    for (int i = 0; i < 2'000'000; ++i)
      file << "    some_call(argument_" << i << ", \"text with \xC3\xA9\");\n";
  }
  ~large_file() { std::filesystem::remove_all(folder_); }

  std::string path() const { return folder_ / "file"; }
  std::int64_t size() const {
    return static_cast<std::int64_t>(std::filesystem::file_size(path()));
  }

 private:
  std::filesystem::path folder_;
};

void load(benchmark::State& state) {
  headless::headless_desktop desktop;
  large_file const file;
  for (auto _ : state) benchmark::DoNotOptimize(WynDocument::initWithContentsOfFile(file.path()));
  state.SetBytesProcessed(state.iterations() * file.size());
}
BENCHMARK(load)->Unit(benchmark::kMillisecond)->UseRealTime();

void save(benchmark::State& state, bool atomically, char const* state_folder) {
  headless::headless_desktop desktop;
  large_file const file;
  if (state_folder != nullptr) setenv("XDG_STATE_HOME", state_folder, 1);
  platform::user_defaults::standard().set_volatile("WynSaveAtomically", atomically);
  auto const document = WynDocument::initWithContentsOfFile(file.path());
  for (auto _ : state)
    if (!document->writeToFile(file.path())) state.SkipWithError("not saved");
  state.SetBytesProcessed(state.iterations() * file.size());
}
constexpr char const* in_memory = "/dev/shm/quirnote-documents-bench";
BENCHMARK_CAPTURE(save, in_place, false, nullptr)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(save, in_place_safety_copy_in_memory, false, in_memory)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(save, as_a_new_file, true, nullptr)->Unit(benchmark::kMillisecond)->UseRealTime();

void cp_and_sync(benchmark::State& state) {
  large_file const file;
  std::string const copy = file.path() + ".copy";
  std::string const command = "cp " + file.path() + " " + copy + " && sync " + copy;
  for (auto _ : state)
    if (std::system(command.c_str()) != 0) state.SkipWithError("not copied");
  state.SetBytesProcessed(state.iterations() * file.size());
}
BENCHMARK(cp_and_sync)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
