#include "bundles/files/item_kinds.h"

#include <algorithm>

namespace bundles {
namespace {

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

kind_row const* row_of(item_kind kind) {
  auto const found = std::find_if(item_kinds.begin(), item_kinds.end(),
                                  [&](kind_row const& row) { return row.kind == kind; });
  return found == item_kinds.end() ? nullptr : &*found;
}

}  // namespace

std::string_view name_of(item_kind kind) {
  kind_row const* const row = row_of(kind);
  return row != nullptr ? row->name : "bundle";
}

std::string_view KindToDirectory(item_kind kind) {
  kind_row const* const row = row_of(kind);
  return row != nullptr ? row->directory : "";
}

std::string_view KindToExtension(item_kind kind) {
  kind_row const* const row = row_of(kind);
  return row != nullptr ? row->extension : bundle_extension;
}

std::string lowercase_extension(std::string_view path) {
  std::string_view const name = path.substr(path.rfind('/') + 1);
  auto const dot = name.rfind('.');
  if (dot == std::string_view::npos || dot == 0) return "";
  std::string result(name.substr(dot + 1));
  std::transform(result.begin(), result.end(), result.begin(), lower);
  return result;
}

bool is_item_file(std::string_view name) {
  if (name.empty() || name.front() == '.') return false;
  std::string const extension = lowercase_extension(name);
  if (extension == "plist" || extension == "qndelta") return true;
  return std::any_of(item_kinds.begin(), item_kinds.end(), [&](kind_row const& k) {
    return std::equal(extension.begin(), extension.end(), k.extension.begin(), k.extension.end(),
                      [](char a, char b) { return a == lower(b); });
  });
}

bool is_bundle_file(std::string_view name) {
  std::string const extension = lowercase_extension(name);
  return is_bundle_directory(name) ||
         (is_item_file(name) && extension != "plist" && extension != "qndelta");
}

bool is_bundle_directory(std::string_view name) {
  return lowercase_extension(name) == bundle_extension;
}

}  // namespace bundles
