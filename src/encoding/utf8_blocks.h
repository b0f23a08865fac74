#pragma once

namespace encoding {

/// Where a decoder stands.
struct utf8_position {
  unsigned char const* in;
  char16_t* out;
};

/// Decodes UTF-8 from `at`, the start of a sequence, as long as each 64 bytes ahead hold only
/// well-formed sequences of one to three bytes, and 96 bytes are left before `end`. Gives how
/// far it came: where the next sequence starts. `at.out` may lie in the same block, as
/// long as it has room for all the units and never overtakes the input. On processors without
/// the instructions for it comes nowhere at all.
utf8_position decode_utf8_blocks(utf8_position at, unsigned char const* end);

}  // namespace encoding
