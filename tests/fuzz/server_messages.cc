#include "wire/message.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

// What another process sends, in two pieces: messages that are read say the same when they are
// written and read again.

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::string_view const bytes(reinterpret_cast<char const*>(data), size);
  wire::frame_reader reader;
  std::size_t const cut = size == 0 ? 0 : data[size - 1] % size;
  for (std::string_view const piece : {bytes.substr(0, cut), bytes.substr(cut)}) {
    if (!reader.add(piece)) return 0;
    while (auto const message = reader.next()) {
      if (auto const read = wire::decode_request(*message))
        if (wire::decode_request(wire::encoded(*read)) != read) std::abort();
      if (auto const read = wire::decode_answer(*message))
        if (wire::decode_answer(wire::encoded(*read)) != read) std::abort();
    }
  }
  return 0;
}
