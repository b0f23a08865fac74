#include "app/batch_mode.h"

#include "app/AppDelegate.h"
#include "app/batch_find.h"
#include "app/batch_item.h"
#include "app/batch_macro.h"
#include "app/batch_output.h"
#include "app/batch_scopes.h"
#include "app/batch_state.h"
#include "app/key_report.h"
#include "app/menu_file.h"
#include "bundles/BundleManager.h"
#include "bundles/check/check_bundle.h"
#include "documents/WynDocument.h"
#include "documents/line_diff.h"
#include "headless/headless_desktop.h"
#include "path/file_system.h"
#include "path/file_writer.h"
#include "path/path.h"
#include "platform/desktop_module.h"
#include "platform/system/library_folders.h"
#include "platform/utf.h"
#include "settings/store.h"
#include "styles/scope_report.h"
#include "windows/WynDocumentController.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>

namespace app {
namespace {

enum exit_status { done = 0, beeped = 1, wrong_usage = 2, file_trouble = 3 };

void complain(std::string const& name, std::string const& reason) {
  std::fprintf(stderr, "quirnote: %s: %s\n", platform::escaped_name(name).c_str(), reason.c_str());
}

constexpr char const* not_enough_memory = "there is not enough memory";

class batch_run {
 public:
  explicit batch_run(batch_options const& options)
      : options_(options),
        app_({}, "", [this](auto const& command) { return take_output(command); }),
        output_(heading_for(options)) {
    desktop_.shows_windows = false;
    desktop_.files().watch_no_more();
    for (auto const& [title, button] : options.answers) desktop_.alerts().answer(title, button);
  }

  int run() {
    // Without one step the others may do harm, so nothing is begun.
    if (!read_macros()) return file_trouble;
    if (!options_.input.empty())
      run_on_file(options_.input);
    else if (options_.files.empty())
      run_on_untitled();
    for (std::string const& file : options_.files) run_on_file(file);
    if (int const error = output_.flush()) fail("standard output", std::strerror(error));
    if (status_ == done && ((options_.check && has_changed_) || has_failed_)) return beeped;
    if (status_ != done || !options_.strict) return status_;
    return was_all_answered() && !has_beeped_ ? done : beeped;
  }

 private:
  static batch_output::heading heading_for(batch_options const& options) {
    if (options.null_separated) return batch_output::heading::nulls;
    bool const prints = !options.prints.empty() || options.explain;
    return options.files.size() > 1 && prints ? batch_output::heading::lines
                                              : batch_output::heading::none;
  }

  bool read_macros() {
    bool are_whole = true;
    for (batch_macro_option const& option : options_.macros) {
      if (option.is_item) {
        macros_.push_back({.steps = {}, .item = option.path, .times = option.times});
        continue;
      }
      auto macro = read_batch_macro(option.path);
      are_whole = are_whole && macro;
      if (!macro) continue;
      macro->times = option.times;
      macros_.push_back(std::move(*macro));
    }
    return are_whole;
  }

  bool was_all_answered() {
    auto const unused = desktop_.alerts().unused_answers();
    for (auto const& [title, button] : unused)
      std::fprintf(stderr, "quirnote: nothing asked for --answer \"%s=%s\"\n",
                   platform::escaped_name(title).c_str(), platform::escaped_name(button).c_str());
    return unused.empty();
  }

  void run_on_untitled() { process("untitled", WynDocument::document()); }

  void run_on_file(std::string const& file) {
    start_counting();
    std::string const path = path_of(file);
    if (file != "-" && ::access(path.c_str(), F_OK) != 0)
      return fail(file, errno == ENOENT ? "no such file" : std::strerror(errno));
    auto const document = open(file, path);
    if (document == nullptr) return fail(file, last_alert_text());
    process(file, document);
  }

  /// In a working folder that has been deleted a name stays relative, and stands for nothing.
  std::string path_of(std::string const& name) const {
    return folder_.empty() ? name : path::join(folder_, name);
  }

  void start_counting() {
    desktop_.beeps = 0;
    desktop_.alerts().shown.clear();
  }

