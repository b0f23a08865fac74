#include "regex/oniguruma_format.h"

#include "platform/utf.h"
#include "regex/letter_case.h"

namespace oniguruma {

format::format(char const* text) : tree_(regex::parse_replacement(text)) {
  failed_ = !tree_;
}

std::u16string format::expand(std::u16string_view text, captures_t const& captures) {
  case_mode = next_char_case = regex::as_is;
  text_ = text;
  captures_ = &captures;
  if (!failed_) visit(*tree_);
  flush();
  return std::exchange(out_, {});
}

bool format::is_set(unsigned group) const {
  return captures_->contains(static_cast<int>(group));
}

void format::put_text(std::string const& utf8) {
  pending_ += utf8;
}

void format::put_newline() {
  out_ += u'\n';
}

void format::put_group(unsigned group) {
  flush();
  auto const [begin, end] = captures_->at(static_cast<int>(group));
  regex::append_with_case(
      out_, text_.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin)),
      case_mode, next_char_case);
}

void format::flush() {
  if (pending_.empty()) return;
  std::u16string const units = unicode::to_utf16(pending_);
  pending_.clear();
  regex::append_with_case<char16_t>(out_, units, case_mode, next_char_case);
}

}  // namespace oniguruma
