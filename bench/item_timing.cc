// What bundle items cost at the caret: microseconds of a processor as a line of JSON, each the
// median of many.
//
//     item_timing TEXT LANGUAGE
//
// TEXT is a file whose words are completed; LANGUAGE the outermost scope in which items are looked
// for. To be run with many bundles and without.

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "bundles/BundleManager.h"
#include "documents/WynDocument.h"
#include "headless/headless_desktop.h"
#include "headless/recording_graphics.h"
#include "platform/user_defaults.h"
#include "platform/utf.h"
#include "textview/WynTextView.h"
#include "textview/view_will_change.h"
#include "windows/select_item.h"

namespace {

double thread_time() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) * 1e-3;
}

double time_of(std::function<void()> const& work) {
  double const start = thread_time();
  work();
  return thread_time() - start;
}

double median_of(int count, std::function<void()> const& work,
                 std::function<void()> const& before = {}) {
  std::vector<double> took;
  for (int n = 0; n < count; ++n) {
    if (before) before();
    took.push_back(time_of(work));
  }
  std::nth_element(took.begin(), took.begin() + count / 2, took.end());
  return took[static_cast<std::size_t>(count / 2)];
}

struct window {
  explicit window(std::string const& language) {
    view.setCurrentStyleSheet({});
    view.setDocument(WynDocument::document());
    for (plist::value const& each : BundleManager::sharedInstance().languages())
      if (each["scopeName"].string_or("") == language)
        view.changeLanguageToAndLearn(each["uuid"].string_or(""), false);
  }
  void type(std::u16string_view text) {
    for (char16_t const unit : text) view.insertText(std::u16string_view(&unit, 1));
  }
  void clear() {
    view.performSelectorWithObject("selectAll:", {});
    view.performSelectorWithObject("deleteBackward:", {});
  }
  /// What a key costs, up to what is drawn of it.
  double key_and_drawing() {
    headless::recording_graphics graphics;
    return median_of(200, [&] {
      host.dirty.clear();
      view.insertText(std::u16string_view(u"x"));
      for (platform::rect const& dirty : std::vector(host.dirty)) view.draw(graphics, dirty);
      graphics.clear();
    });
  }

  WynTextView view;
  headless::headless_view_host host{view};
};

std::map<std::string, double> keys_of_items(std::string const& language) {
  window in(language);
  auto& manager = BundleManager::sharedInstance();
  platform::key_event const key{
      u"j", u"j", platform::modifier::command | platform::modifier::option, {}};
  std::map<std::string, double> took;
  took["first key"] = time_of([&] { manager.shouldSwallowEvent(key, in.view); });
  took["free key"] = median_of(1000, [&] { manager.shouldSwallowEvent(key, in.view); });
  took["trigger"] = median_of(
      200, [&] { in.view.performSelectorWithObject("insertTab:", {}); },
      [&] {
        in.clear();
        in.type(u"trig5");
      });
  return took;
}

std::map<std::string, double> fields() {
  std::map<std::string, double> took;
  std::string content = "${1:a}\n";
  for (int n = 0; n < 100; ++n) content += n % 10 == 9 ? "$1\n" : "$1 ";
  for (int n = 0; n < 20; ++n) content += "${1/(.)(.*)/\\U$1\\E$2/} ";
  window plain(""), filled("");
  for (window* each : {&plain, &filled}) {
    each->view.performSelectorWithObject("insertSnippet:", plist::dictionary{{"content", content}});
    if (each != &plain) continue;
    each->view.performSelectorWithObject("moveToEndOfDocument:", {});
    each->view.insertText(std::u16string_view(u"\n"));
    each->view.performSelectorWithObject("moveToBeginningOfDocument:", {});
  }
  took["key without fields"] = plain.key_and_drawing();
  took["key in field"] = filled.key_and_drawing();
  return took;
}

std::map<std::string, double> completion(std::string const& text) {
  std::map<std::string, double> took;
  window in("");
  std::u16string const units = unicode::to_utf16(text);
  in.view.view()->storage->insert(in.view.view()->storage->end(-1), units.begin(), units.end());
  in.view.goToLineAndColumn({in.view.view()->storage->lines() / 2, 1});
  // Of several candidates, and of one, after which there is none. The rest of the text is looked
  // through while the user reads what came first.
  for (auto const& [letters, further] :
       {std::pair(u"\nc", "next candidate"), std::pair(u"\nco", "no further candidate")}) {
    in.type(letters);
    took["first candidate"] =
        std::max(took["first candidate"], time_of([&] { in.view.complete(true); }));
    took[further] = median_of(
        5, [&] { in.view.complete(true); },
        [] { platform::desktop::current().loop().run_for(0.5); });
  }
  return took;
}

std::map<std::string, double> selecting(std::string const& language) {
  window in(language);
  std::map<std::string, double> took;
  std::unique_ptr<WynSelectBundleItem> select;
  took["select window opens"] = time_of([&] {
    select = std::make_unique<WynSelectBundleItem>(BundleManager::sharedInstance(), in.view,
                                                   std::vector<platform::menu_item>(),
                                                   plist::dictionary());
  });
  double& worst = took["select window, letter"];
  for (char const* word : {"something", "som", "sel snip", "S", "sfs9"}) {
    std::string typed;
    for (char const* letter = word; *letter != '\0'; ++letter) {
      typed += *letter;
      worst = std::max(worst, time_of([&] {
                         select->set_filter(typed);
                         for (std::size_t row = 0; row < std::min<std::size_t>(20, select->count());
                              ++row)
                           select->row(row);
                       }));
    }
  }
  return took;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("usage: item_timing TEXT LANGUAGE\n", stderr);
    return 2;
  }
  headless::headless_desktop desktop;
  platform::user_defaults::set_standard(std::make_unique<platform::user_defaults>(""));
  std::ifstream file(argv[1], std::ios::binary);
  std::string const text{std::istreambuf_iterator<char>(file), {}};
  std::string json;
  for (auto const& part : {keys_of_items(argv[2]), fields(), completion(text), selecting(argv[2])})
    for (auto const& [name, value] : part)
      json += (json.empty() ? "{\"" : ", \"") + name + "\": " + std::to_string(value);
  std::printf("%s}\n", json.c_str());
}