  std::shared_ptr<WynDocument> open(std::string const& name, std::string const& path) {
    if (name == "-")
      return WynDocument::documentWithContentsOfStream(STDIN_FILENO, "standard input");
    struct stat info;
    if (::stat(path.c_str(), &info) != 0 || !S_ISFIFO(info.st_mode))
      return WynDocument::documentWithContentsOfFile(path);
    // Waits for a process to write to it.
    int const pipe = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    auto const document = WynDocument::documentWithContentsOfStream(pipe, path);
    if (pipe >= 0) ::close(pipe);
    return document;
  }

  // A file for which memory runs out costs only itself.
  void process(std::string const& name, std::shared_ptr<WynDocument> const& document) try {
    std::u16string const before = options_.diff ? document->storage().whole_text() : u"";
    WynDocumentController controller(app_);
    controller.setTextDocument(document);
    controller.showWindow();
    command_failed_ = false;
    refusal_.clear();
    for (batch_macro const& macro : macros_)
      for (std::uint32_t n = 0; n < macro.times; ++n) {
        for (batch_macro::step const& step : macro.steps) perform(controller, step);
        if (!macro.item.empty()) execute(controller, macro.item);
      }
    has_changed_ = has_changed_ || controller.textDocument()->isDocumentEdited() ||
                   controller.textDocument() != document;
    if (!options_.diff && !options_.check) save(name, controller);
    output_.begin_file(options_.files.empty() ? "" : name);
    for (std::string const& what : options_.prints) print_part(controller, what);
    explain(name, controller.textView());
    if (options_.diff) print_diff(name, before, *controller.textView().view()->storage);
    output_.end_file();
    render(controller);
    has_beeped_ = has_beeped_ || desktop_.beeps > 0;
  } catch (std::bad_alloc const&) {
    fail(name, not_enough_memory);
  }

  // Actions that the text view keeps from menus and keys, such as moveLeft:, work in macros.
  void perform(WynDocumentController& controller, batch_macro::step const& step) {
    int const beeps = desktop_.beeps;
    std::string const& command = *step.command.as_string();
    if (!controller.textView().tryToPerformWith(command, step.argument)) {
      refusal_ = "there is no action " + platform::escaped_name(command);
      desktop_.beep();
    }
    handle_events();
    if (desktop_.beeps != beeps)
      std::fprintf(stderr, "beep: %s\n", platform::escaped_name(command).c_str());
  }

  void execute(WynDocumentController& controller, std::string const& name) {
    int const beeps = desktop_.beeps;
    std::string error;
    auto const item = item_for_batch(name, controller.textView(), error);
    bool const is_template = item != nullptr && item->kind() == bundles::item_kind::file_template;
    if (is_template) error = fault_of_template(controller, item);
    if (!error.empty()) {
      complain(name, error);
      refusal_ = "there is no action " + platform::escaped_name(name);
      desktop_.beep();
    } else if (!is_template) {
      bool is_done = false;
      BundleManager::sharedInstance().executeItem(item, controller.textView(), &is_done);
      // A command that fails has an exit status of its own.
      if (!is_done && item->kind() != bundles::item_kind::command) {
        refusal_ = platform::escaped_name(name) + " could not be done";
        desktop_.beep();
      }
    }
    handle_events();
    if (desktop_.beeps != beeps)
      std::fprintf(stderr, "beep: %s\n", platform::escaped_name(name).c_str());
  }

  // What a command shows elsewhere than in the text is printed, and with --input all that it
  // writes.
  bool take_output(commands::finished_command const& command) {
    using commands::disposition;
    bool const is_shown = command.output == disposition::show_as_tool_tip ||
                          command.output == disposition::show_as_html ||
                          command.output == disposition::open_as_new_document;
    bool const is_taken = is_shown || !options_.input.empty();
    std::string const& name = command.options.name;
    command_failed_ =
        command_failed_ || !command.error.empty() || commands::is_failure(command.status);
    has_failed_ = has_failed_ || command_failed_;
    if (commands::is_failure(command.status) && command.error.empty())
      complain(name, command.status < 0 ? "ended by a signal"
                                        : "exit status " + std::to_string(command.status));
    if (!is_taken) return false;
    if (!command.error.empty()) complain(name, command.error);
    text::text_block const text = command.text();
    print_units(text.view());
    return true;
  }

