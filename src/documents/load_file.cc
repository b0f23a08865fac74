#include "documents/load_file.h"

#include <iterator>

#include "documents/file_text.h"
#include "encoding/estimate.h"
#include "encoding/supplementary.h"
#include "path/file_system.h"
#include "platform/utf.h"

namespace documents {
namespace {

std::string header(std::string const& path, encoding::charset_t charset, line_ending::type type) {
  std::string const rule(60, '=');
  return rule + "\n   Filename:     " + path +
         "\n   Encoding:     " + encoding::charset_name[charset] +
         "\n   Line endings: " + line_ending::name[type] + "\n" + rule + "\n";
}

}  // namespace

bool load_file(std::string const& path, std::vector<char16_t>& out, bool with_header) {
  std::string content;
  if (path::read_content(path, content)) return false;
  line_ending::type type = line_ending::LF;
  auto const first = content.begin();
  auto const last = encoding::harmonize_line_endings(first, content.end(), &type);
  auto const charset = encoding::estimate(first, last);
  if (with_header) {
    std::u16string const text = unicode::to_utf16(header(path, charset, type));
    out.insert(out.end(), text.begin(), text.end());
  }
  if (charset == encoding::UTF8 && preserves_supplementary_characters())
    encoding::decode_utf8_with_pairs(first, last, std::back_inserter(out), nullptr);
  else
    encoding::convert_to_unicode(first, last, charset, std::back_inserter(out));
  return true;
}

}  // namespace documents
