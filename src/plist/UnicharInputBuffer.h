#pragma once

#include <antlr/InputBuffer.hpp>

namespace plist {

/// Feeds the bytes of a UTF-8 text to an ANTLR lexer, for which a character is a byte. The range is
/// borrowed and must outlive the lexer.
class UnicharInputBuffer : public antlr::InputBuffer {
 public:
  UnicharInputBuffer(char const* first, char const* last) : at_(first), last_(last) {}

  /// The next byte as 0 to 255; -1 at the end, as often as it is asked for.
  int getChar() override { return at_ == last_ ? -1 : static_cast<unsigned char>(*at_++); }

 private:
  char const* at_;
  char const* last_;
};

}  // namespace plist
