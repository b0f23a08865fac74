#include "app/AppDelegate.h"
#include "documents/WynDocument.h"
#include "keys/WynKeyBindingManager.h"
#include "path/path.h"
#include "platform/desktop.h"
#include "text/views/view.h"
#include "windows/WynDocumentController.h"
#include "windows/WynProjectController.h"
#include "windows/WynSymbolChooser.h"
#include "windows/large_files.h"
#include "windows/select_item.h"

#include <algorithm>

namespace {

constexpr std::size_t most_used = 50;

/// Those that were used last come first, the others in the order of their tabs.
std::vector<std::string> open_files(WynProjectController const& project,
                                    std::vector<std::string> const& used) {
  std::vector<std::string> result;
  for (WynProjectController::tab const& tab : project.tabs())
    if (!tab.path.empty()) result.push_back(tab.path);
  auto const rank = [&](std::string const& path) {
    return std::find(used.begin(), used.end(), path) - used.begin();
  };
  std::stable_sort(result.begin(), result.end(),
                   [&](auto const& a, auto const& b) { return rank(a) < rank(b); });
  return result;
}

}  // namespace

windows::go_to_box::part AppDelegate::filesToGoTo(windows::document_window& front) {
  WynFileChooser::request request;
  request.files.wanted = projects::offered_extensions::standard();
  request.current = front.textDocument()->filename();
  std::vector<std::string> const recent = recent_.paths();
  if (auto* const project = dynamic_cast<WynProjectController*>(&front)) {
    request.files.roots = project->tree().walk_roots();
    request.open = open_files(*project, usedFiles_);
    request.recent = recent;
  } else {
    std::string const folder =
        request.current.empty() ? currentDirectory_ : path::parent(request.current);
    request.files.roots = projects::roots_near(folder, projects::filter_patterns::standard());
    request.takes_all_recent = true;
    request.recent = usedFiles_;
    request.recent.insert(request.recent.end(), recent.begin(), recent.end());
  }
  auto const files = std::make_shared<WynFileChooser>(
      std::move(request), fileLists_,
      [this, &front](std::string const& path, std::optional<text::line_place> const& place,
                     platform::picked_way way) { return openChosenFile(front, path, place, way); });
  return {files, [files](platform::picked_row chosen) { return files->accept(chosen); }};
}

// A file that is open stays where it is.
bool AppDelegate::openInOwnWindow(std::string const& path,
                                  std::optional<text::line_place> const& place) {
  windows::document_window* const has_it = windowWithFile(path);
  auto const* const project = dynamic_cast<WynProjectController*>(has_it);
  if (has_it != nullptr && (project == nullptr || project->hasTabOf(path)))
    return openFile(path, place) != nullptr;
  if (!windows::confirm_large_file(path)) return false;
  auto const document = WynDocument::documentWithContentsOfFile(path);
  if (document == nullptr) return false;
  recent_.add(path);
  windows::document_window& window = newWindow(document);
  if (place) window.textView().goToLineAndColumn(*place);
  window.showWindow();
  return true;
}

bool AppDelegate::openChosenFile(windows::document_window& front, std::string const& path,
                                 std::optional<text::line_place> const& place,
                                 platform::picked_way way) {
  if (way == platform::picked_way::own_window) return openInOwnWindow(path, place);
  auto* const project = dynamic_cast<WynProjectController*>(&front);
  auto const shown = front.textDocument();
  if (openFile(path, place, project) == nullptr) return false;
  if (way != platform::picked_way::aside) return true;
  for (std::size_t n = 0; project != nullptr && n < project->tabs().size(); ++n)
    if (project->tabs()[n].document == shown) project->selectTab(n);
  front.showWindow();
  return true;
}

windows::go_to_box::part AppDelegate::actionsToGoTo(WynTextView& view) {
  auto const items =
      std::make_shared<WynSelectBundleItem>(BundleManager::sharedInstance(), view, menusOfActions(),
                                            WynKeyBindingManager::sharedInstance().keyBindings());
  return {items, [items](platform::picked_row chosen) { return items->accept(chosen.row); }};
}

void AppDelegate::goTo(std::string typed) {
  auto const open = orderedControllers();
  windows::document_window* const front = open.empty() ? nullptr : open.front();
  if (front == nullptr || front->textView().view() == nullptr)
    return platform::desktop::current().beep();
  WynTextView& view = front->textView();
  if (std::string const path = front->textDocument()->filename(); !path.empty()) {
    std::erase(usedFiles_, path);
    usedFiles_.insert(usedFiles_.begin(), path);
    if (usedFiles_.size() > most_used) usedFiles_.pop_back();
  }
  for (;;) {
    windows::go_to_box box;
    box.add('\0', [&] { return filesToGoTo(*front); });
    box.add('>', [&] { return actionsToGoTo(view); });
    box.add('@', [&]() -> windows::go_to_box::part {
      auto const symbols = std::make_shared<WynSymbolChooser>(view);
      return {symbols, [symbols](auto const& chosen) { return symbols->accept(chosen.row); }};
    });
    box.add(':', [&]() -> windows::go_to_box::part {
      auto const line = std::make_shared<windows::line_choice>(view.view()->storage->lines());
      return {
          line, [line, &view](auto const&) {
            return view.view() != nullptr && view.goToLineAndColumn({line->line(), line->column()});
          }};
    });
    platform::picker_request request;
    request.title = typed == "@" ? "Go to Symbol" : "Go to File";
    request.placeholder = "Letters of a file; > for actions, @ for symbols, : for a line";
    request.initial = typed;
    request.has_help = true;
    auto const row = platform::desktop::current().pickers().run(request, box);
    if (!row) return;
    if (!box.accept(*row)) return platform::desktop::current().beep();
    if (row->way != platform::picked_way::aside) return;
    typed = box.typed();
  }
}
