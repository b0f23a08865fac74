#include "platform/html/page_stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <thread>

namespace {

using platform::page_stream;

// Read on another thread in pieces of all sizes, what was appended comes whole and in its order,
// and never is more held than the bound; a reader that goes holds nobody up.
TEST(page_stream, hands_bytes_from_thread_to_thread) {
  for (std::size_t read_before_gone : {SIZE_MAX, std::size_t{3'000'000}}) {
    page_stream stream;
    std::string sent, received;
    std::size_t most_held = 0;
    std::thread reader([&] {
      std::mt19937 random(1);
      std::string piece(200'000, '\0');
      while (!stream.at_end() && received.size() < read_before_gone) {
        std::size_t const count = stream.read(piece.data(), 1 + random() % piece.size());
        received.append(piece, 0, count);
        if (count == 0) std::this_thread::yield();
      }
      if (!stream.at_end()) stream.abandon();
      stream.set_on_data({});
    });
    std::mt19937 random(2);
    for (int n = 0; sent.size() < 8'000'000; ++n) {
      while (!stream.wants_more()) std::this_thread::yield();
      most_held = std::max(most_held, stream.available());
      std::string const piece(1 + random() % 100'000, static_cast<char>('a' + n % 26));
      sent += piece;
      stream.append(piece);
    }
    stream.finish();
    reader.join();
    EXPECT_LT(most_held, page_stream::capacity);
    EXPECT_EQ(stream.is_abandoned(), read_before_gone != SIZE_MAX);
    if (read_before_gone == SIZE_MAX)
      EXPECT_TRUE(received == sent);
    else
      EXPECT_TRUE(sent.starts_with(received));
  }
}

}  // namespace