  void print_units(text::unit_view units) {
    constexpr std::size_t piece = std::size_t{1} << 16;
    while (!units.empty()) {
      std::size_t count = std::min(units.size(), piece);
      // No pair is cut.
      if (count < units.size() && (units[count - 1] & 0xFC00) == 0xD800) --count;
      output_.put(unicode::to_utf8(units.substr(0, count)));
      units.remove_prefix(count);
    }
  }

  // What a template makes takes the place of the empty document that is there without a file.
  // Nothing if it did.
  std::string fault_of_template(WynDocumentController& controller,
                                std::shared_ptr<BundleItem> const& item) {
    auto const document = controller.textDocument();
    if (!document->filename().empty()) return "a template makes a new document; name no file";
    if (!controller.canBeUsedForNewDocument())
      return "a template makes a new document; run it first";
    std::size_t const alerts = desktop_.alerts().shown.size();
    BundleManager::sharedInstance().executeItem(item, controller.textView());
    auto const made = controller.textDocument();
    if (made != document && made->filename().empty()) return "";
    bool const is_told = desktop_.alerts().shown.size() > alerts;
    return is_told ? last_alert_text() : "it makes several files, which windows show";
  }

  void print_diff(std::string const& name, std::u16string const& before,
                  text::storage const& storage) {
    std::u16string const after = storage.whole_text();
    auto const old_lines = documents::whole_lines_of(before),
               new_lines = documents::whole_lines_of(after);
    auto const changes = documents::differing_lines(old_lines, new_lines);
    if (changes.empty()) return;
    std::u16string const shown = unicode::to_utf16(platform::escaped_name(name));
    output_.put(unicode::to_utf8(documents::unified_diff(old_lines, new_lines, changes,
                                                         u"a/" + shown, u"b/" + shown, true)));
  }

  // News of files come some steps late rather than by a system call at each.
  void handle_events() {
    constexpr unsigned interval = 16;
    if (steps_++ % interval == 0)
      desktop_.loop().run_for(0);
    else
      desktop_.loop().run_due();
  }

  void save(std::string const& name, WynDocumentController& controller) {
    if (!options_.save && options_.save_as.empty()) return;
    // Without a step that is misspelt the others may have done harm.
    if (!refusal_.empty()) return fail(name, "not saved, as " + refusal_);
    if (options_.strict && desktop_.beeps > 0) {
      complain(name, "not saved, as an action failed");
      return;
    }
    if (command_failed_) {
      complain(name, "not saved, as a command failed");
      return;
    }
    WynDocument& document = *controller.textDocument();
    if (options_.save_as == "-") return write_to_output(document);
    std::string const path = options_.save ? document.filename() : path_of(options_.save_as);
    if (path.empty()) return fail(name, "--save needs a file");
    if (!(options_.save ? document.writeToFile(path) : document.writeCopyToFile(path)))
      return fail(path, last_alert_text());
    if (path != document.filename()) document.setFilename(path);
  }

  void write_to_output(WynDocument const& document) {
    constexpr char const* output = "standard output";
    if (int const error = output_.flush()) return fail(output, std::strerror(error));
    if (!document.writeToStream(STDOUT_FILENO, output)) fail(output, last_alert_text());
  }

  // By lines, so that a large text isn't copied whole.
  void print_text(text::storage const& storage) {
    for (std::size_t line = 0; line < storage.lines(); ++line) {
      if (line != 0) output_.put("\n");
      output_.put(unicode::to_utf8({storage.begin(line), storage.size(line)}));
    }
  }

  void print_part(WynDocumentController& controller, std::string const& what) {
    WynTextView const& view = controller.textView();
    if (what == "text") print_text(*view.view()->storage);
    if (what == "selection") output_.put(unicode::to_utf8(view.selected_text()));
    if (what == "state")
      output_.put(batch_state(view, desktop_.beeps, desktop_.alerts().shown) + "\n");
    if (what == "scopes") output_.put(batch_scopes(view));
    if (what == "styles") output_.put(batch_styles(view));
    if (what == "xml") {
      wait_for_scopes(view);
      print_units(view.xmlRepresentation());
    }
    if (what == "symbols") output_.put(batch_symbols(controller.textView()));
  }

