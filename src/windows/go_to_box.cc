#include "windows/go_to_box.h"

#include "platform/utf.h"
#include "projects/file_chooser.h"

#include <algorithm>

namespace windows {

void go_to_box::add(char prefix, std::function<part()> make) {
  kinds_[prefix].make = std::move(make);
}

go_to_box::part& go_to_box::made(char prefix) const {
  kind& found = kinds_.at(prefix);
  if (found.made.source == nullptr) found.made = found.make();
  return found.made;
}

bool go_to_box::accept(platform::picked_row chosen) {
  return made(prefix_).accept(chosen);
}

void go_to_box::set_filter(std::string const& text) {
  typed_ = text;
  prefix_ = !text.empty() && kinds_.contains(text.front()) ? text.front() : '\0';
  now().set_filter(prefix_ == '\0' ? text : text.substr(1));
}

void line_choice::set_filter(std::string const& text) {
  projects::typed_file_name const typed(unicode::to_utf16(":" + text));
  bool const is_place = typed.letters.empty() && typed.folders.empty();
  line_ = is_place ? std::min(typed.line, lines_) : 0;
  column_ = is_place ? typed.column : 0;
}

platform::picker_row line_choice::row(std::size_t) const {
  platform::picker_row result;
  result.title = unicode::to_utf16("Go to line " + std::to_string(line_) +
                                   (column_ == 0 ? "" : ", column " + std::to_string(column_)));
  return result;
}

std::string line_choice::note() const {
  return "LINE or LINE:COLUMN, in " + std::to_string(lines_) + (lines_ == 1 ? " line" : " lines");
}

}  // namespace windows
