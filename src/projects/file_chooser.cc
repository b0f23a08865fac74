#include "projects/file_chooser.h"

#include "path/file_system.h"
#include "platform/utf.h"
#include "projects/text_files.h"
#include "settings/store.h"

#include <algorithm>

namespace projects {
namespace {

using view = std::u16string_view;

constexpr double least_score = -0.5;
constexpr std::size_t most_bindings = 50;

std::string_view name_of(std::string_view path) {
  return path.substr(path.rfind('/') + 1);
}

std::string_view folder_of(std::string_view path) {
  std::size_t const slash = path.rfind('/');
  return slash == path.npos ? std::string_view() : path.substr(0, slash);
}

// Takes ":123" off the end; nothing if there is none.
std::optional<std::size_t> take_number(view& typed) {
  constexpr std::size_t most_digits = 9;
  std::size_t const colon = typed.rfind(u':');
  if (colon == typed.npos || colon + 1 == typed.size() || typed.size() - colon > most_digits + 1)
    return std::nullopt;
  std::size_t number = 0;
  for (char16_t const digit : typed.substr(colon + 1)) {
    if (digit < u'0' || u'9' < digit) return std::nullopt;
    number = number * 10 + (digit - u'0');
  }
  typed = typed.substr(0, colon);
  return number;
}

// Each part in a folder of its own, the last one as near to the file as it can be.
bool has_folders(std::string_view path, std::vector<std::u16string> const& parts) {
  std::string_view folder = folder_of(path);
  for (auto part = parts.rbegin(); part != parts.rend(); ++part) {
    for (;; folder = folder_of(folder)) {
      if (folder.empty()) return false;
      BriskStringRanker const ranker(unicode::to_utf16(name_of(folder)));
      if (ranker.scoreForAbbreviation(*part) > least_score) break;
    }
    folder = folder_of(folder);
  }
  return true;
}

// How many of the last components tell these paths apart, of which n - 1 are the same.
std::size_t common_suffix(std::size_t n, std::vector<std::string_view> const& heads) {
  std::map<std::string_view, std::vector<std::string_view>> groups;
  for (std::string_view const head : heads)
    if (!head.empty()) groups[name_of(head)].push_back(folder_of(head));
  std::size_t result = n;
  for (auto const& [name, inner] : groups)
    if (inner.size() > 1) result = std::max(result, common_suffix(n + 1, inner));
  return result;
}

std::vector<std::string> texts_in(char const* key) {
  std::vector<std::string> result;
  for (plist::value const& entry : settings::store().array(key))
    result.push_back(entry.string_or(""));
  return result;
}

bool is_one_of(std::string const& extension, std::vector<std::string> const& list) {
  return std::find(list.begin(), list.end(), extension) != list.end();
}

}  // namespace

typed_file_name::typed_file_name(view typed) {
  if (auto const last = take_number(typed)) {
    line = *last;
    if (auto const first = take_number(typed)) {
      line = *first;
      column = *last;
    }
  }
  for (std::size_t slash; (slash = typed.find(u'/')) != typed.npos;) {
    std::u16string part = BriskStringRanker::prepareFilterString(typed.substr(0, slash));
    if (!part.empty()) folders.push_back(std::move(part));
    typed.remove_prefix(slash + 1);
  }
  letters = BriskStringRanker::prepareFilterString(typed);
}

file_chooser::extensions file_chooser::extensions::standard() {
  return {texts_in("WynFileChooserDeny"), texts_in("WynFileChooserAllow")};
}

file_chooser::file_chooser(std::vector<std::string> paths, extensions const& wanted,
                           std::string top)
    : top_(top.ends_with('/') ? std::move(top) : top + "/") {
  for (std::string& path : paths) {
    std::string const extension = extension_of(path);
    if (is_one_of(extension, wanted.denied)) continue;
    if (!wanted.allowed.empty() && !is_one_of(extension, wanted.allowed)) continue;
    BriskStringRanker ranker(unicode::to_utf16(name_of(path)));
    files_.push_back({std::move(path), std::move(ranker)});
  }
}

void file_chooser::search(typed_file_name const& typed) {
  std::vector<std::pair<double, std::uint32_t>> found;
  for (std::size_t n = 0; n < files_.size(); ++n) {
    double const score =
        typed.letters.empty() ? 0 : files_[n].ranker.scoreForAbbreviation(typed.letters);
    std::string_view path = files_[n].path;
    if (path.starts_with(top_)) path.remove_prefix(top_.size());
    if (score > least_score && has_folders(path, typed.folders))
      found.emplace_back(-score, static_cast<std::uint32_t>(n));
  }
  std::sort(found.begin(), found.end());
  rows_.clear();
  for (auto const& [score, index] : found) rows_.push_back(index);
  tell_names_apart();
}

void file_chooser::tell_names_apart() {
  std::map<std::string_view, std::vector<std::string_view>> folders;
  for (std::uint32_t const index : rows_) {
    std::string_view const path = files_[index].path;
    folders[name_of(path)].push_back(folder_of(path));
  }
  shown_.clear();
  for (auto const& [name, heads] : folders)
    if (heads.size() > 1) shown_[std::string(name)] = common_suffix(2, heads);
}

std::size_t file_chooser::components_shown(std::size_t row) const {
  auto const it = shown_.find(name_of(path(row)));
  return it == shown_.end() ? 0 : it->second;
}

std::vector<std::size_t> file_chooser::mask(std::size_t row, typed_file_name const& typed) const {
  return files_[rows_[row]].ranker.maskForAbbreviation(typed.letters);
}

std::string bound_file(plist::array const& bindings, std::string const& letters) {
  std::string const* shortest = nullptr;
  std::string match;
  for (plist::value const& binding : bindings) {
    std::string const* const bound = binding["searchString"].as_string();
    if (bound == nullptr || !bound->starts_with(letters)) continue;
    if (shortest != nullptr && shortest->size() <= bound->size()) continue;
    shortest = bound;
    match = binding["match"].string_or("");
  }
  return match.empty() ? "" : path::standardize(match);
}

plist::array bindings_after(plist::array bindings, std::string const& letters,
                            std::string const& path, bool was_first) {
  if (letters.empty()) return bindings;
  bool is_related = false;
  std::erase_if(bindings, [&](plist::value const& binding) {
    std::string const bound = binding["searchString"].string_or("");
    if (bound == letters) return true;
    is_related = is_related || bound.starts_with(letters) || letters.starts_with(bound);
    return false;
  });
  if (was_first && !is_related) return bindings;
  bindings.emplace_back(
      plist::dictionary{{"match", path::abbreviate_with_tilde(path)}, {"searchString", letters}});
  if (bindings.size() > most_bindings)
    bindings.erase(bindings.begin(), bindings.end() - static_cast<std::ptrdiff_t>(most_bindings));
  return bindings;
}

}  // namespace projects
