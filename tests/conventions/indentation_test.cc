#include "conventions/indentation.h"

#include <regex>
#include "conventions/modelines.h"

#include "data_rows.h"
#include "platform/utf.h"

namespace {

void fill(text::storage& storage, std::string const& text) {
  std::u16string const units = unicode::to_utf16(text);
  storage.insert(storage.end(-1), units.begin(), units.end());
}

// As the header says it, without an eye on speed.
conventions::indentation slowly_detected(std::string const& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line) && lines.size() < 20000;) lines.push_back(line);
  auto const closes = [](std::string const& line) {
    return unicode::to_utf16(line).substr(0, 200).find(u"*/") != std::u16string::npos;
  };
  for (std::size_t at = 0; at < lines.size(); ++at) {
    std::size_t const begin = lines[at].find_first_not_of(" \t");
    bool const opens = begin != std::string::npos && begin <= 200 &&
                       lines[at].compare(begin, 2, "/*") == 0 && !closes(lines[at]);
    std::size_t end = at + 1;
    while (opens && end < std::min(at + 100, lines.size()) && !closes(lines[end])) ++end;
    if (opens && end < std::min(at + 100, lines.size()))
      lines.erase(lines.begin() + at + 1, lines.begin() + end + 1);
  }
  std::vector<std::size_t> votes;
  std::vector<std::size_t> depths;
  std::size_t tabs = 0;
  std::string previous;  // nothing after a line with a tab
  for (std::string const& line : lines) {
    std::size_t const indent = line.find_first_not_of(" \t");
    if (indent == line.npos || indent > 200) continue;
    std::size_t const blanks = line.find_first_not_of(' ');
    static std::regex const skipped(" (  )*(\\*|(public|protected|private).*:[ \\t]*$).*");
    if (line.size() < 200 && std::regex_match(line, skipped)) continue;
    if (blanks % 2 == 1 && line[indent] == '*') continue;
    if (blanks < indent) {
      if (blanks == 0) ++tabs;
      previous.clear();
      continue;
    }
    if (blanks != 0) depths.push_back(blanks);
    std::size_t const before = previous.find_first_not_of(' ');
    std::size_t const end = previous.find_last_not_of(" \t");
    if (!previous.empty() && before < blanks && blanks <= before + 8 && previous[end] != ',')
      votes.push_back(blanks - before);
    previous = line;
  }
  conventions::indentation result;
  if (tabs != 0 && tabs >= 4 * depths.size()) result.soft_tabs = false;
  if (depths.size() < 2 || depths.size() < 4 * tabs) return result;
  result.soft_tabs = true;
  auto const votes_for = [&](std::size_t width) {
    return std::count(votes.begin(), votes.end(), width);
  };
  auto const share = [](std::vector<std::size_t> const& of, std::size_t width) {
    auto const fits = [&](std::size_t n) { return n % width == 0; };
    return static_cast<double>(std::count_if(of.begin(), of.end(), fits)) / of.size();
  };
  std::size_t best = 1;
  for (std::size_t width = 2; width <= 8; ++width)
    if (votes_for(width) > votes_for(best)) best = width;
  double const own = static_cast<double>(votes_for(best)) / std::max<std::size_t>(votes.size(), 1);
  bool const agreed = best == 1 ? own > 0.5 : own > 1 / 3.0 && share(votes, best) >= 0.75;
  if (votes_for(best) >= 2 && agreed && share(depths, best) >= 0.75)
    result.indent_size = static_cast<unsigned>(best);
  return result;
}

std::string read(std::filesystem::path const& path) {
  std::ifstream in(path, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(in), {}};
  std::erase(text, '\r');
  std::erase(text, '\0');
  return text;
}

