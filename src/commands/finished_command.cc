#include "commands/finished_command.h"

#include <string>

namespace commands {

text::text_block finished_command::text() const {
  if (like == nullptr || same == text::pos()) return rest;
  std::u16string whole;
  for (std::size_t line = 0; line < same.line; ++line) {
    whole += like->line_units(line);
    whole += u'\n';
  }
  whole += like->line_units(same.line).substr(0, same.column);
  whole += rest.view();
  return text::text_block::copy(whole);
}

}  // namespace commands
