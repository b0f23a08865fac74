#include "projects/path_filter.h"

#include "platform/log.h"
#include "platform/utf.h"
#include "regex/onig_library.h"
#include "settings/store.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace projects {
namespace {

// As in the table of settings; what they match is told below without the engine, as it is asked of
// every name in a tree.
constexpr std::string_view known_file_pattern =
    "!(/\\.(?!htaccess)[^/]*|\\.(qnproj|o|pyc)|/Icon\\r|/svn-commit(\\.[2-9])?\\.tmp)$";
constexpr std::string_view known_folder_pattern =
    "!.*/(\\.[^/]*|CVS|_darcs|_MTN|\\{arch\\}|blib|.*~\\.nib|"
    ".*\\.(framework|app|pbproj|pbxproj|xcode(proj)?|bundle))$";

template <std::size_t N>
bool ends_with_one_of(std::string_view name, std::array<std::string_view, N> const& ends) {
  return std::any_of(ends.begin(), ends.end(), [&](auto end) { return name.ends_with(end); });
}

bool is_subversion_message(std::string_view name) {
  constexpr std::string_view begin = "svn-commit", end = ".tmp";
  if (!name.starts_with(begin) || !name.ends_with(end)) return false;
  name.remove_prefix(begin.size());
  if (name.size() == end.size()) return true;
  return name.size() == end.size() + 2 && name[0] == '.' && '2' <= name[1] && name[1] <= '9';
}

bool known_pattern_has_file(std::string_view name) {
  if (name.starts_with('.') && !name.starts_with(".htaccess")) return true;
  constexpr std::array<std::string_view, 3> ends = {".qnproj", ".o", ".pyc"};
  return ends_with_one_of(name, ends) || name == "Icon\r" || is_subversion_message(name);
}

bool known_pattern_has_folder(std::string_view name) {
  constexpr std::array<std::string_view, 5> names = {"CVS", "_darcs", "_MTN", "{arch}", "blib"};
  constexpr std::array<std::string_view, 8> ends = {
      "~.nib", ".framework", ".app", ".pbproj", ".pbxproj", ".xcode", ".xcodeproj", ".bundle"};
  return name.starts_with('.') || std::find(names.begin(), names.end(), name) != names.end() ||
         ends_with_one_of(name, ends);
}

}  // namespace

path_filter::known_form path_filter::known_form_of(std::string_view pattern) {
  return pattern == known_file_pattern     ? known_pattern_has_file
         : pattern == known_folder_pattern ? known_pattern_has_folder
                                           : nullptr;
}

path_filter::path_filter(std::string pattern)
    : pattern_(std::move(pattern)), known_(known_form_of(pattern_)) {
  if (pattern_.empty()) return;
  leaves_out_ = pattern_.front() == '!';
  std::u16string const source = unicode::to_utf16(std::string_view(pattern_).substr(leaves_out_));
  try {
    compiled_.emplace(source.data(), source.data() + source.size(), ONIG_OPTION_NEGATE_SINGLELINE);
  } catch (std::invalid_argument const& fault) {
    platform::log_once(std::string("a pattern of a project's folder takes everything: ") +
                       fault.what());
  }
}

bool path_filter::passes(std::string_view path) const {
  if (!compiled_) return true;
  // "$" matches at the end of any line, so a name of several lines needs the engine.
  if (known_ != nullptr && path.find('\n') == path.npos)
    return known_(path.substr(path.rfind('/') + 1)) != leaves_out_;
  std::u16string const units = unicode::to_utf16(path);
  auto const found =
      oniguruma::find(units.data(), 0, static_cast<std::ptrdiff_t>(units.size()), &*compiled_);
  return static_cast<bool>(found) != leaves_out_;
}

filter_patterns filter_patterns::standard() {
  return {settings::store().string("WynFolderReferenceFilePattern"),
          settings::store().string("WynFolderReferenceFolderPattern")};
}

}  // namespace projects
