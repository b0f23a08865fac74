#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "documents/WynDocument.h"
#include "headless/headless_desktop.h"
#include "platform/own_defaults.h"
#include "plist/text_reader.h"
#include "textview/WynTextView.h"

// A property list as a macro: what is no step is passed over, and one undo takes all of it back.

namespace {

/// Snippets with code, and commands, would run what a mutation has made of them.
bool runs_programs(plist::value const& value) {
  if (std::string const text = value.string_or(""); text.find('`') != text.npos ||
                                                    text.find("ommand:") != text.npos ||
                                                    text.find("ommandW") != text.npos)
    return true;
  for (plist::value const& part : value.elements())
    if (runs_programs(part)) return true;
  for (auto const& [key, part] : value.entries())
    if (runs_programs(part)) return true;
  return false;
}

std::u16string text_of(text::storage const& storage) {
  std::u16string result;
  for (std::size_t line = 0; line < storage.lines(); ++line)
    result.append(storage.line_units(line)).append(u"\n");
  return result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  static bool const quiet = (stderr = std::fopen("/dev/null", "w")) != nullptr;
  if (!quiet) std::abort();
  plist::value const macro =
      plist::convert(std::string(data, data + (size < 4096 ? size : 4096)), nullptr);
  if (!macro || runs_programs(macro)) return 0;
  own_defaults const defaults;
  headless::headless_desktop desktop;
  desktop.busy().cancel_after = 100;
  auto const document = WynDocument::document();
  std::u16string const before = u"int a;\n\tb (c) {\n}\n";
  document->storage().insert(document->storage().end(-1), before.begin(), before.end());
  document->storage().forget_history();
  WynTextView view;
  view.setCurrentStyleSheet({});
  view.setDocument(document);
  view.performSelectorWithObject("playMacroWithOptions:", macro);
  if (view.isRecordingMacro()) view.performSelectorWithObject("abortMacroRecording:", {});
  while (view.view()->can_undo()) view.performSelectorWithObject("undo:", {});
  if (text_of(document->storage()) != before + u"\n") std::abort();
  return 0;
}
