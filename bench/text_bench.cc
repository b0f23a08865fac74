// The text core at its limits: a log of 100 MB, many small edits in 10 MB, and one line of 50
// million units. Each figure is the cost of one operation as a user meets it: through a view, with
// undo.

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <random>
#include <vector>

#include "text/views/view.h"

namespace {

constexpr size_t log_line = 80;

/// As a decoder makes it: written once into the memory that the storage then adopts.
text::text_block log_text(size_t units) {
  text::text_block_builder builder(units);
  std::fill_n(builder.data(), units, u'x');
  for (size_t i = log_line - 1; i < units; i += log_line) builder.data()[i] = u'\n';
  return builder.finish(units);
}

double peak_megabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024;
}

void load_by_adoption(benchmark::State& state) {
  auto const units = static_cast<size_t>(state.range(0));
  text::text_block const block = log_text(units);
  static double const before = peak_megabytes();  // the first run's: the peak never sinks
  for (auto _ : state) {
    text::storage storage;
    storage.insert(storage.end(-1), block);
    benchmark::DoNotOptimize(storage.lines());
  }
  state.counters["MB_beyond_text"] = peak_megabytes() - before;
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * units * sizeof(char16_t)));
}
BENCHMARK(load_by_adoption)->Arg(100'000'000)->Unit(benchmark::kMillisecond);

void widest_line(benchmark::State& state) {
  text::storage storage;
  storage.insert(storage.end(-1), log_text(100'000'000));
  text::view view(storage);
  for (auto _ : state) {
    view.max_columns = text::view::unknown_columns;
    benchmark::DoNotOptimize(view.columns());
  }
}
BENCHMARK(widest_line)->Unit(benchmark::kMillisecond);

