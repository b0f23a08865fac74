// Runs a fuzz target over the files of a corpus and over random mutations of them:
//   fuzz_NAME [FOLDER | FILE]...
// The mutations depend on the seed and the corpus only. QUIRNOTE_FUZZ_SECONDS (default 3) bounds
// their time, QUIRNOTE_FUZZ_RUNS (default 20000) their number, QUIRNOTE_FUZZ_SEED (default 1)
// changes them. An input that ends the process, or takes longer than QUIRNOTE_FUZZ_HANG (default
// 20) seconds, is left in a file under the working folder, to be passed as FILE; its name is
// printed.
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

// The sanitizers call this before they abort.
extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());

namespace {

using bytes = std::vector<std::uint8_t>;
using random_engine = std::mt19937_64;

constexpr std::size_t max_size = 1 << 16;

bytes const* current_input = nullptr;
char input_name[256];

// Called in a dying process: system calls only.
void save_current_input() {
  if (current_input == nullptr) return;
  int const file = open(input_name, O_WRONLY | O_CREAT | O_TRUNC, 0644);
  if (file < 0) return;
  char const text[] = "\nThe input is left in ";
  bool const saved =
      write(file, current_input->data(), current_input->size()) >= 0 && close(file) == 0 &&
      write(STDERR_FILENO, text, sizeof text - 1) > 0 &&
      write(STDERR_FILENO, input_name, std::char_traits<char>::length(input_name)) > 0 &&
      write(STDERR_FILENO, "\n", 1) > 0;
  current_input = saved ? nullptr : current_input;
}

void save_and_raise(int signal_number) {
  if (signal_number == SIGALRM) {
    char const text[] = "\nThis input takes too long.";
    if (write(STDERR_FILENO, text, sizeof text - 1) < 0) _exit(1);
  }
  save_current_input();
  signal(signal_number, SIG_DFL);
  raise(signal_number);
}

void catch_signals(std::initializer_list<int> numbers) {
  struct sigaction action = {};
  action.sa_handler = save_and_raise;
  action.sa_flags = SA_ONSTACK;
  for (int const number : numbers) sigaction(number, &action, nullptr);
}

void catch_deadly_signals() {
  catch_signals({SIGABRT, SIGALRM});
  if (__sanitizer_set_death_callback != nullptr) {
    // The sanitizer's own handlers of the others tell more.
    __sanitizer_set_death_callback(save_current_input);
    return;
  }
  static char stack[1 << 16];
  stack_t const own_stack = {stack, 0, sizeof stack};
  sigaltstack(&own_stack, nullptr);
  catch_signals({SIGSEGV, SIGBUS, SIGFPE, SIGILL});
}

long number_from_environment(char const* name, long otherwise) {
  char const* const value = std::getenv(name);
  return value != nullptr ? std::strtol(value, nullptr, 10) : otherwise;
}

void run(bytes const& input, unsigned hang_seconds) {
  current_input = &input;
  alarm(hang_seconds);
  // A copy of exactly this size, so that a read past the end is seen by the sanitizer.
  bytes const exact(input.begin(), input.end());
  LLVMFuzzerTestOneInput(exact.data(), exact.size());
  alarm(0);
  current_input = nullptr;
}

bytes read_file(std::filesystem::path const& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    std::printf("can't read %s\n", path.c_str());
    std::exit(2);
  }
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<std::filesystem::path> corpus_files(std::vector<std::string> const& arguments) {
  std::vector<std::filesystem::path> files;
  for (std::filesystem::path const path : arguments) {
    if (!std::filesystem::is_directory(path)) {
      files.push_back(path);
      continue;
    }
    for (auto const& entry : std::filesystem::recursive_directory_iterator(path))
      if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::size_t below(random_engine& engine, std::size_t bound) {
  return static_cast<std::size_t>(engine() % bound);
}

// A piece of an input: up to 64 bytes from a random place on.
bytes piece_of(bytes const& input, random_engine& engine) {
  if (input.empty()) return {};
  std::size_t const first = below(engine, input.size());
  std::size_t const length = std::min(input.size() - first, 1 + below(engine, 64));
  auto const begin = input.begin() + static_cast<std::ptrdiff_t>(first);
  return {begin, begin + static_cast<std::ptrdiff_t>(length)};
}

void insert_at_random(bytes& input, bytes const& piece, random_engine& engine) {
  auto const place = static_cast<std::ptrdiff_t>(below(engine, input.size() + 1));
  input.insert(input.begin() + place, piece.begin(), piece.end());
}

void mutate_once(bytes& input, std::vector<bytes> const& corpus, random_engine& engine) {
  static constexpr std::uint8_t telling[] = {0,   '\n', '\r', '"',  '\\', '(',  ')',  '{',
                                             '}', '<',  '>',  0x7f, 0x80, 0xc0, 0xed, 0xff};
  enum { flip, set, put, erase, cut, repeat, splice, count };
  std::size_t const what = input.empty() ? std::size_t{put} : below(engine, count);
  std::size_t const place = input.empty() ? 0 : below(engine, input.size());
  switch (what) {
    case flip:
      input[place] = static_cast<std::uint8_t>(input[place] ^ (1U << below(engine, 8)));
      break;
    case set:
      input[place] = telling[below(engine, std::size(telling))];
      break;
    case put:
      insert_at_random(input, {telling[below(engine, std::size(telling))]}, engine);
      break;
    case erase: {
      auto const begin = input.begin() + static_cast<std::ptrdiff_t>(place);
      auto const length = std::min(input.size() - place, 1 + below(engine, 32));
      input.erase(begin, begin + static_cast<std::ptrdiff_t>(length));
      break;
    }
    case cut:
      input.resize(place);
      break;
    case repeat: {
      bytes const piece = piece_of(input, engine);
      for (std::size_t n = 1 + below(engine, 100); n > 0; --n)
        insert_at_random(input, piece, engine);
      break;
    }
    default:
      insert_at_random(input, piece_of(corpus[below(engine, corpus.size())], engine), engine);
  }
  if (input.size() > max_size) input.resize(max_size);
}

bytes mutation(std::vector<bytes> const& corpus, random_engine& engine) {
  bytes input = corpus[below(engine, corpus.size())];
  for (std::size_t n = 1 + below(engine, 8); n > 0; --n) mutate_once(input, corpus, engine);
  return input;
}

}  // namespace

int main(int argc, char** argv) {
  std::string const program = std::filesystem::path(argv[0]).filename();
  std::snprintf(input_name, sizeof input_name, "%s.%d.input", program.c_str(), getpid());
  catch_deadly_signals();
  // What targets report of their input; the file descriptor is left to the sanitizers.
  stderr = std::fopen("/dev/null", "w");

  auto const hang = static_cast<unsigned>(number_from_environment("QUIRNOTE_FUZZ_HANG", 20));
  std::vector<bytes> corpus;
  for (auto const& path : corpus_files({argv + 1, argv + argc})) {
    corpus.push_back(read_file(path));
    run(corpus.back(), hang);
  }
  std::size_t const seeds = corpus.size();
  if (seeds == 0) corpus.emplace_back();

  long const seed = number_from_environment("QUIRNOTE_FUZZ_SEED", 1);
  long const runs = number_from_environment("QUIRNOTE_FUZZ_RUNS", 20000);
  auto const end = std::chrono::steady_clock::now() +
                   std::chrono::seconds(number_from_environment("QUIRNOTE_FUZZ_SECONDS", 3));
  random_engine engine(static_cast<std::uint64_t>(seed));
  long done = 0;
  for (; done < runs && std::chrono::steady_clock::now() < end; ++done)
    run(mutation(corpus, engine), hang);
  std::printf("%s: %zu inputs and %ld mutations, seed %ld\n", program.c_str(), seeds, done, seed);
}
