#include "windows/template_files.h"

#include "bundles/BundleItem.h"
#include "path/file_system.h"
#include "path/path.h"
#include "path/tree.h"
#include "platform/split.h"

#include <cstdlib>

namespace windows {
namespace {

std::string without_extension(std::string const& name) {
  auto const dot = name.rfind('.');
  return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

}  // namespace

template_files files_for_template(BundleItem& item, std::string const& path,
                                  commands::variables variables) {
  variables.insert_or_assign("QN_NEW_FILE", path);
  variables.insert_or_assign("QN_NEW_FILE_DIRECTORY", path::parent(path));
  variables.insert_or_assign("QN_NEW_FILE_BASENAME", without_extension(path::name(path)));
  commands::shell_request request;
  request.script = item.content()["command"].string_or("");
  request.directory = path::parent(item.sourcePath());
  request.environment = std::move(variables);
  commands::shell_result const run = commands::run_shell(request);
  template_files result;
  if (path::exists(path)) result.paths.push_back(path);
  for (std::string const& line : platform::split(run.output, '\n')) {
    if (!line.starts_with('/') || line == path) continue;
    if (path::exists(line))
      result.paths.push_back(line);
    else
      ++result.missing;
  }
  if (result.paths.empty())
    result.error = !run.error.empty() ? run.error : run.cancelled ? "stopped" : run.output;
  return result;
}

temporary_document::temporary_document(std::string const& extension) {
  char const* const base = std::getenv("TMPDIR");
  std::string folder = path::join(base == nullptr ? "/tmp" : base, "Quirnote-template.XXXXXX");
  if (mkdtemp(folder.data()) == nullptr) return;
  folder_ = folder;
  path_ = path::join(folder, extension.empty() ? "untitled" : "untitled." + extension);
}

temporary_document::~temporary_document() {
  if (!folder_.empty()) path::remove_tree(folder_);
}

}  // namespace windows
