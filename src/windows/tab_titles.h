#pragma once

#include <string>
#include <vector>

namespace windows {

/// A tab's name, and its file's path; empty for an untitled document.
struct named_tab {
  std::string name, path;
};

/// What tabs are called: their names. Where several have the same one, as much of the folders of
/// their files follows as tells them apart.
std::vector<std::string> tab_titles(std::vector<named_tab> const& tabs);

}  // namespace windows
