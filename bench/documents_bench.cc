#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "documents/WynDocument.h"
#include "headless/headless_desktop.h"

namespace {

/// A file of some 100 MB of program text, in memory where there is such a file system.
class large_file {
 public:
  large_file() {
    std::filesystem::path const shared = "/dev/shm";
    path_ = (std::filesystem::exists(shared) ? shared : std::filesystem::temp_directory_path()) /
            "quirnote-documents-bench";
    std::ofstream file(path_, std::ios::binary);
    for (int i = 0; i < 2'000'000; ++i)
      file << "    some_call(argument_" << i << ", \"text with \xC3\xA9\");\n";
  }
  ~large_file() { std::filesystem::remove(path_); }

  std::string path() const { return path_.string(); }
  std::int64_t size() const { return static_cast<std::int64_t>(std::filesystem::file_size(path_)); }

 private:
  std::filesystem::path path_;
};

void load(benchmark::State& state) {
  headless::headless_desktop desktop;
  large_file const file;
  for (auto _ : state) benchmark::DoNotOptimize(WynDocument::initWithContentsOfFile(file.path()));
  state.SetBytesProcessed(state.iterations() * file.size());
}
BENCHMARK(load)->Unit(benchmark::kMillisecond);

void save(benchmark::State& state) {
  headless::headless_desktop desktop;
  large_file const file;
  auto const document = WynDocument::initWithContentsOfFile(file.path());
  for (auto _ : state) document->writeToFile(file.path());
  state.SetBytesProcessed(state.iterations() * file.size());
}
BENCHMARK(save)->Unit(benchmark::kMillisecond);

}  // namespace
