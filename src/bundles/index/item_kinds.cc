#include "bundles/index/item_kinds.h"

#include <algorithm>

namespace bundles {
namespace {

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

template <typename Member>
item_kind const* row(Member member, std::string_view value) {
  auto const found = std::find_if(item_kinds.begin(), item_kinds.end(),
                                  [&](item_kind const& k) { return k.*member == value; });
  return found == item_kinds.end() ? nullptr : &*found;
}

}  // namespace

std::string_view DirectoryToKind(std::string_view directory) {
  item_kind const* const found = row(&item_kind::directory, directory);
  return found ? found->kind : "";
}

std::string_view KindToDirectory(std::string_view kind) {
  item_kind const* const found = row(&item_kind::kind, kind);
  return found ? found->directory : "";
}

std::string_view KindToExtension(std::string_view kind) {
  if (kind == "bundle") return bundle_extension;
  item_kind const* const found = row(&item_kind::kind, kind);
  return found ? found->extension : "";
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
  return std::any_of(item_kinds.begin(), item_kinds.end(), [&](item_kind const& k) {
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
