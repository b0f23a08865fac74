#pragma once

#include "documents/WynDocument.h"
#include "headless/headless_desktop.h"
#include "path/temporary_folder.h"
#include "platform/own_defaults.h"
#include "test.h"
#include "text/storage_text.h"

/// A folder of files, settings of its own, and alerts that are answered from a script.
struct document_fixture {
  document_fixture() { setenv("XDG_STATE_HOME", state.path().c_str(), 1); }

  platform::user_defaults& defaults() { return platform::user_defaults::standard(); }

  std::shared_ptr<WynDocument> open(std::string const& path) {
    return WynDocument::documentWithContentsOfFile(path);
  }
  /// A file with these bytes, opened.
  std::shared_ptr<WynDocument> document_of(std::string const& bytes) {
    return open(folder.write("file", bytes));
  }
  bool save(std::shared_ptr<WynDocument> const& document) {
    return document->writeToFile(document->filename());
  }
  std::string on_disk() const { return folder.read(folder / "file"); }

  void answer(std::string const& title, std::string const& button) {
    desktop.alerts().answer(title, button);
  }
  /// The alerts since the last call, as "title|text|answer".
  std::vector<std::string> alerts() {
    std::vector<std::string> result;
    for (auto const& alert : desktop.alerts().shown)
      result.push_back(alert.title + "|" + alert.text + "|" + alert.answer);
    desktop.alerts().shown.clear();
    return result;
  }

  headless::headless_desktop desktop;
  own_defaults const settings;
  temporary_folder folder, state;
};

class document : public ::testing::Test, public document_fixture {};

/// One step that can be undone: `text` at the end.
inline void type(WynDocument& document, std::u16string const& text) {
  text::undo_group group(document.storage().undo_manager);
  document.storage().insert(document.storage().end(-1), text.begin(), text.end());
}

inline std::u16string text_of(WynDocument const& document) {
  return units_of(document.storage());
}
