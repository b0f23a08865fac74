#include "app/offer_safety_copies.h"

#include "documents/WynDocument.h"
#include "documents/document_alerts.h"
#include "documents/line_diff.h"
#include "documents/printable_name.h"
#include "documents/safety_copy.h"
#include "path/file_system.h"
#include "path/path.h"
#include "platform/desktop.h"
#include "platform/utf.h"
#include "windows/document_window.h"

#include <ctime>
#include <memory>
#include <new>

namespace app {
namespace {

using documents::printable, documents::quoted, documents::safety_copy;

enum button : std::size_t { restore, keep, compare, discard };

std::string local_time(documents::file_date date) {
  std::time_t const seconds = date / 1'000'000'000;
  std::tm parts{};
  char text[64] = "";
  if (localtime_r(&seconds, &parts)) std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
  return text;
}

std::string counted(std::size_t lines) {
  return std::to_string(lines) + (lines == 1 ? " line" : " lines");
}

/// How a copy differs from the file, which is empty if there is none or it can't be read.
class comparison {
 public:
  explicit comparison(safety_copy const& copy) : copy_(copy) {
    auto const& origin = copy.origin();
    if (copy.read(new_)) return;
    has_file_ = !origin.path.empty() &&
                !documents::read_file_text(origin.path, std::nullopt, origin.format.pairs, old_);
    old_lines_ = documents::lines_of(old_.units.view());
    new_lines_ = documents::lines_of(new_.units.view());
    changes_ = documents::differing_lines(old_lines_, new_lines_);
  }

  std::string summary() const {
    if (!has_file_)
      return (copy_.origin().path.empty() ? "It has " : "The file can't be read. The copy has ") +
             counted(new_lines_.size()) + ".";
    if (changes_.empty()) return "It has the same lines as the file, but not the same bytes.";
    std::size_t added = 0, removed = 0;
    for (auto const& change : changes_) {
      added += change.new_end - change.new_begin;
      removed += change.old_end - change.old_begin;
    }
    return "Compared with the file, " + counted(added) + " would be added and " + counted(removed) +
           " removed.";
  }

  /// The first lines that differ, for the alert.
  std::string excerpt() const {
    std::string text;
    std::size_t room = 6;
    auto const put = [&](char mark, documents::text_lines const& lines, std::size_t i,
                         std::size_t end) {
      for (; i < end && room != 0; ++i, --room)
        text +=
            std::string("\n") + mark + " " + printable(unicode::to_utf8(lines[i].substr(0, 80)));
    };
    for (auto const& change : changes_) {
      if (has_file_) put('-', old_lines_, change.old_begin, change.old_end);
      put('+', new_lines_, change.new_begin, change.new_end);
    }
    return text.empty() ? "" : "\n" + text + (room == 0 ? "\n\u2026" : "");
  }

  std::u16string diff() const {
    std::string const path = printable(copy_.origin().path);
    return documents::unified_diff(old_lines_, new_lines_, changes_,
                                   unicode::to_utf16(has_file_ ? path : "/dev/null"),
                                   unicode::to_utf16(copy_.name() + " (safety copy of " +
                                                     local_time(copy_.origin().date) + ")"));
  }

 private:
  safety_copy const& copy_;
  documents::file_text old_, new_;
  bool has_file_ = false;
  documents::text_lines old_lines_, new_lines_;
  std::vector<documents::changed_lines> changes_;
};

std::string story(safety_copy const& copy) {
  std::string const& path = copy.origin().path;
  return "Quirnote ended before " + quoted(copy.name()) +
         (path.empty() ? "" : " in " + printable(path::abbreviate_with_tilde(path::parent(path)))) +
         " was saved. Its text was kept in a safety copy on " + local_time(copy.origin().date) +
         ". ";
}

void open_text(document_opener& app, std::u16string const& text) {
  auto storage = std::make_unique<text::storage>();
  storage->insert(storage->end(-1), text.begin(), text.end());
  storage->forget_history();
  app.show(std::make_shared<WynDocument>(std::move(storage))).showWindow();
}

void restore_copy(document_opener& app, safety_copy copy) {
  std::string const path = copy.origin().path;
  windows::document_window* controller = path.empty() ? nullptr : app.openFile(path);
  // Also where the file can't be read, as a text without a name.
  if (controller == nullptr) controller = &app.show(WynDocument::document());
  controller->textView().replacingText(
      [&] { return controller->textDocument()->restore(std::move(copy)); });
  controller->showWindow();
}

void offer(document_opener& app, safety_copy copy) {
  comparison const differences(copy);
  platform::alert const question{"Unsaved Text Was Found",
                                 story(copy) + differences.summary() + differences.excerpt(),
                                 {"Restore", "Keep for Later", "Compare", "Discard"},
                                 keep};
  switch (platform::desktop::current().alerts().run(question)) {
    case restore:
      return restore_copy(app, std::move(copy));
    case compare:
      return open_text(app, differences.diff());
    case discard:
      return copy.remove();
    default:
      return;
  }
}

void offer_all(document_opener& app, std::vector<safety_copy> copies) {
  for (safety_copy& copy : copies) {
    std::string const file = copy.file();
    try {
      if (copy.is_in_place())
        copy.remove();
      else
        offer(app, std::move(copy));
    } catch (std::bad_alloc const&) {
      documents::tell_out_of_memory(file);
    }
  }
}

}  // namespace

void offer_safety_copies(document_opener& app) {
  offer_all(app, safety_copy::left_over());
}

void offer_safety_copies_beside(document_opener& app, std::string const& path) {
  offer_all(app, safety_copy::left_over_beside(path));
}

}  // namespace app
