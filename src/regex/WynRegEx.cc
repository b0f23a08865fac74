#include "regex/WynRegEx.h"

#include <map>
#include <mutex>
#include <stdexcept>

#include "platform/log.h"
#include "platform/utf.h"
#include "regex/find.h"
#include "regex/onig_library.h"
#include "regex/oniguruma.h"

namespace regex {
namespace {

using compiled = std::optional<oniguruma::ptrn_t>;

compiled compile(std::string_view pattern, std::string& fault) {
  std::u16string const units = unicode::to_utf16(pattern);
  try {
    return oniguruma::ptrn_t(units.data(), units.data() + units.size(),
                             ONIG_OPTION_NEGATE_SINGLELINE);
  } catch (std::invalid_argument const& e) {
    // "MESSAGE for pattern SOURCE"
    std::string_view const what = e.what();
    std::string const message(what.substr(0, what.rfind(" for pattern " + std::string(pattern))));
    fault = "“" + message + " for pattern " + std::string(pattern) + "”";
    return std::nullopt;
  }
}

/// Each pattern is compiled once in a process, and its fault is reported to the first caller.
compiled const& known(std::string_view pattern, std::string& fault) {
  static std::map<std::string, compiled, std::less<>> RegExCache;
  static std::mutex mutex;
  std::lock_guard const lock(mutex);
  auto entry = RegExCache.find(pattern);
  if (entry == RegExCache.end())
    entry =
        RegExCache.emplace(pattern, compile(pattern.substr(pattern.front() == '!'), fault)).first;
  return entry->second;
}

}  // namespace

bool isEqualToRegEx(std::string_view string, std::string_view pattern) {
  if (pattern.empty()) return false;
  bool const negate = pattern.front() == '!';
  std::string fault;
  compiled const& ptrn = known(pattern, fault);
  if (!fault.empty()) platform::log_text("Quirnote regular expression error: " + fault + "\n");
  if (!ptrn) return !negate;
  std::u16string const units = unicode::to_utf16(string);
  bool const matched = static_cast<bool>(
      oniguruma::find(units.data(), 0, static_cast<std::ptrdiff_t>(units.size()), &*ptrn));
  return matched != negate;
}

bool isRegEx(std::string_view pattern, std::string& fault) {
  return pattern.empty() || known(pattern, fault);
}

std::optional<std::vector<std::string>> componentsInRegEx(std::string_view string,
                                                          std::string_view pattern) {
  std::u16string const units = unicode::to_utf16(string), source = unicode::to_utf16(pattern);
  regex::nfa<char16_t> const nfa(source.data(), source.data() + source.size());
  auto const m = regex::find(units.begin(), units.end(), nfa);
  if (!m) return std::nullopt;
  std::vector<std::string> result;
  for (std::size_t n = 0; n < m.size(); ++n) {
    result.push_back(unicode::to_utf8(std::u16string(m.begin(n), m.end(n))));
  }
  return result;
}

}  // namespace regex
