#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "encoding/decode_in_place.h"
#include "encoding/estimate_buffer.h"
#include "encoding/harmonize_units.h"
#include "encoding/lost_units.h"
#include "encoding/stream_encoder.h"

// What opening and saving 100 MB costs in this folder, against copying it. The argument
// is the kind of text.

namespace {

using namespace encoding;

constexpr std::size_t size = 100'000'000;

enum kind { ascii, crlf, western, cyrillic, chinese, mixed };
constexpr char const* kind_names[] = {"ascii", "crlf", "western", "cyrillic", "chinese", "mixed"};

std::string line(kind k) {
  std::string const code = "  for (auto const& item : items) total += item.price * item.count;\n";
  switch (k) {
    case ascii:
      return code;
    case crlf:
      return "  for (auto const& item : items) total += item.price * item.count;\r\n";
    case western:
      return "Où est le café ? À côté de l'hôtel, près de la forêt, où l'été a été.\n";
    case cyrillic:
      return "Съешь же ещё этих мягких французских булок, да выпей чаю.\n";
    case chinese:
      return "天地玄黄宇宙洪荒日月盈昃辰宿列张寒来暑往秋收冬藏\n";
    case mixed:
      return code + line(western) + code + line(cyrillic) + line(chinese) + "😀👍\n";
  }
  return code;
}

/// The block that a reader of a file fills, with the bytes in its upper half.
class file_block {
 public:
  explicit file_block(kind k) : units_(std::make_unique<char16_t[]>(size)), content_(size, ' ') {
    std::string const l = line(k);
    for (std::size_t at = 0; at + l.size() <= size; at += l.size()) {
      std::memcpy(content_.data() + at, l.data(), l.size());
    }
  }

  void fill() { std::memcpy(bytes(), content_.data(), size); }
  unsigned char* bytes() { return reinterpret_cast<unsigned char*>(units_.get()) + size; }
  char16_t* units() { return units_.get(); }
  std::vector<char16_t> text() {
    fill();
    auto const d = decode_in_place(units(), size, UTF8, true);
    return {units(), units() + d.units};
  }

 private:
  std::unique_ptr<char16_t[]> units_;
  std::string content_;
};

void finish(benchmark::State& state) {
  state.SetBytesProcessed(state.iterations() * size);
  state.SetLabel(kind_names[state.range(0)]);
}

void copy_only(benchmark::State& state) {
  file_block block(kind(state.range(0)));
  for (auto _ : state) {
    block.fill();
    benchmark::ClobberMemory();
  }
  finish(state);
}

/// Copies as many bytes as the decoded text has, the floor for making it.
void copy_units(benchmark::State& state) {
  file_block block(ascii);
  std::vector<char16_t> const text(size, u'x');
  for (auto _ : state) {
    std::memcpy(block.units(), text.data(), 2 * size);
    benchmark::ClobberMemory();
  }
  finish(state);
}

void estimate_only(benchmark::State& state) {
  file_block block(kind(state.range(0)));
  block.fill();
  for (auto _ : state) benchmark::DoNotOptimize(estimate_buffer(block.bytes(), size));
  finish(state);
}

void decode_only(benchmark::State& state) {
  file_block block(kind(state.range(0)));
  for (auto _ : state) {
    state.PauseTiming();
    block.fill();
    state.ResumeTiming();
    benchmark::DoNotOptimize(decode_in_place(block.units(), size, UTF8, true));
  }
  finish(state);
}

void harmonize(benchmark::State& state) {
  file_block block(kind(state.range(0)));
  for (auto _ : state) {
    state.PauseTiming();
    block.fill();
    auto const d = decode_in_place(block.units(), size, UTF8, true);
    state.ResumeTiming();
    benchmark::DoNotOptimize(harmonize_units(block.units(), block.units() + d.units));
  }
  finish(state);
}

void encode(benchmark::State& state, line_ending::type type) {
  std::vector<char16_t> const text = file_block(kind(state.range(0))).text();
  for (auto _ : state) {
    std::size_t written = 0;
    stream_encoder encoder({UTF8, type, false, true}, [&](unsigned char const*, std::size_t n) {
      written += n;
      return true;
    });
    encoder.put(text.data(), text.data() + text.size());
    encoder.finish();
    benchmark::DoNotOptimize(written);
  }
  finish(state);
}

void loss(benchmark::State& state) {
  std::vector<char16_t> const text(size, u'x');
  for (auto _ : state) {
    benchmark::DoNotOptimize(first_lost_unit(text.data(), text.data() + size, Latin1));
  }
  finish(state);
}

#define QUIRNOTE_KINDS ->DenseRange(ascii, mixed)->Unit(benchmark::kMillisecond)
BENCHMARK(copy_only)->Arg(ascii)->Unit(benchmark::kMillisecond);
BENCHMARK(copy_units)->Arg(ascii)->Unit(benchmark::kMillisecond);
BENCHMARK(estimate_only) QUIRNOTE_KINDS;
BENCHMARK(decode_only) QUIRNOTE_KINDS;
BENCHMARK(harmonize) QUIRNOTE_KINDS;
BENCHMARK_CAPTURE(encode, lf, line_ending::LF) QUIRNOTE_KINDS;
BENCHMARK_CAPTURE(encode, crlf, line_ending::CRLF) QUIRNOTE_KINDS;
BENCHMARK(loss)->Arg(ascii)->Unit(benchmark::kMillisecond);

}  // namespace