  void explain_key(WynTextView& view, std::uint32_t line, std::uint32_t column) {
    view.goToLineAndColumn({line + std::size_t{1}, column + std::size_t{1}});
    auto const file = read_menu_file(path::join(platform::shared_support_folder(), "menus.plist"));
    output_.put(
        key_report(options_.explain_key, view, platform::menu_from_value(file.menus["main"])));
  }

  void explain(std::string const& name, WynTextView& view) {
    if (!options_.explain) return;
    auto const [line, column] = *options_.explain;
    text::storage const& storage = *view.view()->storage;
    if (line < storage.lines() && column <= storage.size(line)) {
      wait_for_scopes(view, line);
      if (options_.explain_key.empty())
        output_.put(styles::scope_report(view, {line, column}));
      else
        explain_key(view, line, column);
    } else {
      fail(name, "there is no place " + std::to_string(line) + ":" + std::to_string(column));
    }
  }

  void render(WynDocumentController& controller) {
    if (options_.render.empty()) return;
    std::string error, png;
    platform::desktop_module* const module = platform::load_desktop_module(error);
    if (module == nullptr ||
        !module->render(controller.textView(), options_.columns, options_.rows, png, error))
      return fail(options_.render, error);
    auto const contents = path::contents_of(png);
    auto failure = path::write_atomically(options_.render, contents);
    // The file may have other names, or stand in another user's folder.
    bool const is_not_replaceable =
        failure && (failure->code == EPERM || failure->code == EACCES || failure->code == EMLINK);
    if (is_not_replaceable) failure = path::write_in_place(options_.render, contents);
    if (failure) fail(options_.render, failure->message);
  }

  std::string last_alert_text() {
    auto const& shown = desktop_.alerts().shown;
    return shown.empty() ? "cannot be used" : shown.back().title + ": " + shown.back().text;
  }

  void fail(std::string const& name, std::string const& reason) {
    complain(name, reason);
    status_ = file_trouble;
  }

  batch_options const& options_;
  headless::headless_desktop desktop_;
  AppDelegate app_;
  batch_output output_;
  std::vector<batch_macro> macros_;
  std::string refusal_;  // why the file isn't saved
  std::string const folder_ = path::cwd();
  unsigned steps_ = 0;
  int status_ = done;
  bool has_beeped_ = false, has_changed_ = false, has_failed_ = false;
  bool command_failed_ = false;  // of the present file
};

// What is wrong with bundles, a line a fault; grammars may include those that are loaded.
int check_bundles(std::vector<std::string> const& directories) {
  std::vector<std::string> languages;
  for (plist::value const& language : BundleManager::sharedInstance().languages())
    for (char const* key : {"scopeName", "name"}) languages.push_back(language[key].string_or(""));
  bool is_clean = true;
  batch_output output(batch_output::heading::none);
  for (std::string const& directory : directories)
    for (bundles::bundle_fault const& fault : bundles::check_bundle(directory, languages)) {
      output.put(platform::escaped(bundles::description(fault)) + "\n");
      is_clean = false;
    }
  if (int const error = output.flush()) {
    complain("standard output", std::strerror(error));
    return file_trouble;
  }
  return is_clean ? done : beeped;
}

// False for a fault in a strict run. Else what is faulty is left out.
bool take_settings(batch_options const& options) {
  bool is_clean = true;
  for (auto const& [key, value] : options.settings) {
    std::string const fault = settings::fault_of(key, value);
    if (fault.empty()) {
      settings::store().set_volatile(key, value);
    } else {
      complain("--set", fault);
      is_clean = false;
    }
  }
  return is_clean || !options.strict;
}

}  // namespace

int run_batch_mode(batch_options const& options) try {
  // What a file was left with by somebody who looked at it must not decide what a macro does, and a
  // file that is only read isn't to be touched.
  settings::store().set_volatile("WynDocumentDisableFSMetaData", true);
  if (!take_settings(options)) return wrong_usage;
  int const status = options.find.is_wanted()        ? run_batch_find(options)
                     : options.check_bundles.empty() ? batch_run(options).run()
                                                     : check_bundles(options.check_bundles);
  BundleManager::saveSharedCache();
  return status;
} catch (std::bad_alloc const&) {
  std::fprintf(stderr, "quirnote: %s\n", not_enough_memory);
  return file_trouble;
}

}  // namespace app
