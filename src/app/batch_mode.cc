#include "app/batch_mode.h"

#include "app/AppDelegate.h"
#include "app/WynDocumentController.h"
#include "app/batch_macro.h"
#include "app/batch_scopes.h"
#include "app/batch_state.h"
#include "bundles/BundleManager.h"
#include "bundles/check_bundle.h"
#include "documents/WynDocument.h"
#include "headless/headless_desktop.h"
#include "path/file_system.h"
#include "path/path.h"
#include "platform/desktop_module.h"
#include "platform/user_defaults.h"
#include "platform/utf.h"
#include "textview/scope_report.h"

#include <cstdio>

namespace {

enum exit_status { done = 0, beeped = 1, file_trouble = 3 };

void print(std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), stdout);
}

// By lines, so that a large text isn't copied whole.
void print_text(text::storage const& storage) {
  for (std::size_t line = 0; line < storage.lines(); ++line) {
    if (line != 0) print("\n");
    print(unicode::to_utf8({storage.begin(line), storage.size(line)}));
  }
}

class batch_run {
 public:
  explicit batch_run(batch_options const& options) : options_(options), app_({}, "") {
    desktop_.shows_windows = false;
    desktop_.files().watch_no_more();
    for (auto const& [title, button] : options.answers) desktop_.alerts().answer(title, button);
  }

  int run() {
    for (batch_macro_option const& option : options_.macros) {
      macros_.push_back(read_batch_macro(option.path));
      macros_.back().times = option.times;
      if (!macros_.back().complete) status_ = file_trouble;
    }
    if (options_.files.empty()) run_on_untitled();
    for (std::string const& file : options_.files) run_on_file(file);
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) complain("standard output", "not written");
    return status_ != done ? status_ : options_.strict && has_beeped_ ? beeped : done;
  }

 private:
  void run_on_untitled() {
    WynDocumentController controller(app_);
    controller.setTextDocument(WynDocument::document());
    process(controller);
  }

  void run_on_file(std::string const& file) {
    if (options_.files.size() > 1 && (!options_.prints.empty() || options_.explain))
      print("==> " + file + " <==\n");
    start_counting();
    std::string const path = path::join(folder_, file);
    if (!path::exists(path)) {
      complain(file, "no such file");
      return;
    }
    auto const document = WynDocument::documentWithContentsOfFile(path);
    if (document == nullptr) {
      complain(file, last_alert_text());
      return;
    }
    WynDocumentController controller(app_);
    controller.setTextDocument(document);
    process(controller);
  }

  void start_counting() {
    desktop_.beeps = 0;
    desktop_.alerts().shown.clear();
  }

  void process(WynDocumentController& controller) {
    controller.showWindow();
    for (batch_macro const& macro : macros_)
      for (std::uint32_t n = 0; n < macro.times; ++n)
        for (batch_macro::step const& step : macro.steps) perform(controller, step);
    save(controller);
    for (std::string const& what : options_.prints) print_part(controller, what);
    explain(controller.textView());
    render(controller);
    has_beeped_ = has_beeped_ || desktop_.beeps > 0;
  }

  // Actions that the text view keeps from menus and keys, such as moveLeft:, work in macros.
  void perform(WynDocumentController& controller, batch_macro::step const& step) {
    int const beeps = desktop_.beeps;
    std::string const& command = *step.command.as_string();
    if (!controller.textView().tryToPerformWith(command, step.argument)) desktop_.beep();
    handle_events();
    if (desktop_.beeps != beeps) std::fprintf(stderr, "beep: %s\n", command.c_str());
  }

  // News of files come some steps late rather than by a system call at each.
  void handle_events() {
    constexpr unsigned interval = 16;
    if (steps_++ % interval == 0)
      desktop_.loop().run_for(0);
    else
      desktop_.loop().run_due();
  }

  void save(WynDocumentController& controller) {
    if (!options_.save && options_.save_as.empty()) return;
    WynDocument& document = *controller.textDocument();
    std::string const path =
        options_.save ? document.filename() : path::join(folder_, options_.save_as);
    if (path.empty()) {
      complain("untitled", "--save needs a file");
      return;
    }
    if (!document.writeToFile(path)) {
      complain(path, last_alert_text());
      return;
    }
    if (path != document.filename()) document.setFilename(path);
  }

  void print_part(WynDocumentController& controller, std::string const& what) {
    WynTextView const& view = controller.textView();
    if (what == "text") print_text(*view.view()->storage);
    if (what == "selection") print(unicode::to_utf8(view.selected_text()));
    if (what == "state") print(batch_state(view, desktop_.beeps, desktop_.alerts().shown) + "\n");
    if (what == "scopes") print(batch_scopes(view));
    if (what == "styles") print(batch_styles(view));
    if (what == "symbols") print(batch_symbols(controller.textView()));
  }

  void explain(WynTextView const& view) {
    if (!options_.explain) return;
    auto const [line, column] = *options_.explain;
    text::storage const& storage = *view.view()->storage;
    if (line < storage.lines() && column <= storage.size(line)) {
      wait_for_scopes(view, line);
      print(scope_report(view, {line, column}));
    } else {
      complain(view.document()->displayName(),
               "there is no place " + std::to_string(line) + ":" + std::to_string(column));
    }
  }

  void render(WynDocumentController& controller) {
    if (options_.render.empty()) return;
    std::string error;
    platform::desktop_module* const module = platform::load_desktop_module(error);
    if (module == nullptr || !module->render(controller.textView(), options_.columns, options_.rows,
                                             options_.render, error))
      complain(options_.render, error);
  }

  std::string last_alert_text() {
    auto const& shown = desktop_.alerts().shown;
    return shown.empty() ? "cannot be used" : shown.back().title + ": " + shown.back().text;
  }

  void complain(std::string const& file, std::string const& reason) {
    std::fprintf(stderr, "quirnote: %s: %s\n", file.c_str(), reason.c_str());
    status_ = file_trouble;
  }

  batch_options const& options_;
  headless::headless_desktop desktop_;
  AppDelegate app_;
  std::vector<batch_macro> macros_;
  std::string const folder_ = path::cwd();
  unsigned steps_ = 0;
  int status_ = done;
  bool has_beeped_ = false;
};

// What is wrong with bundles, a line a fault; grammars may include those that are loaded.
int check_bundles(std::vector<std::string> const& directories) {
  std::vector<std::string> languages;
  for (plist::value const& language : BundleManager::sharedInstance().languages())
    for (char const* key : {"scopeName", "name"}) languages.push_back(language[key].string_or(""));
  bool is_clean = true;
  for (std::string const& directory : directories)
    for (bundles::bundle_fault const& fault : bundles::check_bundle(directory, languages)) {
      print(bundles::description(fault) + "\n");
      is_clean = false;
    }
  return is_clean ? done : beeped;
}

}  // namespace

int run_batch_mode(batch_options const& options) {
  // What a file was left with by somebody who looked at it must not decide what a macro does, and a
  // file that is only read isn't to be touched.
  platform::user_defaults::standard().set_volatile("WynDocumentDisableFSMetaData", true);
  for (auto const& [key, value] : options.settings)
    platform::user_defaults::standard().set_volatile(key, value);
  int const status = options.check_bundles.empty() ? batch_run(options).run()
                                                   : check_bundles(options.check_bundles);
  BundleManager::saveSharedCache();
  return status;
}
