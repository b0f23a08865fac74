#include "projects/file_chooser.h"

#include "path/file_system.h"
#include "platform/utf.h"
#include "projects/BriskStringRanker.h"
#include "projects/text_files.h"
#include "settings/store.h"

#include <algorithm>

namespace projects {
namespace {

using view = std::u16string_view;

constexpr double least_score = -0.5;
constexpr std::size_t most_bindings = 50;
constexpr std::size_t rows_in_order = 256;  // more than are in sight

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
bool has_folders(std::string_view folder, std::vector<abbreviation>& parts,
                 std::u16string& buffer) {
  for (auto part = parts.rbegin(); part != parts.rend(); ++part) {
    for (;; folder = folder_of(folder)) {
      if (folder.empty()) return false;
      buffer.clear();
      append_searched(name_of(folder), buffer);
      if (part->score(buffer, 1) > least_score) break;
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

offered_extensions offered_extensions::standard() {
  return {texts_in("WynFileChooserDeny"), texts_in("WynFileChooserAllow")};
}

bool offered_extensions::take(std::string_view path) const {
  if (denied.empty() && allowed.empty()) return true;
  std::string const extension = extension_of(path);
  return !is_one_of(extension, denied) && (allowed.empty() || is_one_of(extension, allowed));
}

void file_chooser::set_first(batch files) {
  total_ += files->size();
  for (part const& each : parts_) total_ += each.doubles.size();
  total_ -= parts_.front().files->size();
  parts_.front() = {std::move(files), {}, {}, {}};
  for (part& each : parts_) find_doubles(each);
  for (part const& each : parts_) total_ -= each.doubles.size();
  shown_.clear();
  score(parts_.front(), false);
  rows_.clear();
  for (std::uint32_t number = 0; number < parts_.size(); ++number) list(parts_[number], number);
}

void file_chooser::add(batch files) {
  parts_.push_back({std::move(files), {}, {}, {}});
  part& added = parts_.back();
  find_doubles(added);
  total_ += added.files->size() - added.doubles.size();
  score(added, false);
  shown_.clear();
  list(added, static_cast<std::uint32_t>(parts_.size() - 1));
}

void file_chooser::replace(std::vector<batch> const& files) {
  parts_.resize(1);
  total_ = parts_.front().files->size();
  shown_.clear();
  rows_.clear();
  list(parts_.front(), 0);
  for (batch const& each : files) add(each);
}

void file_chooser::set_top(std::string top) {
  top_ = top.ends_with('/') ? std::move(top) : top + "/";
}

void file_chooser::find_doubles(part& of) const {
  of.doubles.clear();
  file_batch const& first = *parts_.front().files;
  if (of.files.get() == &first) return;
  for (file_batch::index n = 0; n < first.size(); ++n) {
    auto const [begin, end] = of.files->files_called(first.name(first.name_of(n)));
    for (auto each = begin; each != end; ++each)
      if (of.files->folder(of.files->folder_of(*each)) == first.folder(first.folder_of(n)))
        of.doubles.push_back(*each);
  }
  std::sort(of.doubles.begin(), of.doubles.end());
}

void file_chooser::score(part& of, bool narrows) {
  file_batch const& files = *of.files;
  if (typed_.letters.empty()) {
    of.scores.clear();
  } else {
    if (!narrows || of.scores.empty()) of.scores.assign(files.names(), 0);
    for (file_batch::index name = 0; name < files.names(); ++name)
      if (of.scores[name] > least_score)
        of.scores[name] = (wanted_->bits() & ~files.letters(name)) != 0
                              ? -1
                              : wanted_->score(files.searched(name), files.blanks(name));
  }
  of.folders.clear();
  if (typed_.folders.empty()) return;
  of.folders.resize(files.folders());
  std::vector<abbreviation> wanted;
  for (std::u16string const& letters : typed_.folders) wanted.emplace_back(letters);
  std::u16string buffer;
  for (file_batch::index n = 0; n < files.folders(); ++n) {
    std::string_view folder = files.folder(n);
    if (folder.starts_with(top_))
      folder.remove_prefix(top_.size());
    else if (folder.size() + 1 == top_.size() && top_.starts_with(folder))
      folder = {};
    of.folders[n] = has_folders(folder, wanted, buffer);
  }
}

bool file_chooser::is_listed(part const& of, file_batch::index file) const {
  return (of.scores.empty() || of.scores[of.files->name_of(file)] > least_score) &&
         (of.folders.empty() || of.folders[of.files->folder_of(file)]) &&
         !std::binary_search(of.doubles.begin(), of.doubles.end(), file);
}

void file_chooser::list(part const& of, std::uint32_t number) {
  file_batch const& files = *of.files;
  auto next_double = of.doubles.begin();
  for (file_batch::index file = 0; file < files.size(); ++file) {
    if (next_double != of.doubles.end() && *next_double == file) {
      ++next_double;
      continue;
    }
    double const score = of.scores.empty() ? 0 : of.scores[files.name_of(file)];
    if (score > least_score && (of.folders.empty() || of.folders[files.folder_of(file)]))
      rows_.push_back({score, number, file});
  }
  sorted_ = typed_.letters.empty() ? rows_.size() : 0;
}

void file_chooser::search(typed_file_name const& typed) {
  bool const narrows = !typed_.letters.empty() && typed.letters.starts_with(typed_.letters);
  if (!typed_.folders.empty() || !typed.folders.empty()) shown_.clear();
  if (typed.letters != typed_.letters) wanted_ = std::make_unique<abbreviation>(typed.letters);
  typed_ = typed;
  rows_.clear();
  for (std::uint32_t number = 0; number < parts_.size(); ++number) {
    score(parts_[number], narrows);
    list(parts_[number], number);
  }
}

bool file_chooser::row::comes_before(row const& other) const {
  if (score != other.score) return score > other.score;
  return part != other.part ? part < other.part : file < other.file;
}

file_chooser::row const& file_chooser::sorted(std::size_t number) const {
  if (number >= sorted_) {
    auto const before = [](row const& a, row const& b) { return a.comes_before(b); };
    auto const begin = rows_.begin() + static_cast<std::ptrdiff_t>(sorted_);
    sorted_ = std::min(rows_.size(), std::max({rows_in_order, 2 * sorted_, 2 * number}));
    auto const end = rows_.begin() + static_cast<std::ptrdiff_t>(sorted_);
    if (end != rows_.end()) std::nth_element(begin, end, rows_.end(), before);
    std::sort(begin, end, before);
  }
  return rows_[number];
}

std::string file_chooser::path(std::size_t number) const {
  row const& found = sorted(number);
  return parts_[found.part].files->path(found.file);
}

std::optional<std::size_t> file_chooser::row_of(std::string_view path) const {
  for (std::uint32_t number = 0; number < parts_.size(); ++number) {
    part const& each = parts_[number];
    auto const [begin, end] = each.files->files_called(projects::name_of(path));
    for (auto file = begin; file != end; ++file) {
      if (each.files->folder(each.files->folder_of(*file)) != projects::folder_of(path)) continue;
      if (!is_listed(each, *file)) continue;
      row const wanted{each.scores.empty() ? 0 : each.scores[each.files->name_of(*file)], number,
                       *file};
      return std::count_if(rows_.begin(), rows_.end(),
                           [&](row const& other) { return other.comes_before(wanted); });
    }
  }
  return std::nullopt;
}

std::size_t file_chooser::components_shown(std::size_t number) const {
  row const& found = sorted(number);
  file_batch const& of = *parts_[found.part].files;
  std::string_view const name = of.name(of.name_of(found.file));
  if (auto const known = shown_.find(name); known != shown_.end()) return known->second;
  std::vector<std::string_view> heads;
  for (part const& each : parts_) {
    auto const [begin, end] = each.files->files_called(name);
    for (auto file = begin; file != end; ++file)
      if (is_listed(each, *file)) heads.push_back(each.files->folder(each.files->folder_of(*file)));
  }
  return shown_[std::string(name)] = heads.size() > 1 ? common_suffix(2, heads) : 0;
}

std::vector<std::size_t> file_chooser::mask(std::size_t number) const {
  row const& found = sorted(number);
  file_batch const& of = *parts_[found.part].files;
  std::string_view const name = of.name(of.name_of(found.file));
  return BriskStringRanker(unicode::to_utf16(name)).maskForAbbreviation(typed_.letters);
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
