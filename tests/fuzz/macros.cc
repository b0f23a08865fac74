#include "documents/WynDocument.h"
#include "fuzz/fuzz.h"
#include "headless/headless_desktop.h"
#include "platform/own_defaults.h"
#include "plist/text_reader.h"
#include "text/marked_text.h"
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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  plist::value const macro = plist::convert(input_text(data, size, 4096), nullptr);
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
  if (marked_text::units_of(document->storage()) != before) std::abort();
  return 0;
}
