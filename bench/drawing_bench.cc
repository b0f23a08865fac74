// What drawing asks of the logic, without what a window system adds: pages of C with its grammar
// and a theme beside plain ones, and 10,000 functions folded beside as many lines.
//
// Arguments: whether there is a language, and which `kind` the text is of.

#include <benchmark/benchmark.h>

#include <chrono>
#include <string>

#include "bundles/BundleManager.h"
#include "documents/WynDocument.h"
#include "grammar/tokenize_filter.h"
#include "headless/headless_desktop.h"
#include "platform/graphics.h"
#include "platform/user_defaults.h"
#include "text/views/folding_filter.h"
#include "textview/WynTextView.h"

namespace {

constexpr std::size_t functions = 10'000;

/// Declarations, as many lines as of `folded` show; function bodies, each of them folded; or those
/// open.
enum kind : std::int64_t { declarations, folded, open };

class null_graphics : public platform::graphics {
 public:
  void fill_rect(platform::rect const&, platform::color, bool) override { ++operations; }
  void draw_run(std::u16string_view, platform::point, double,
                platform::text_style const&) override {
    ++operations;
  }
  void draw_cluster(std::u16string_view, platform::point, double,
                    platform::text_style const&) override {
    ++operations;
  }
  void draw_image(std::string_view, platform::rect const&) override { ++operations; }
  void push_clip(platform::rect const&) override {}
  void pop_clip() override {}

  std::size_t operations = 0;
};

std::u16string text_of(std::int64_t kind) {
  std::u16string text;
  for (std::size_t n = 0; n < functions; ++n) {
    text += u"static int function(char const* name, int count)";
    text += kind != declarations
                ? u" {\n\tif (name == NULL) return 0;  // nothing\n\treturn count + 1;\n}\n"
                : u";\n";
  }
  return text;
}

/// Nobody's own settings, but with line numbers.
struct fresh_defaults {
  fresh_defaults() {
    platform::user_defaults::set_standard(std::make_unique<platform::user_defaults>(""));
    platform::user_defaults::standard().set("WynTextViewLineNumbersEnabled", true);
  }
};

/// A view in which 40 rows show.
struct shown_text {
  shown_text(bool language, std::int64_t kind) {
    auto const document = WynDocument::document();
    view.setDocument(document);
    host.resize({800, 40 * 16 + 2});
    std::u16string const text = text_of(kind);
    view.view()->storage->insert(view.view()->storage->end(-1), text.begin(), text.end());
    for (plist::value const& each : BundleManager::sharedInstance().languages())
      if (language && each["name"].string_or("") == "C")
        view.changeLanguageToAndLearn(each["uuid"].string_or(""), false);
    if (view.tokenizer() != nullptr)
      view.tokenizer()->wait_for(~std::size_t{0}, std::chrono::minutes(5));
    if (kind == folded) view.performSelectorWithObject("foldAllAtLevel:", 1);
    view.performSelectorWithObject("moveToBeginningOfDocument:", {});
  }

  fresh_defaults defaults;
  headless::headless_desktop desktop;
  WynTextView view;
  headless::headless_view_host host{view};
};

void scroll_by_pages(benchmark::State& state) {
  shown_text shown(state.range(0) != 0, state.range(1));
  null_graphics g;
  for (auto _ : state) {
    double const y = shown.host.visible_rect().y;
    shown.view.performSelectorWithObject("scrollPageDown:", {});
    if (shown.host.visible_rect().y == y) shown.host.scroll_to({0, 0});
    shown.view.draw(g, shown.host.visible_rect());
  }
  state.counters["rows"] = static_cast<double>(shown.view.view()->lines());
  state.counters["operations"] =
      static_cast<double>(g.operations) / static_cast<double>(state.iterations());
}
BENCHMARK(scroll_by_pages)
    ->ArgNames({"language", "kind"})
    ->Args({0, declarations})
    ->Args({1, declarations})
    ->Args({1, open})
    ->Args({1, folded});

void type_in_the_middle(benchmark::State& state, char const* first, char const* second) {
  shown_text shown(state.range(0) != 0, state.range(1));
  null_graphics g;
  shown.view.performSelectorWithObject(
      "goToLineNumber:",
      static_cast<std::int64_t>(functions / 2 * (state.range(1) != declarations ? 4 : 1) + 1));
  bool odd = false;
  for (auto _ : state) {
    shown.host.dirty.clear();
    shown.view.doCommandBySelector((odd = !odd) ? first : second);
    for (platform::rect const& r : shown.host.dirty) shown.view.draw(g, r);
  }
}
BENCHMARK_CAPTURE(type_in_the_middle, tab, "insertTab:", "deleteBackward:")
    ->ArgNames({"language", "kind"})
    ->Args({0, declarations})
    ->Args({1, declarations})
    ->Args({1, open})
    ->Args({1, folded});
BENCHMARK_CAPTURE(type_in_the_middle, newline, "insertNewline:", "deleteBackward:")
    ->ArgNames({"language", "kind"})
    ->Args({0, declarations})
    ->Args({1, declarations})
    ->Args({1, open})
    ->Args({1, folded});

void fold_all_functions(benchmark::State& state) {
  shown_text shown(true, folded);
  for (auto _ : state) shown.view.performSelectorWithObject("foldAllAtLevel:", 1);
}
BENCHMARK(fold_all_functions)->Unit(benchmark::kMillisecond);

}  // namespace
