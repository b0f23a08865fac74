#include "conventions/declared.h"

#include <charconv>

#include "conventions/editorconfig.h"
#include "settings/limits.h"
#include "settings/store.h"

namespace conventions {
namespace {

std::optional<unsigned> columns(std::string const& digits) {
  unsigned number = 0;
  char const* const last = digits.data() + digits.size();
  auto const [end, error] = std::from_chars(digits.data(), last, number);
  if (error != std::errc() || end != last || number < 1 || number > settings::max_tab_size)
    return std::nullopt;
  return number;
}

std::optional<bool> truth(std::string const& value) {
  if (value == "true") return true;
  if (value == "false") return false;
  return std::nullopt;
}

void set_charset(declared& result, std::string const& name) {
  if (name == "latin1") result.charset = encoding::Latin1;
  if (name == "utf-8" || name == "utf-8-bom") {
    result.charset = encoding::UTF8;
    result.byte_order_mark = name == "utf-8-bom";
  }
  if (name == "utf-16be") result.charset = encoding::UTF16BE;
  if (name == "utf-16le") result.charset = encoding::UTF16LE;
}

}  // namespace

declared declared_for(std::string const& path) {
  declared result;
  if (path.empty() || !settings::store().boolean("WynFollowEditorConfig")) return result;
  properties found = editorconfig_properties(path);
  std::string const& style = found["indent_style"];
  if (style == "tab" || style == "space") result.indentation.soft_tabs = style == "space";
  result.indentation.indent_size = columns(found["indent_size"]);
  result.indentation.tab_width = columns(found["tab_width"]);
  set_charset(result, found["charset"]);
  std::string const& ending = found["end_of_line"];
  if (ending == "lf") result.line_ending = line_ending::LF;
  if (ending == "cr") result.line_ending = line_ending::CR;
  if (ending == "crlf") result.line_ending = line_ending::CRLF;
  result.trim_trailing_blanks = truth(found["trim_trailing_whitespace"]);
  result.final_newline = truth(found["insert_final_newline"]);
  return result;
}

}  // namespace conventions
