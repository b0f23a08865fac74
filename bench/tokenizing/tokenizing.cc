// Tokenises files with our grammars and with KSyntaxHighlighting's definitions, in turn, and prints
// for each file a line of JSON: the medians in seconds of thread time and what the tokens take.
//
//     tokenizing REPEAT SCOPE DEFINITION FILE [SCOPE DEFINITION FILE]...
//
// Reading and decoding the file is not part of the time, storing all tokens is.

#include <KSyntaxHighlighting/AbstractHighlighter>
#include <KSyntaxHighlighting/Definition>
#include <KSyntaxHighlighting/Format>
#include <KSyntaxHighlighting/Repository>
#include <KSyntaxHighlighting/State>
#include <QString>
#include <QStringList>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "grammar/all_grammars.h"
#include "grammar/tokenize_filter.h"
#include "headless/headless_desktop.h"
#include "platform/utf.h"
#include "text/storage.h"

namespace {

double now() {
  auto const time = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration<double>(time).count();
}

class peer : public KSyntaxHighlighting::AbstractHighlighter {
 public:
  /// Keeps the formats and the state of each line, as an editor does.
  double run(QStringList const& lines) {
    tokens_.assign(static_cast<std::size_t>(lines.size()), {});
    std::vector<KSyntaxHighlighting::State> states(tokens_.size());
    double const start = now();
    KSyntaxHighlighting::State state;
    for (int i = 0; i < lines.size(); ++i) {
      line_ = &tokens_[static_cast<std::size_t>(i)];
      state = highlightLine(lines[i], state);
      states[static_cast<std::size_t>(i)] = state;
    }
    return now() - start;
  }

 protected:
  void applyFormat(int offset, int length, KSyntaxHighlighting::Format const& format) override {
    line_->push_back({offset, length, format.id()});
  }

 private:
  struct run_of_format {
    int offset, length, format;
  };
  std::vector<std::vector<run_of_format>> tokens_;
  std::vector<run_of_format>* line_ = nullptr;
};

struct ours {
  double seconds;
  std::size_t bytes;
};

ours tokenize(text::storage& storage, std::shared_ptr<grammar::catalogue const> const& all_rules,
              unsigned start_rule) {
  grammar::tokenize_filter filter(storage);
  double const start = now();
  filter.set_rules(all_rules, start_rule);
  while (!filter.wait_for(storage.lines(), std::chrono::hours(1))) continue;
  double const seconds = now() - start;
  std::lock_guard lock(storage.mutex);
  return {seconds, filter.memory()};
}

double median(std::vector<double> values) {
  if (values.empty()) return 0;
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

void measure(int repeat, char const* scope, char const* definition, char const* file,
             KSyntaxHighlighting::Repository& repository) {
  std::stringstream content;
  content << std::ifstream(file).rdbuf();
  std::string const text = content.str();
  std::u16string const units = unicode::to_utf16(text);
  text::storage storage;
  storage.insert(storage.end(-1), units.begin(), units.end());
  QStringList const lines = QString::fromStdString(text).split(QLatin1Char('\n'));
  peer other;
  other.setDefinition(repository.definitionForName(QString::fromUtf8(definition)));
  bool const has_definition = other.definition().isValid();
  auto const all_rules = shipped_catalogue(scope);
  std::vector<double> our_times, their_times;
  std::size_t memory = 0;
  for (int i = 0; i <= repeat; ++i) {
    // The first round warms up.
    double const theirs = has_definition ? other.run(lines) : 0;
    ours const result = tokenize(storage, all_rules, 0);
    memory = result.bytes;
    if (i == 0) continue;
    if (has_definition) their_times.push_back(theirs);
    our_times.push_back(result.seconds);
  }
  std::printf(
      "{\"scope\": \"%s\", \"bytes\": %zu, \"lines\": %zu, \"ours\": %.4f, "
      "\"peer\": %.4f, \"memory\": %zu}\n",
      scope, text.size(), static_cast<std::size_t>(storage.lines()), median(our_times),
      median(their_times), memory);
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 5 || (argc - 2) % 3 != 0) {
    std::fprintf(stderr, "usage: tokenizing REPEAT SCOPE DEFINITION FILE...\n");
    return 2;
  }
  headless::headless_desktop desktop;
  KSyntaxHighlighting::Repository repository;
  for (int i = 2; i < argc; i += 3)
    measure(std::atoi(argv[1]), argv[i], argv[i + 1], argv[i + 2], repository);
}
