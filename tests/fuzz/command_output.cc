#include "commands/command_options.h"
#include "commands/output_text.h"
#include "fuzz/fuzz.h"
#include "platform/utf.h"
#include "plist/text_reader.h"
#include "text/marked_text.h"

// Output of a command that comes in pieces of sizes given by its bytes: it is the text that all of
// it together is, or none if that isn't valid. Compared with a text while it comes, it is the same.
// The bytes as a property list are a command, whatever is in it.

namespace {

void append_in_pieces(commands::output_text& output, std::string_view bytes) {
  while (!bytes.empty()) {
    auto const first = static_cast<unsigned char>(bytes[0]);
    std::size_t const count =
        std::min<std::size_t>(first % 7 == 0 ? 200 : 1 + first % 7, bytes.size());
    output.append(bytes.substr(0, count));
    bytes.remove_prefix(count);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::string const bytes = input_text(data, size, 4096);
  std::u16string const units = unicode::to_utf16(bytes);
  commands::output_text output;
  append_in_pieces(output, bytes);
  auto const text = output.take();
  if (text && text->view() != units) std::abort();
  if (!text && unicode::to_utf8(units) == bytes && units.find(u'\uFFFD') == units.npos)
    std::abort();

  // The same but for some units in the middle.
  text::storage storage;
  std::u16string like = units;
  if (!like.empty()) like[like.size() / 2] ^= bytes.size() % 3 == 0 ? 1 : 0;
  storage.insert(storage.end(-1), like.begin(), like.end());
  commands::output_text compared(0, &storage);
  append_in_pieces(compared, bytes);
  auto const rest = compared.take();
  if (rest.has_value() != text.has_value()) std::abort();
  if (rest) {
    storage.erase({compared.same(), &storage}, storage.end(-1));
    storage.insert(storage.end(-1), rest->begin(), rest->end());
    if (marked_text::units_of(storage) != units) std::abort();
  }
  commands::read_command(plist::convert(bytes, nullptr));
  return 0;
}