void small_inserts_and_undo(benchmark::State& state) {
  constexpr int edits = 10'000;
  for (auto _ : state) {
    state.PauseTiming();
    text::storage storage;
    storage.insert(storage.end(-1), log_text(10'000'000));
    text::view view(storage);
    view.columns();
    std::mt19937 random(1);
    state.ResumeTiming();
    for (int i = 0; i < edits; ++i) {
      size_t const line = random() % storage.lines();
      size_t const column = random() % (storage.size(line) + 1);
      text::undo_group const group(storage.undo_manager);
      view.selection.set_caret({&view, text::iterator(line, column, &storage)});
      char16_t const unit = u'y';
      view.insert(&unit, &unit + 1);
    }
    while (view.can_undo()) storage.undo_manager.undo();
    state.PauseTiming();
    if (storage.current_memento != 1) state.SkipWithError("undo didn't come back");
    state.ResumeTiming();
  }
  state.counters["us_each"] = benchmark::Counter(
      edits, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(small_inserts_and_undo)->Unit(benchmark::kMillisecond);

/// One line of 50 million units, with a tab every `range(0)` units (0: none).
class long_line : public benchmark::Fixture {
 public:
  void SetUp(benchmark::State const& state) override {
    constexpr size_t units = 50'000'000;
    auto const distance = static_cast<size_t>(state.range(0));
    text::text_block_builder builder(units);
    std::fill_n(builder.data(), units, u'x');
    if (distance != 0)
      for (size_t i = 0; i < units; i += distance) builder.data()[i] = u'\t';
    storage = std::make_unique<text::storage>();
    storage->insert(storage->end(-1), builder.finish(units));
    storage->forget_history();
    view = std::make_unique<text::view>(*storage);
    random.seed(1);
  }
  void TearDown(benchmark::State const&) override {
    view.reset();
    storage.reset();
  }

 protected:
  text::view_iterator anywhere() {
    return {view.get(), text::iterator(0, random() % storage->size(0), storage.get())};
  }

  std::unique_ptr<text::storage> storage;
  std::unique_ptr<text::view> view;
  std::mt19937 random;
};

BENCHMARK_DEFINE_F(long_line, first_measure)(benchmark::State& state) {
  for (auto _ : state) {
    view->long_lines().clear();
    benchmark::DoNotOptimize(column_before_wrap(view->end()));
  }
}
BENCHMARK_REGISTER_F(long_line, first_measure)->Arg(0)->Arg(8)->Unit(benchmark::kMillisecond);

/// A vertical move: a column asked for, and a position found for it.
BENCHMARK_DEFINE_F(long_line, move)(benchmark::State& state) {
  column_before_wrap(view->end());
  for (auto _ : state) {
    size_t const column = view->column_in_view(anywhere());
    benchmark::DoNotOptimize(
        iter_from_view_pos(view.get(), {0, column}, text::freehanded_t::automatic));
  }
}
BENCHMARK_REGISTER_F(long_line, move)->Arg(0)->Arg(8)->Unit(benchmark::kMicrosecond);

BENCHMARK_DEFINE_F(long_line, first_insert)(benchmark::State& state) {
  for (auto _ : state) {
    char16_t const unit = u'y';
    view->selection.set_caret(anywhere());
    view->insert(&unit, &unit + 1);
  }
}
BENCHMARK_REGISTER_F(long_line, first_insert)
    ->Arg(0)
    ->Iterations(1)
    ->Repetitions(5)
    ->Unit(benchmark::kMillisecond);

BENCHMARK_DEFINE_F(long_line, insert_and_undo)(benchmark::State& state) {
  view->columns();
  for (auto _ : state) {
    char16_t const unit = u'y';
    view->selection.set_caret(anywhere());
    view->insert(&unit, &unit + 1);
    benchmark::DoNotOptimize(view->column_in_view(view->selection.current_mark));
    storage->undo();
  }
}
BENCHMARK_REGISTER_F(long_line, insert_and_undo)->Arg(0)->Arg(8)->Unit(benchmark::kMillisecond);

BENCHMARK_DEFINE_F(long_line, split_and_join)(benchmark::State& state) {
  for (auto _ : state) {
    char16_t const unit = u'\n';
    view->selection.set_caret(anywhere());
    view->insert(&unit, &unit + 1);
    storage->undo();
  }
}
BENCHMARK_REGISTER_F(long_line, split_and_join)->Arg(0)->Unit(benchmark::kMillisecond);

/// Words, with or without line ends between.
text::text_block words(size_t units, bool lines) {
  text::text_block_builder builder(units);
  std::mt19937 random(1);
  for (size_t i = 0; i < units; ++i) {
    bool const at_end = lines && i % 120 == 119;
    builder.data()[i] = at_end ? u'\n' : random() % 6 == 0 ? u' ' : u'x';
  }
  return builder.finish(units);
}

/// Turning soft wrap on, with 80 columns.
void wrap_lines(benchmark::State& state) {
  text::storage storage;
  storage.insert(storage.end(-1), words(static_cast<size_t>(state.range(0)), state.range(1) != 0));
  text::view view(storage);
  view.set_screen_width(80);
  for (auto _ : state) {
    view.set_soft_wrap(true);
    benchmark::DoNotOptimize(view.lines());
    view.set_soft_wrap(false);
  }
}
BENCHMARK(wrap_lines)
    ->Args({100'000'000, true})
    ->Args({50'000'000, false})
    ->Unit(benchmark::kMillisecond);

/// One unit in the middle of the wrapped text.
void type_in_wrapped_lines(benchmark::State& state) {
  text::storage storage;
  storage.insert(storage.end(-1), words(static_cast<size_t>(state.range(0)), state.range(1) != 0));
  text::view view(storage);
  view.set_screen_width(80);
  view.set_soft_wrap(true);
  size_t const line = storage.lines() / 2;
  char16_t const unit = u'y';
  for (auto _ : state) {
    text::iterator const at(line, storage.size(line) / 2, &storage);
    storage.insert(at, &unit, &unit + 1);
    storage.erase(at);
  }
}
BENCHMARK(type_in_wrapped_lines)
    ->Args({100'000'000, true})
    ->Args({50'000'000, false})
    ->Unit(benchmark::kMicrosecond);

}  // namespace
