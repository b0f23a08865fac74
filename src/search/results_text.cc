#include "search/results_text.h"

#include "documents/printable_name.h"
#include "path/file_system.h"
#include "platform/utf.h"

#include <algorithm>

namespace search {
namespace {

// The end of what names a line: ":12: ".
std::size_t end_of_place(text::unit_view line) {
  for (std::size_t colon = line.find(u':'); colon != line.npos;
       colon = line.find(u':', colon + 1)) {
    std::size_t const end = line.find_first_not_of(u"0123456789", colon + 1);
    if (end != line.npos && end != colon + 1 && line.substr(end).starts_with(u": ")) return end + 2;
  }
  return 0;
}

}  // namespace

results_text::results_text(project_results const& results) : files_(results.files()) {
  for (std::size_t n = 0; n < files_.size(); ++n) {
    found_file& file = files_[n];
    std::u16string const name =
        unicode::to_utf16(documents::printable(path::abbreviate_with_tilde(file.path)));
    for (file_match const& match : file.matches) {
      std::u16string const place =
          name + u":" + unicode::to_utf16(std::to_string(match.first.line + 1)) + u": ";
      std::u16string const text = unicode::to_utf16(match.line);
      line of{.file = n, .whole = match, .is_cut = match.is_cut};
      of.whole.offset -= match.first.column;
      of.whole.length = static_cast<std::uint32_t>(text.size());
      of.whole.first.column = 0;
      of.whole.last = {match.first.line, text.size()};
      of.whole.captures.clear();
      if (!lines_.emplace(place, std::move(of)).second) continue;
      text_ += place + text + u"\n";
    }
    file.matches.clear();
    file.ticked.clear();
  }
}

std::vector<found_file> results_text::changes(text::unit_view edited, std::size_t& refused) const {
  std::vector<found_file> files = files_;
  refused = 0;
  for (std::size_t at = 0; at < edited.size();) {
    std::size_t const end = std::min(edited.find(u'\n', at), edited.size());
    text::unit_view const all = edited.substr(at, end - at);
    at = end + 1;
    // A name may hold what looks like a place.
    auto known = lines_.end();
    std::size_t begin = 0;
    for (std::size_t size;
         known == lines_.end() && (size = end_of_place(all.substr(begin))) != 0;) {
      begin += size;
      known = lines_.find(std::u16string(all.substr(0, begin)));
    }
    if (known == lines_.end()) {
      refused += !all.empty();
      continue;
    }
    auto const& [file, whole, is_cut] = known->second;
    text::unit_view const text = all.substr(begin);
    if (text == unicode::to_utf16(whole.line)) continue;
    if (is_cut) {
      ++refused;
      continue;
    }
    file_match match = whole;
    match.put = std::make_shared<std::u16string const>(text);
    // The last of several lines that name the same place.
    auto& matches = files[file].matches;
    std::erase_if(matches, [&](file_match const& m) { return m.offset == match.offset; });
    matches.push_back(std::move(match));
  }
  for (found_file& file : files) {
    std::sort(file.matches.begin(), file.matches.end(),
              [](file_match const& a, file_match const& b) { return a.offset < b.offset; });
    file.ticked.assign(file.matches.size(), true);
  }
  return files;
}

}  // namespace search
