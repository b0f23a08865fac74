#include "windows/tab_titles.h"

#include "documents/printable_name.h"

#include <map>
#include <set>

namespace windows {
namespace {

constexpr std::size_t most_folders = 1000;

// The last `count` folders that the file is in. All of them, if there are no more.
std::string last_folders(std::string const& path, std::size_t count) {
  std::size_t const end = path.rfind('/');
  std::size_t begin = end;
  for (; count > 0 && begin != 0 && begin != path.npos; --count) begin = path.rfind('/', begin - 1);
  if (begin == path.npos || begin == end) return {};
  return path.substr(begin + 1, end - begin - 1);
}

}  // namespace

std::vector<std::string> tab_titles(std::vector<named_tab> const& tabs) {
  std::map<std::string, std::vector<std::size_t>> same_name;
  for (std::size_t n = 0; n < tabs.size(); ++n) same_name[tabs[n].name].push_back(n);
  std::vector<std::string> titles(tabs.size());
  for (auto const& entry : same_name) {
    std::string const& name = entry.first;
    std::vector<std::size_t> const& group = entry.second;
    for (std::size_t const n : group) titles[n] = name;
    if (group.size() == 1) continue;
    auto const folders = [&](std::size_t count) {
      std::set<std::string> found;
      for (std::size_t const n : group) found.insert(last_folders(tabs[n].path, count));
      return found.size();
    };
    std::size_t const told_apart = folders(most_folders);
    std::size_t count = 1;
    while (folders(count) < told_apart) ++count;
    for (std::size_t const n : group)
      if (std::string const folder = last_folders(tabs[n].path, count); !folder.empty())
        titles[n] += " \u2014 " + documents::printable(folder);
  }
  return titles;
}

}  // namespace windows
