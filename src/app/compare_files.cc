#include "app/compare_files.h"

#include "app/AppDelegate.h"
#include "documents/WynDocument.h"
#include "documents/file_text.h"
#include "documents/line_diff.h"
#include "documents/printable_name.h"
#include "path/file_system.h"
#include "platform/desktop.h"
#include "platform/utf.h"
#include "windows/document_window.h"

namespace app {
namespace {

std::string shown(std::string const& path) {
  return documents::printable(path::abbreviate_with_tilde(path));
}

// Others name a file that isn't there on one side by the empty device.
std::optional<path::file_error> read(std::string const& path, documents::file_text& text) {
  if (path == "/dev/null") return std::nullopt;
  return documents::read_file_text(path, std::nullopt,
                                   documents::preserves_supplementary_characters(), text);
}

std::shared_ptr<WynDocument> show(AppDelegate& app, std::u16string const& diff) {
  auto storage = std::make_unique<text::storage>();
  storage->insert(storage->end(-1), diff.begin(), diff.end());
  storage->forget_history();
  auto const document = std::make_shared<WynDocument>(std::move(storage));
  windows::document_window& window = app.show(document);
  WynTextView& view = window.textView();
  view.changeLanguageToAndLearn(view.languageChoiceForFileWithFirstLine("changes.diff", ""), false);
  window.showWindow();
  return document;
}

}  // namespace

compared_files compare_files(AppDelegate& app, std::string const& first,
                             std::string const& second) {
  documents::file_text texts[2];
  std::string const* const paths[] = {&first, &second};
  for (int n = 0; n < 2; ++n) {
    auto const error = read(*paths[n], texts[n]);
    if (!error) continue;
    platform::desktop::current().alerts().run(
        {"Couldn't Compare",
         "The file " + documents::quoted(shown(*paths[n])) +
             " could not be read, so there is nothing to compare: " + error->message + ".",
         {"Continue"}});
    return {};
  }
  auto const old_lines = documents::whole_lines_of(texts[0].units.view());
  auto const new_lines = documents::whole_lines_of(texts[1].units.view());
  auto const changes = documents::differing_lines(old_lines, new_lines);
  if (changes.empty()) {
    platform::desktop::current().alerts().run({"No Differences",
                                               documents::quoted(shown(first)) + " and " +
                                                   documents::quoted(shown(second)) +
                                                   " hold the same text.",
                                               {"Continue"},
                                               0,
                                               false,
                                               "",
                                               platform::alert_icon::information});
    return {.are_read = true};
  }
  auto const name = [](std::string const& path) {
    return unicode::to_utf16(documents::printable(path));
  };
  return {show(app, documents::unified_diff(old_lines, new_lines, changes, name(first),
                                            name(second), true)),
          true};
}

}  // namespace app
