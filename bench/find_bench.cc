// Searching text of 100 MB, beside the least that each way of searching can cost: a search in
// memory, and Oniguruma alone. The hit is in the last line.

#include <benchmark/benchmark.h>
#include <oniguruma.h>

#include <cstring>
#include <random>
#include <string>

#include "headless/headless_desktop.h"
#include "regex/onig_library.h"
#include "search/match_survey.h"
#include "search/text_query.h"
#include "text/storage.h"
#include "text/views/view.h"

namespace {

constexpr std::u16string_view words[] = {u"lorem", u"ipsum", u"dolor", u"sit", u"amet", u"foo42"};

// Lines of some 50 units; `hits` says of how many lines one has a needle.
text::storage& storage_with(std::size_t units, std::size_t hits) {
  static std::map<std::pair<std::size_t, std::size_t>, std::unique_ptr<text::storage>> made;
  auto& storage = made[{units, hits}];
  if (storage) return *storage;
  storage = std::make_unique<text::storage>();
  std::mt19937 random(1);
  std::u16string text;
  for (std::size_t line = 0; text.size() < units; ++line) {
    for (int n = 0; n < 8; ++n) text.append(words[random() % std::size(words)]).push_back(u' ');
    if (hits != 0 && line % hits == 0) text += u"needle12";
    text.push_back(u'\n');
  }
  text += u"the Needle42x in the last line\n";
  storage->insert(storage->end(-1), text::text_block::copy(text));
  storage->forget_history();
  return *storage;
}

text::storage& large() {
  return storage_with(100'000'000, 0);
}

void in_memory(benchmark::State& state) {
  auto const text = large().slice(large().begin_of_line(0), large().end(-1));
  std::u16string const needle = u"Needle42x";
  for (auto _ : state)
    benchmark::DoNotOptimize(
        memmem(text.units.data(), 2 * text.units.size(), needle.data(), 2 * needle.size()));
}
BENCHMARK(in_memory)->Unit(benchmark::kMillisecond);

// All of find next but the scrolling: the slice, which looks at each line, is part of it.
void find(benchmark::State& state, std::u16string const& sought, bool pattern, bool ignore_case) {
  std::atomic<bool> const never = false;
  for (auto _ : state) {
    search::text_query const query(sought, {pattern, ignore_case});
    auto const text = large().slice(large().begin_of_line(0), large().end(-1));
    search::text_searcher searcher(query, text.units, never);
    if (searcher.next(0, text.units.size()) != search::search_end::found)
      state.SkipWithError("not found");
  }
}
BENCHMARK_CAPTURE(find, literal, u"Needle42x", false, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(find, ignoring_case, u"nEEDLE42x", false, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(find, rare_pattern, u"N[a-z]+[0-9]+x", true, false)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(find, common_pattern, u"[a-zA-Z]+[0-9]+x", true, false)
    ->Unit(benchmark::kMillisecond);

void oniguruma_alone(benchmark::State& state, std::u16string const& sought) {
  auto const text = large().slice(large().begin_of_line(0), large().end(-1));
  oniguruma::ptrn_t const ptrn(sought.data(), sought.data() + sought.size(), 0);
  using regex::onig_library::bytes;
  for (auto _ : state) {
    OnigUChar const* const end = bytes(text.units.data() + text.units.size());
    if (onig_search(ptrn.regex(), bytes(text.units.data()), end, bytes(text.units.data()), end,
                    nullptr, 0) < 0)
      state.SkipWithError("not found");
  }
}
BENCHMARK_CAPTURE(oniguruma_alone, rare_pattern, u"N[a-z]+[0-9]+x")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(oniguruma_alone, common_pattern, u"[a-zA-Z]+[0-9]+x")
    ->Unit(benchmark::kMillisecond);

// All that the find bar knows of a million matches in 100 MB of text, and the marks of them along
// its scroll bar. Without a window both are done at once.
void survey(benchmark::State& state, bool is_edited) {
  headless::headless_desktop desktop;
  text::storage& storage = storage_with(50'000'000, 1);
  if (is_edited) storage.insert(storage.begin_of_line(7), 1, u'x');
  text::view view(storage);
  auto const query = std::make_shared<search::text_query const>(u"needle", search::query_options());
  for (auto _ : state) {
    search::match_survey survey([] {});
    survey.start(view, query, std::nullopt);
    auto const ticks = search::scroll_ticks(view, *survey.result(), 0, 1000);
    state.counters["matches"] = static_cast<double>(survey.result()->starts.size());
    state.counters["ticks"] = static_cast<double>(ticks.size());
  }
  if (is_edited) storage.erase(storage.begin_of_line(7));
}
BENCHMARK_CAPTURE(survey, loaded, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(survey, edited, true)->Unit(benchmark::kMillisecond);

// All of a million matches in 50 million units.
void all(benchmark::State& state, std::u16string const& sought, bool pattern) {
  text::storage& storage = storage_with(50'000'000, 1);
  auto const text = storage.slice(storage.begin_of_line(0), storage.end(-1));
  std::atomic<bool> const never = false;
  search::text_query const query(sought, {.regular_expression = pattern});
  for (auto _ : state) {
    search::text_searcher searcher(query, text.units, never);
    std::size_t count = 0;
    for (std::size_t at = 0; searcher.next(at, text.units.size()) == search::search_end::found;
         at = searcher.end())
      ++count;
    state.counters["matches"] = static_cast<double>(count);
  }
}
BENCHMARK_CAPTURE(all, literal, u"needle", false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(all, pattern, u"n([a-z]+)[0-9]+", true)->Unit(benchmark::kMillisecond);

void all_by_oniguruma(benchmark::State& state) {
  text::storage& storage = storage_with(50'000'000, 1);
  auto const text = storage.slice(storage.begin_of_line(0), storage.end(-1));
  std::u16string const sought = u"n([a-z]+)[0-9]+";
  oniguruma::ptrn_t const ptrn(sought.data(), sought.data() + sought.size(), 0);
  using regex::onig_library::bytes;
  OnigRegion* const region = onig_region_new();
  for (auto _ : state) {
    OnigUChar const *first = bytes(text.units.data()), *at = first;
    OnigUChar const* const end = bytes(text.units.data() + text.units.size());
    while (onig_search(ptrn.regex(), first, end, at, end, region, 0) >= 0)
      at = first + region->end[0];
  }
  onig_region_free(region, 1);
}
BENCHMARK(all_by_oniguruma)->Unit(benchmark::kMillisecond);

}  // namespace
