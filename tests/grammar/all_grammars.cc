#include "grammar/all_grammars.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "plist/text_reader.h"
#include "plist/xml_reader.h"
#include "source_tree.h"

std::string content_of(std::string const& file) {
  std::stringstream out;
  out << std::ifstream(file[0] == '/' ? file : source_file(file)).rdbuf();
  return out.str();
}

static void fail(std::string const& what) {
  std::fprintf(stderr, "no grammar: %s\n", what.c_str());
  std::exit(1);
}

static grammar::catalogue::entry entry_of(plist::value const& content, std::string item) {
  return {content["scopeName"].string_or(""), content["name"].string_or(""), std::move(item),
          [content] { return content; }};
}

grammar::catalogue::entry entry_of(std::string const& text) {
  plist::dictionary error;
  plist::value const content = plist::convert(text.c_str(), &error);
  if (!content) fail(plist::value(error)["info"].string_or("") + text);
  return entry_of(content, "test");
}

std::vector<grammar::catalogue::entry> shipped_entries() {
  std::vector<std::string> files;
  for (auto const& file :
       std::filesystem::recursive_directory_iterator(source_file("share/Bundles")))
    if (file.path().extension() == ".qnLanguage") files.push_back(file.path());
  std::sort(files.begin(), files.end());
  std::vector<grammar::catalogue::entry> made;
  for (std::string const& file : files)
    made.push_back(entry_of(plist::read_xml(content_of(file)).value, file));
  return made;
}

std::shared_ptr<grammar::catalogue const> shipped_catalogue(std::string const& first) {
  auto entries = shipped_entries();
  auto const found = std::find_if(entries.begin(), entries.end(),
                                  [&](auto const& entry) { return entry.scope_name == first; });
  if (found == entries.end()) fail(first);
  std::rotate(entries.begin(), found, found + 1);
  return std::make_shared<grammar::catalogue const>(std::move(entries));
}
