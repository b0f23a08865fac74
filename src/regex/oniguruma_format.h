#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

#include "regex/oniguruma.h"
#include "regex/replacement.h"

namespace oniguruma {

/// A replacement text (regex/replacement.h) for UTF-16 texts. Made on the main thread; then each
/// thread may use copies of its own.
///
///     oniguruma::format expand("\U$1");
///     expand(text, captures, std::back_inserter(units));
class format : private regex::replacement_visitor {
 public:
  /// `text` is UTF-8. One that cannot be parsed expands to nothing.
  explicit format(char const* text);

  bool has_failed() const { return failed_; }

  /// Writes the replacement of one match, whose `captures` are offsets in `text`.
  template <class Out>
  Out operator()(std::u16string_view text, captures_t const& captures, Out out) {
    std::u16string const expanded = expand(text, captures);
    return std::copy(expanded.begin(), expanded.end(), out);
  }

  std::u16string expand(std::u16string_view text, captures_t const& captures);

 private:
  bool is_set(unsigned group) const override;
  void put_text(std::string const& utf8) override;
  void put_newline() override;
  void put_group(unsigned group) override;
  void flush() override;

  bool failed_ = true;
  std::shared_ptr<regex::replacement const> tree_;
  std::string pending_;  // literal text that is not converted yet

  // Of the expansion under way.
  std::u16string_view text_;
  captures_t const* captures_ = nullptr;
  std::u16string out_;
};

}  // namespace oniguruma
