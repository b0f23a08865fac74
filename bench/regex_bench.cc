#include <benchmark/benchmark.h>
#include <oniguruma.h>

#include <iterator>
#include <regex>
#include <string>
#include <string_view>

#include "regex/find.h"

// How long each engine takes to find all matches in the same 10 MB of program text: the own engine
// in both directions, Oniguruma over UTF-16, and std::regex over bytes. `matches` must be alike for
// the engines that read forwards.

namespace {

constexpr std::size_t text_bytes = 10 << 20;

std::string_view const lines[] = {
    "#include <vector>\n",
    "int main(int argc, char* argv[]) {\n",
    "\tfor (std::size_t i = 0; i < names.size(); ++i) {  // each of them\n",
    "\t\tif (names[i] == \"needle in a haystack\") return find_it(i + 0x1f, 3.25);\n",
    "\t}   \n",
    "\n",
    "    /* a comment of several words, some_of_them_with_underscores */\n",
    "}\n",
};

std::string const& narrow_text() {
  static std::string const text = [] {
    std::string result;
    result.reserve(text_bytes / 2);
    for (std::size_t i = 0; result.size() < text_bytes / 2; i = (i * 5 + 3) % 1000003) {
      result += lines[i % std::size(lines)];
    }
    return result;
  }();
  return text;
}

std::u16string const& text() {
  static std::u16string const wide(narrow_text().begin(), narrow_text().end());
  return wide;
}

// For own engine and Oniguruma, and the same for std::regex, where it can say that.
struct pattern {
  char const* name;
  char const* text;
  char const* ecma;
};

pattern const patterns[] = {
    {"literal", "needle in", "needle in"},
    {"absent", "zebra", "zebra"},
    {"words", "\\w+", "\\w+"},
    {"call", "[a-z_]+\\(", "[a-z_]+\\("},
    {"alternatives", "for|return|include|main", "for|return|include|main"},
    {"trailing_blanks", "[ \\t]+\\n", "[ \\t]+\\n"},
    {"indent", "^([\\t ]*).*$", nullptr},
    {"string", "\"[^\"\\n]*\"", "\"[^\"\\n]*\""},
    {"captures", "(\\w+)\\[(\\w+)\\]", "(\\w+)\\[(\\w+)\\]"},
    {"nested", "(?:[a-z]+_)+[a-z]+", "(?:[a-z]+_)+[a-z]+"},
    {"no_case", "(?i:NEEDLE)", nullptr},
};

void report(benchmark::State& state, std::size_t matches, std::size_t bytes) {
  state.counters["matches"] = static_cast<double>(matches);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

template <class Iterator>
void own(benchmark::State& state, Iterator first, Iterator last, pattern const& p) {
  regex::nfa<char> const nfa(p.text);
  std::size_t matches = 0;
  for (auto _ : state) {
    matches = 0;
    regex::find_all(first, last, nfa, [&](auto const&) { ++matches; });
  }
  report(state, matches, text().size() * 2);
}

void onig(benchmark::State& state, pattern const& p) {
  std::u16string const wide(p.text, p.text + std::char_traits<char>::length(p.text));
  auto const bytes = [](std::u16string const& s) {
    return reinterpret_cast<OnigUChar const*>(s.data());
  };
  regex_t* compiled = nullptr;
  OnigErrorInfo info;
  if (onig_new(&compiled, bytes(wide), bytes(wide) + wide.size() * 2, ONIG_OPTION_NONE,
               ONIG_ENCODING_UTF16_LE, ONIG_SYNTAX_RUBY, &info) != ONIG_NORMAL) {
    return state.SkipWithError("pattern not understood");
  }
  OnigRegion* const region = onig_region_new();
  OnigUChar const* const first = bytes(text());
  OnigUChar const* const last = first + text().size() * 2;
  std::size_t matches = 0;
  for (auto _ : state) {
    matches = 0;
    for (OnigUChar const* at = first; at < last; ++matches) {
      if (onig_search(compiled, first, last, at, last, region, ONIG_OPTION_NONE) < 0) break;
      at = first + region->end[0] + (region->end[0] == region->beg[0] ? 2 : 0);
    }
  }
  onig_region_free(region, 1);
  onig_free(compiled);
  report(state, matches, text().size() * 2);
}

void standard(benchmark::State& state, pattern const& p) {
  std::regex const compiled(p.ecma, std::regex::optimize);
  std::string const& s = narrow_text();
  std::size_t matches = 0;
  for (auto _ : state) {
    matches =
        std::distance(std::sregex_iterator(s.begin(), s.end(), compiled), std::sregex_iterator());
  }
  report(state, matches, s.size());
}

/// One short search after the other, as editing does them: what a search costs to set up.
void own_word_ends(benchmark::State& state) {
  regex::nfa<char> const nfa("\\>|$");
  std::u16string const line = u"    names.push_back(some_name);";
  std::size_t at = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(regex::find(line.data() + at, line.data() + line.size(), nfa));
    at = (at + 1) % line.size();
  }
}
BENCHMARK(own_word_ends);

[[maybe_unused]] bool const registered = [] {
  for (pattern const& p : patterns) {
    auto const add = [&](char const* engine, auto run) {
      benchmark::RegisterBenchmark((std::string(p.name) + "/" + engine).c_str(), run)
          ->Unit(benchmark::kMillisecond);
    };
    add("own", [&p](auto& s) { own(s, text().data(), text().data() + text().size(), p); });
    add("own_backwards", [&p](auto& s) { own(s, text().rbegin(), text().rend(), p); });
    add("oniguruma", [&p](auto& s) { onig(s, p); });
    if (p.ecma) add("std", [&p](auto& s) { standard(s, p); });
  }
  return true;
}();

}  // namespace
