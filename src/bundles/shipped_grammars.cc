#include "bundles/shipped_grammars.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "path/file_system.h"
#include "plist/xml_reader.h"

namespace {

namespace fs = std::filesystem;

std::vector<std::string> files_matching(std::string const& folder, std::string const& suffix) {
  std::vector<std::string> found;
  std::error_code error;
  for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error))
    if (std::string const path = it->path().string(); path.ends_with(suffix)) found.push_back(path);
  std::sort(found.begin(), found.end());
  return found;
}

void add(shipped_grammars& grammars, std::vector<grammar::catalogue::entry>& entries,
         std::string const& file) {
  std::string bytes;
  if (auto const error = path::read_content(file, bytes)) {
    std::fprintf(stderr, "Quirnote: %s: cannot be read\n", file.c_str());
    return;
  }
  plist::read_result const read = plist::read_xml(bytes);
  if (read.error) {
    std::fprintf(stderr, "%s:%zu:%zu: %s\n", file.c_str(), read.error->line, read.error->column,
                 read.error->message.c_str());
    return;
  }
  entries.push_back({read.value["scopeName"].string_or(""), read.value["name"].string_or(""), file,
                     [content = read.value] { return content; }});
  grammars.file_types.emplace_back();
  for (plist::value const& type : read.value["fileTypes"].elements())
    if (type.as_string()) grammars.file_types.back().push_back(*type.as_string());
}

}  // namespace

unsigned shipped_grammars::index_for(std::string_view path) const {
  std::string_view const name = path.substr(path.rfind('/') + 1);
  unsigned best = grammar::catalogue::none;
  std::size_t longest = 0;
  for (std::size_t i = 0; i < file_types.size(); ++i)
    for (std::string const& type : file_types[i]) {
      bool const fits = name == type || (name.size() > type.size() && name.ends_with(type) &&
                                         name[name.size() - type.size() - 1] == '.');
      if (!fits || type.size() <= longest) continue;
      best = static_cast<unsigned>(i);
      longest = type.size();
    }
  return best;
}

shipped_grammars read_shipped_grammars(std::string const& folder, std::string const& file) {
  shipped_grammars grammars;
  std::vector<grammar::catalogue::entry> entries;
  if (!file.empty()) add(grammars, entries, file);
  for (std::string const& bundle : files_matching(folder, ".qnbundle"))
    for (std::string const& item : files_matching(bundle + "/Syntaxes", ".qnLanguage"))
      add(grammars, entries, item);
  grammars.all_rules = std::make_shared<grammar::catalogue const>(std::move(entries));
  return grammars;
}
