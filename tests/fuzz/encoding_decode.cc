#include <cstdio>
#include <cstdlib>

#include "../encoding/agreement.h"

// Any bytes: every charset decodes them, the fast functions agree with the generic ones, and
// what was decoded can be encoded again in every format.

static void require(std::string const& difference) {
  if (difference.empty()) return;
  std::puts(difference.c_str());
  std::fflush(stdout);
  std::abort();
}

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
  agreement::bytes const in(data, data + size);
  require(agreement::in_decoding(in));
  require(agreement::in_library(in, 1 + size % 31));
  for (auto charset : {encoding::UTF8, encoding::UTF16LE}) {
    agreement::units const text = agreement::decode(in, charset, true, nullptr);
    require(agreement::in_line_endings(text));
    require(agreement::in_encoding(text, 1 + size % 31));
  }
  return 0;
}
