#include "app/menu_file.h"

#include "documents/printable_name.h"
#include "platform/menu.h"
#include "platform/system/replace_file.h"
#include "plist/text_reader.h"
#include "plist/xml_reader.h"

#include <cstring>

namespace app {
namespace {

constexpr char const* built_in_menus = R"({ main = (
  { title = 'File'; items = (
    { title = 'New'; selector = 'newDocument:'; key = '@n'; },
    { title = 'Open…'; selector = 'openDocument:'; key = '@o'; },
    { separator = 1; },
    { title = 'Save'; selector = 'saveDocument:'; key = '@s'; },
    { title = 'Save As…'; selector = 'saveDocumentAs:'; key = '@S'; },
    { title = 'Close'; selector = 'performClose:'; key = '@w'; },
    { separator = 1; },
    { title = 'Quit'; selector = 'terminate:'; key = '@q'; } ); },
  { title = 'Edit'; items = (
    { title = 'Undo'; selector = 'undo:'; key = '@z'; },
    { title = 'Redo'; selector = 'redo:'; key = '@Z'; },
    { separator = 1; },
    { title = 'Cut'; selector = 'cut:'; key = '@x'; },
    { title = 'Copy'; selector = 'copy:'; key = '@c'; },
    { title = 'Paste'; selector = 'paste:'; key = '@v'; },
    { title = 'Select All'; selector = 'selectAll:'; key = '@a'; } ); } ); })";

menu_file built_in(std::string const& path, std::string const& reason) {
  return {plist::convert(built_in_menus, nullptr),
          "The menus could not be read from the file " +
              documents::quoted(documents::printable(path)) + ": " + reason +
              ". Until it is mended, best by installing Quirnote again, there are only the menus "
              "for opening, editing and saving files."};
}

}  // namespace

menu_file read_menu_file(std::string const& path) {
  std::string contents;
  if (int const error = platform::read_file(path, contents, platform::file_calls::system()))
    return built_in(path, std::strerror(error));
  plist::read_result const result = plist::read_xml(contents);
  if (result.error)
    return built_in(path, "line " + std::to_string(result.error->line) + ", column " +
                              std::to_string(result.error->column) + ": " + result.error->message);
  if (platform::menu_from_value(result.value["main"]).empty())
    return built_in(path, "it has no menu bar");
  return {result.value, ""};
}

}  // namespace app
