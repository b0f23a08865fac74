#include "wire/message.h"

#include "data_rows.h"
#include "test.h"
#include "wire/named_place.h"

namespace wire {
namespace {

request const full{.what = request::purpose::open_url,
                   .files = {{"/a b", "3:4"}, {"/\xFF\n", ""}},
                   .url = "qrnt://open?line=3",
                   .changes_directory = true,
                   .adds_to_recent = true,
                   .in_new_window = true,
                   .waits = true,
                   .shows_differences = true,
                   .has_input = true,
                   .waiter = "git",
                   .activation_token = "x_TIME5",
                   .environment = {"A=b", "C="}};
answer const closed{answer::kind::closed, 7, 3, true, "why"};

TEST(message, comes_back_as_it_was) {
  EXPECT_EQ(decode_request(encoded(full)), full);
  EXPECT_EQ(decode_request(encoded(request{})), request{});
  EXPECT_EQ(decode_answer(encoded(closed)), closed);
}

TEST(message, cut_short_or_followed_by_more_is_none) {
  std::string const bytes = encoded(full);
  for (std::size_t size = 0; size < bytes.size(); ++size)
    EXPECT_FALSE(decode_request(bytes.substr(0, size))) << size;
  EXPECT_FALSE(decode_request(bytes + '\0'));
}

// By hand, as another program would write them.
TEST(message, has_only_what_it_may_have) {
  auto const text = [](std::string const& s) { return static_cast<char>(0xA0 + s.size()) + s; };
  std::string const open = text("message") + text("openFiles");
  auto const with = [&](std::string const& key, std::string const& value) {
    return decode_request("\x82" + open + text(key) + value);
  };
  EXPECT_TRUE(decode_request("\x81" + open));
  EXPECT_TRUE(with("wait", "\x01")->waits);
  EXPECT_TRUE(with("unknown", "\xC0"));
  std::string const name = text("QuirnoteOpenFilePath");
  EXPECT_EQ(with("files", "\x91\x81" + name + text("/x"))->files.at(0).path, "/x");
  EXPECT_FALSE(with("files", "\x91\x81" + name + text("x")));
  EXPECT_FALSE(with("files", "\x91\x81" + name + text(std::string("/x\0y", 4))));
  EXPECT_FALSE(with("files", "\x91\x80"));
  EXPECT_FALSE(with("wait", text("yes")));
  EXPECT_FALSE(with("message", text("closeFiles")));
  EXPECT_FALSE(decode_request("\x80"));
  EXPECT_FALSE(decode_request("\x91" + open));
  // An announcement of two thousand million files takes no memory.
  EXPECT_FALSE(with("files", "\xDD\x7F\xFF\xFF\xFF"));
  EXPECT_FALSE(with("files", std::string(100000, '\x91')));
}

TEST(frame_reader, takes_messages_out_of_pieces_of_any_size) {
  strings const messages = {"", "one", std::string(300, 'x'), "last"};
  std::string bytes;
  for (auto const& message : messages) bytes += framed(message);
  for (std::size_t piece = 1; piece < bytes.size(); ++piece) {
    frame_reader reader;
    strings read;
    for (std::size_t at = 0; at < bytes.size(); at += piece) {
      ASSERT_TRUE(reader.add(std::string_view(bytes).substr(at, piece)));
      while (auto message = reader.next()) read.push_back(*message);
    }
    ASSERT_EQ(read, messages) << piece;
  }
}

TEST(frame_reader, gathers_nothing_that_is_too_long) {
  frame_reader reader;
  EXPECT_TRUE(reader.add(framed("x") + std::string("\0\x80\0\0", 4)));
  EXPECT_FALSE(frame_reader().add(std::string("\0\x80\0\1", 4)));
  EXPECT_FALSE(reader.add(std::string(longest_message, 'x') + std::string(4, '\xFF')));
}

}  // namespace
}  // namespace wire
