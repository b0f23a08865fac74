#include "documents/rewrite_file.h"

#include <cerrno>

#include "documents/WynDocument.h"
#include "documents/file_text.h"
#include "documents/save_file.h"
#include "documents/storage_bytes.h"
#include "path/file_reader.h"

namespace documents {
namespace {

constexpr char const* has_changed = "it has been changed since it was searched";

rewriting fault(std::string why) {
  return {.fault = std::move(why), .is_damaged = false, .written = {}};
}

/// The bytes of the file, if it is at that version.
std::optional<std::string> bytes_of(std::string const& path, path::file_version const& known) {
  path::file_reader reader;
  if (reader.open(path) || path::version_of(reader.info()) != known) return std::nullopt;
  std::string bytes(known.size, '\0');
  auto const got = reader.read(bytes.data(), bytes.size());
  if (got.error || got.bytes != bytes.size()) return std::nullopt;
  return bytes;
}

std::string refusal_of(std::string const& path) {
  if (std::string const lost = lost_by_saving(path); !lost.empty())
    return "writing it would take away " + lost;
  return is_read_only(path) ? "it is read-only" : "";
}

rewriting save(save_request request, path::file_version const& known,
               std::optional<path::file_place> place, path::file_system_calls& calls) {
  request.options.known = path::known_file{known, std::move(place)};
  std::optional<safety_copy> copy;
  rewriting result;
  auto const error = save_file(request, copy, result.written, calls);
  if (!error) return result;
  result.written.reset();
  result.fault = error->changed ? has_changed : error->message;
  result.is_damaged = error->target_damaged || error->is_in_place;
  if (copy)
    result.fault += "; what it should hold is kept in a safety copy, which the next start offers";
  return result;
}

/// The charset in which the text can be written; an ASCII file may get its first other character.
std::optional<encoding::charset_t> charset_for(text::storage const& text,
                                               encoding::charset_t charset) {
  if (can_be_encoded(text, charset)) return charset;
  encoding::charset_t const wider = WynDocument::defaultFileEncoding();
  if (charset == encoding::ASCII && can_be_encoded(text, wider)) return wider;
  return std::nullopt;
}

}  // namespace

rewriting rewrite_file(
    std::string const& path, path::file_version const& known,
    std::function<std::optional<std::u16string>(text::unit_view text)> const& change,
    std::function<bool(std::string const& old_bytes)> const& keep, path::file_system_calls& calls) {
  bool const pairs = preserves_supplementary_characters();
  file_text text;
  if (auto const error = read_file_text(path, std::nullopt, pairs, text))
    return fault(error->message);
  if (!text.stamp || text.stamp->target != known) return fault(has_changed);
  if (!text.exact || text.binary) return fault("some of its bytes are no text, and would be lost");
  if (auto why = refusal_of(path); !why.empty()) return fault(std::move(why));
  auto const changed = change(text.units.view());
  if (!changed) return {};
  text::storage storage;
  storage.insert(storage.begin_of_line(0), text::text_block::copy(*changed));
  auto const charset = charset_for(storage, text.charset);
  if (!charset) return fault("its encoding has no place for all characters of the replacement");
  if (*charset == encoding::UTF8 && pairs &&
      line_with_new_lone_surrogate(storage, lone_surrogates_in(text.units.view())))
    return fault("the replacement would leave half of a character in it");
  auto const old_bytes = bytes_of(path, known);
  if (!old_bytes) return fault(has_changed);
  if (!keep(*old_bytes)) return fault("what stands in it could not be kept for undoing");
  encoding::file_format const format{*charset, text.line_ending, text.byte_order_mark, pairs};
  return save({path, storage_bytes(storage, format), format, {}, false}, known,
              std::move(text.place), calls);
}

rewriting restore_file(std::string const& path, path::file_version const& known,
                       std::string const& bytes, path::file_system_calls& calls) {
  if (!bytes_of(path, known)) return fault("it has been changed since");
  return save({path, path::contents_of(bytes), {}, {}, false}, known, path::place_of(path), calls);
}

}  // namespace documents