// What stands on the machine, as many files as are read in a moment.
std::vector<std::filesystem::path> corpus(std::filesystem::path const& folder,
                                          std::string const& suffix, std::size_t most) {
  std::vector<std::filesystem::path> files;
  std::error_code error;
  using std::filesystem::directory_options;
  for (std::filesystem::recursive_directory_iterator
           at(folder, directory_options::skip_permission_denied, error),
       end;
       !error && at != end && files.size() < most; at.increment(error))
    if (at->is_regular_file(error) && at->path().string().ends_with(suffix) &&
        at->file_size(error) < 200'000)
      files.push_back(at->path());
  return files;
}

TEST(indentation, of_whole_folders_is_what_a_slow_detection_finds) {
  struct row {
    std::string folder;
    char const* suffix;
    unsigned width;  // that most have; 0 if it isn't the same everywhere
  };
  for (row const& of : {row{source_file("src"), "", 2}, row{source_file("tests"), "", 0},
                        row{source_file("share"), "", 0}, row{"/usr/include", ".h", 0},
                        row{"/usr/lib/python3", ".py", 4}, row{"/etc", "", 0},
                        row{"/usr/share", ".yaml", 0}, row{"/usr/share", ".json", 0}}) {
    std::size_t of_width = 0, others = 0;
    for (auto const& path : corpus(of.folder, of.suffix, 400)) {
      std::string const text = read(path);
      text::storage storage;
      fill(storage, text);
      auto const found = conventions::detect_indentation(storage);
      EXPECT_EQ(found, slowly_detected(unicode::to_utf8(unicode::to_utf16(text)))) << path;
      if (found.indent_size) ++(*found.indent_size == of.width ? of_width : others);
    }
    if (of.width != 0) EXPECT_GE(of_width, 40 * others) << of.folder;
  }
}

TEST(indentation, is_found_for_each_width_or_left_alone) {
  for (unsigned width = 1; width <= 8; ++width) {
    std::string const one(width, ' '), two(2 * width, ' ');
    std::string const level = "a\n" + one + "b\n" + two + "c\n\n" + one + "d\n";
    text::storage text, aligned, once;
    std::string comment = "/* x\n";
    for (int line = 0; line < 20; ++line) comment += std::string(width % 8 + 1, ' ') + "x\n";
    fill(text, level + comment + "*/\n/*\n * x\n */\nf(x,\n  y)\n" + level + level);
    EXPECT_EQ(conventions::detect_indentation(text), (conventions::indentation{true, width, {}}));
    fill(once, "a\n" + one + "b\n" + one + "c\n");
    EXPECT_EQ(conventions::detect_indentation(once), (conventions::indentation{true, {}, {}}));
    fill(aligned, "a\n" + one + "b\n" + one + "c\nd\n" + std::string(width % 8 + 1, ' ') + "e\n");
    EXPECT_FALSE(conventions::detect_indentation(aligned).indent_size);
  }
  for (auto const& [text, soft] :
       std::map<std::string, std::optional<bool>>{{"", {}},
                                                  {"a\n", {}},
                                                  {"a\n\tb\n", false},
                                                  {"\ta\n\t  b\n  c\n", {}},
                                                  {"\ta\n\tb\n\tc\n\td\n  e\n", false},
                                                  {" \ta\n", {}},
                                                  {std::string(300, ' ') + "a\n", {}}}) {
    text::storage storage;
    fill(storage, text);
    EXPECT_EQ(conventions::detect_indentation(storage), (conventions::indentation{soft, {}, {}}))
        << text;
  }
}

TEST(indentation, is_read_from_modelines) {
  auto const sign = [](std::optional<bool> is) { return !is ? "." : *is ? "+" : "-"; };
  auto const number = [](std::optional<unsigned> n) { return n ? std::to_string(*n) : "."; };
  for (auto const& row : data_rows("modelines.txt", "modelines")) {
    text::storage storage;
    fill(storage, row[0]);
    auto const [indent, final_newline] = conventions::modeline_of(storage);
    EXPECT_EQ(sign(indent.soft_tabs) + (" " + number(indent.indent_size)) + " " +
                  number(indent.tab_width) + " " + sign(final_newline),
              row[1])
        << row[0];
  }
}

}  // namespace
