#include "projects/project_file.h"

#include "path/file_reader.h"
#include "path/file_system.h"
#include "path/path.h"
#include "plist/utf8.h"
#include "plist/xml_reader.h"
#include "plist/xml_writer.h"

#include <algorithm>
#include <cerrno>

namespace projects {
namespace {

// Whether an XML property list can hold it as a string.
bool is_text(std::string_view bytes) {
  bool const has_controls = std::any_of(bytes.begin(), bytes.end(), [](char c) {
    return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r';
  });
  return !has_controls && plist::is_utf8(bytes) && bytes.find("\xEF\xBF\xBE") == bytes.npos &&
         bytes.find("\xEF\xBF\xBF") == bytes.npos;
}

plist::value stored(std::string const& bytes) {
  if (is_text(bytes)) return bytes;
  return plist::data(bytes.begin(), bytes.end());
}

// Empty for what is no path or name.
std::string bytes_of(plist::value const& stored) {
  std::string bytes;
  if (auto const* data = stored.as_data()) bytes.assign(data->begin(), data->end());
  if (auto const* text = stored.as_string()) bytes = *text;
  return bytes.find('\0') == bytes.npos ? bytes : "";
}

// Empty if it is no path.
std::string absolute_path(std::string const& given, std::string const& directory) {
  if (given.empty()) return "";
  std::string const path = path::standardize(path::join(directory, given));
  return path.starts_with('/') ? path : "";
}

std::optional<std::string> pattern_in(plist::value const& entry, char const* key,
                                      char const* older_key = nullptr) {
  std::string const* pattern = entry[key].as_string();
  if (pattern == nullptr && older_key != nullptr) pattern = entry[older_key].as_string();
  return pattern != nullptr && !pattern->empty() ? std::optional(*pattern) : std::nullopt;
}

std::unique_ptr<project_item> item_of(plist::value const& entry, std::string const& directory) {
  std::string const file = bytes_of(entry["filename"]);
  std::string const folder = bytes_of(entry["sourceDirectory"]);
  std::string const& given = file.empty() ? folder : file;
  std::string name = bytes_of(entry["name"]);
  if (given.empty()) {
    if (name.empty()) return nullptr;
    return std::make_unique<project_item>(item_kind::group, name, reference{});
  }
  reference own;
  own.path = absolute_path(given, directory);
  own.save_as_absolute_path = given.starts_with('/');
  if (own.path.empty()) return nullptr;
  std::string const last = path::name(own.path);
  if (!file.empty()) {
    if (auto const* date = entry["lastUsed"].as_date()) own.last_used = *date;
    name = last;
  } else {
    own.file_pattern = pattern_in(entry, "regexFileFilter", "regexFilter");
    own.folder_pattern = pattern_in(entry, "regexFolderFilter");
    if (name.empty()) name = last;
  }
  if (name.empty()) name = own.path;
  return std::make_unique<project_item>(file.empty() ? item_kind::folder : item_kind::file, name,
                                        std::move(own));
}

plist::dictionary entry_of(project_item const& item, std::string const& directory) {
  reference const& own = *item.own();
  plist::dictionary entry;
  auto const stored_path = [&] {
    return stored(own.save_as_absolute_path ? own.path : relative_path(own.path, directory));
  };
  switch (item.kind()) {
    case item_kind::file:
      if (own.path.empty()) return {};  // a file without a name can't be found again
      entry["filename"] = stored_path();
      if (own.last_used) entry["lastUsed"] = *own.last_used;
      break;
    case item_kind::folder:
      entry["sourceDirectory"] = stored_path();
      entry["name"] = stored(item.name());
      if (own.file_pattern) entry["regexFileFilter"] = *own.file_pattern;
      if (own.folder_pattern) entry["regexFolderFilter"] = *own.folder_pattern;
      break;
    case item_kind::group:
      entry["name"] = stored(item.name());
      entry["children"] = savable_document_tree(item.children(), directory);
      break;
  }
  if (item.kind() != item_kind::file && item.is_expanded) entry["expanded"] = true;
  if (own.save_as_absolute_path) entry["saveAsAbsolutePath"] = true;
  if (item.is_selected) entry["selected"] = true;
  return entry;
}

}  // namespace

item_list mutable_document_tree(plist::array const& entries, std::string const& directory) {
  item_list result;
  for (plist::value const& entry : entries) {
    auto item = item_of(entry, directory);
    if (!item) continue;
    item->is_expanded = entry["expanded"].boolean_or(false);
    item->is_selected = entry["selected"].boolean_or(false);
    if (entry["saveAsAbsolutePath"].boolean_or(false)) item->own()->save_as_absolute_path = true;
    if (item->kind() == item_kind::group)
      item->set_children(mutable_document_tree(entry["children"].elements(), directory));
    result.push_back(std::move(item));
  }
  return result;
}

plist::array savable_document_tree(item_list const& items, std::string const& directory) {
  plist::array result;
  for (auto const& item : items) {
    if (item->own() == nullptr) continue;
    plist::dictionary entry = entry_of(*item, directory);
    if (!entry.empty()) result.emplace_back(std::move(entry));
  }
  return result;
}

project_contents project_contents_of(plist::value const& file, std::string const& directory) {
  project_contents result;
  result.items = mutable_document_tree(file["documents"].elements(), directory);
  for (auto const& [path, metadata] : file["metaData"].entries()) {
    std::string const absolute = absolute_path(path, directory);
    if (!absolute.empty() && metadata.as_dictionary()) result.meta_data[absolute] = metadata;
  }
  for (plist::value const& variable : file["shellVariables"].elements())
    if (variable.as_dictionary()) result.variables.push_back(variable);
  result.current_document = absolute_path(bytes_of(file["currentDocument"]), directory);
  for (plist::value const& open : file["openDocuments"].elements())
    if (std::string path = absolute_path(bytes_of(open), directory); !path.empty())
      result.open_documents.push_back(std::move(path));
  result.window_frame = file["windowFrame"].string_or("");
  result.shows_tree = file["showFileHierarchyDrawer"].boolean_or(false);
  if (file["fileHierarchyDrawerWidth"])
    result.tree_width = file["fileHierarchyDrawerWidth"].integer_or(0);
  return result;
}

plist::dictionary project_value(project_contents const& contents, item_list const& items,
                                std::string const& directory, std::string const& file_folder) {
  plist::dictionary result;
  result["documents"] = savable_document_tree(items, file_folder);
  plist::dictionary meta_data;
  for (auto const& [path, metadata] : contents.meta_data)
    if (is_text(path)) meta_data[relative_path(path, directory)] = metadata;
  result["metaData"] = meta_data;
  if (!contents.window_frame.empty()) result["windowFrame"] = contents.window_frame;
  result["showFileHierarchyDrawer"] = contents.shows_tree;
  if (contents.tree_width) result["fileHierarchyDrawerWidth"] = *contents.tree_width;
  if (!contents.variables.empty()) result["shellVariables"] = contents.variables;
  if (!contents.current_document.empty())
    result["currentDocument"] = stored(relative_path(contents.current_document, directory));
  plist::array open;
  for (auto const& path : contents.open_documents)
    open.push_back(stored(relative_path(path, directory)));
  result["openDocuments"] = open;
  return result;
}

project_read_result read_project_file(std::string const& path) {
  project_read_result result;
  path::file_reader reader;
  if (auto const error = reader.open(path)) {
    if (error->code != ENOENT) result.error = error->message;
    return result;
  }
  result.version = path::version_of(reader.info());
  std::string bytes;
  if (auto const error = path::read_content(path, bytes)) {
    result.error = error->message;
    return result;
  }
  auto const read = plist::read_xml(bytes);
  if (read.error) {
    result.error = "line " + std::to_string(read.error->line) + ", column " +
                   std::to_string(read.error->column) + ": " + read.error->message;
  } else if (!read.value.as_dictionary()) {
    result.error = "it holds no dictionary";
  } else {
    result.contents = project_contents_of(read.value, path::parent(path));
  }
  return result;
}

std::optional<path::write_error> write_project_file(std::string const& path,
                                                    plist::dictionary const& value,
                                                    std::optional<path::known_file> const& known,
                                                    std::optional<path::file_version>& version) {
  auto const written = plist::write_xml(value);
  if (written.error) {
    path::write_error fault;
    static_cast<path::file_error&>(fault) = path::make_file_error("write", path, EINVAL);
    fault.message = *written.error;
    return fault;
  }
  path::write_options options;
  options.known = known;
  auto const contents = path::contents_of(written.text);
  auto failure = path::write_atomically(path, contents, options, version);
  bool const is_not_replaceable =
      failure && !failure->changed && !failure->is_in_place &&
      (failure->code == EPERM || failure->code == EACCES || failure->code == EMLINK);
  if (is_not_replaceable) failure = path::write_in_place(path, contents, options, version);
  return failure;
}

}  // namespace projects
