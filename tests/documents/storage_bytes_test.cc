#include "documents/storage_bytes.h"

#include "documents/plain_conversion.h"
#include "test.h"

namespace {

std::string bytes_of(std::u16string const& text, encoding::file_format const& format) {
  std::string bytes;
  encoding::stream_encoder encoder(format, appending_to(bytes));
  encoder.put(text.data(), text.data() + text.size());
  encoder.finish();
  return bytes;
}

// However lines are gathered and sizes foretold, the bytes are those of the text put as a whole.
TEST(storage_bytes, are_those_of_the_whole_text) {
  std::mt19937 random(1);
  std::u16string const units = u"aaaaaaaabc\n\n\r\u00E9\u00E9\u0416\u20AC\uFFFF\xD83D\xDE00";
  for (int length : {0, 1, 2, 20, 300, 9000, 30000})
    for (unsigned kinds : {2u, 12u, unsigned(units.size())}) {
      std::u16string text;
      for (int i = 0; i < length; ++i) text += units[random() % kinds];
      text::storage storage;
      storage.insert(storage.end(-1), text.begin(), text.end());
      for (auto charset : {encoding::ASCII, encoding::UTF8, encoding::UTF16BE, encoding::UTF16LE,
                           encoding::Latin1, encoding::MacRoman, encoding::CP1252})
        for (auto ending : {line_ending::LF, line_ending::CR, line_ending::CRLF})
          for (bool mark : {false, true})
            for (bool pairs : {false, true}) {
              encoding::file_format const format{charset, ending, mark, pairs};
              auto const contents = documents::storage_bytes(storage, format);
              std::string bytes;
              contents.produce(appending_to(bytes));
              EXPECT_TRUE(bytes == bytes_of(text, format)) << length << " " << charset;
              EXPECT_EQ(contents.size, bytes.size()) << length << " " << charset;
            }
    }
}

}  // namespace
