#include "bundles/check_bundle.h"

#include "bundles/item_file.h"
#include "bundles/item_kinds.h"
#include "grammar/scope_selector.h"
#include "platform/replace_file.h"
#include "platform/utf.h"
#include "plist/xml_reader.h"
#include "regex/oniguruma.h"

#include <sys/stat.h>

#include <cstring>
#include <ctime>
#include <map>
#include <set>
#include <stdexcept>

namespace bundles {
namespace {

using way = std::vector<std::string>;
using types = std::map<std::string, plist::kind, std::less<>>;

constexpr auto string = plist::kind::string;
constexpr auto array = plist::kind::array;
constexpr auto dictionary = plist::kind::dictionary;
constexpr auto anything = plist::kind::none;  // numbers and booleans, which stand for each other

types const rule_types = {{"name", string},
                          {"scopeName", string},
                          {"match", string},
                          {"begin", string},
                          {"end", string},
                          {"swallow", string},
                          {"contentName", string},
                          {"include", string},
                          {"comment", string},
                          {"patterns", array},
                          {"captures", dictionary},
                          {"beginCaptures", dictionary},
                          {"endCaptures", dictionary},
                          {"repository", dictionary},
                          {"applyEndPatternLast", anything},
                          {"disabled", anything},
                          {"fileTypes", array},
                          {"firstLineMatch", string},
                          {"foldingStartMarker", string},
                          {"foldingStopMarker", string}};
types const item_types = {{"uuid", string},
                          {"name", string},
                          {"scope", string},
                          {"keyEquivalent", string},
                          {"tabTrigger", string},
                          {"mouseGesture", string},
                          {"draggedFileExtensions", array},
                          {"bundleUUID", string}};
types const bundle_types = {{"uuid", string},    {"name", string},   {"mainMenu", dictionary},
                            {"ordering", array}, {"deleted", array}, {"disabled", array}};

// In the kinds of which the keys are all known; others have more than the program looks at.
types const preference_types = {{"settings", dictionary}, {"comment", string}};

char const* name_of(plist::kind k) {
  return k == string ? "a string" : k == array ? "an array" : "a dictionary";
}

/// Lines on which patterns go wrong: long runs, repeated words, brackets that stay open.
std::vector<std::u16string> const& generated_lines() {
  static std::vector<std::u16string> const lines = [] {
    std::vector<std::u16string> result;
    for (char16_t const* piece :
         {u"a", u" ", u"0", u"\"", u"(", u"a ", u"a1_", u"<a b=\"c\" ", u"\\\\", u"/*", u"x.y, "}) {
      std::u16string line;
      while (line.size() < 2000) line += piece;
      result.push_back(line + u"!");
    }
    return result;
  }();
  return lines;
}
constexpr double time_budget = 0.25;  // seconds of the processor, for one pattern on one line

class file_check {
 public:
  file_check(std::string file, std::vector<bundle_fault>& faults)
      : file_(std::move(file)), faults_(faults) {}

  bool read() {
    std::string bytes;
    if (int const error = platform::read_file(file_, bytes, platform::file_calls::system()))
      return tell(0, "", std::strerror(error));
    plist::read_result result = plist::read_xml(bytes, bytes.size(), &lines_);
    if (result.error) return tell(result.error->line, "", result.error->message);
    if (!result.value.as_dictionary()) return tell(1, "", "the property list is no dictionary");
    content_ = std::move(result.value);
    return true;
  }
  plist::value const& content() const { return content_; }

  void item(std::string_view kind) {
    bool const delta = content_["isDelta"].integer_or(0) != 0;
    if (content_["uuid"].string_or("").empty()) at({"uuid"}, "is missing");
    if (content_["name"].string_or("").empty() && !delta) at({"name"}, "is missing");
    typed(content_, {}, kind == "bundle" ? bundle_types : item_types);
    selector(content_["scope"]);
    if (delta) return;
    if (kind == "preference") {
      typed(content_, {}, preference_types);
      if (!content_["settings"].as_dictionary()) at({"settings"}, "is no dictionary");
    }
    if (kind == "snippet" && !content_["content"].as_string()) at({"content"}, "is no string");
    if (kind == "preference" || kind == "language") unknown(content_, {}, kind);
  }

  void grammar(std::set<std::string> const& languages) {
    languages_ = &languages;
    if (content_["scopeName"].string_or("").empty()) at({"scopeName"}, "is missing");
    rule(content_, {});
    for (char const* key : {"firstLineMatch", "foldingStartMarker", "foldingStopMarker"})
      pattern(content_, {}, key);
  }

 private:
  bool tell(std::size_t line, std::string key, std::string reason) {
    faults_.push_back({file_, line, std::move(key), std::move(reason)});
    return false;
  }
  void at(way const& to, std::string reason) {
    std::string key;
    for (std::string const& step : to) key += (key.empty() ? "" : ".") + step;
    way known = to;
    while (!known.empty() && !lines_.contains(known)) known.pop_back();
    auto const found = lines_.find(known);
    tell(found == lines_.end() ? 1 : found->second, key, std::move(reason));
  }
  static way below(way to, std::string step) {
    to.push_back(std::move(step));
    return to;
  }

  void typed(plist::value const& entries, way const& to, types const& expected) {
    for (auto const& [key, kind] : expected) {
      plist::value const& v = entries[key];
      if (v && kind != anything && v.kind() != kind)
        at(below(to, key), std::string("is not ") + name_of(kind));
      if (v && kind == anything && (v.as_array() || v.as_dictionary()))
        at(below(to, key), "is no number");
    }
  }
  void unknown(plist::value const& entries, way const& to, std::string_view kind) {
    for (auto const& [key, v] : entries.entries()) {
      bool const of_item = to.empty() && item_types.contains(key);
      bool const known =
          kind == "preference" ? preference_types.contains(key) : rule_types.contains(key);
      if (!known && !of_item) at(below(to, key), "unknown key");
    }
  }
  void selector(plist::value const& v) {
    std::string reason;
    if (v.as_string() && !scope::parse_selector(*v.as_string(), &reason))
      at({"scope"}, "invalid scope selector: " + reason);
  }

  void rule(plist::value const& r, way const& to) {
    if (!r.as_dictionary()) return at(to, "the rule is no dictionary");
    typed(r, to, rule_types);
    if (!to.empty()) unknown(r, to, "language");
    if (r["match"] && r["patterns"]) at(to, "a match-rule cannot have sub-patterns");
    if (r["match"] && r["begin"]) at(to, "rule cannot have both begin and match key");
    if (r["begin"] && !r["end"]) at(to, "begin/end-rule has no end-pattern");
    if (r["swallow"] && !r["begin"])
      at(to, "swallow pattern can only be used with begin/end-rules");
    for (char const* key : {"match", "begin", "end", "swallow"}) pattern(r, to, key);
    include(r["include"], to);
    std::size_t n = 0;
    for (plist::value const& child : r["patterns"].elements())
      rule(child, below(below(to, "patterns"), std::to_string(n++)));
    for (auto const& [name, child] : r["repository"].entries())
      rule(child, below(below(to, "repository"), name));
  }

  void include(plist::value const& v, way const& to) {
    auto const* const name = v.as_string();
    if (name == nullptr) return;
    bool const found = name->starts_with('#')
                           ? static_cast<bool>(content_["repository"][name->substr(1)])
                       : name->starts_with('$') ? *name == "$self" || *name == "$base"
                                                : languages_->contains(*name);
    if (!found) at(below(to, "include"), "didn't find rule " + *name);
  }

  void pattern(plist::value const& entries, way const& to, char const* key) {
    auto const* const text = entries[key].as_string();
    if (text == nullptr) return;
    std::u16string source = unicode::to_utf16(*text);
    // Groups of the begin pattern are put in at run time; any text stands for them here.
    for (std::size_t i = 0; std::string_view(key) == "end" && i + 1 < source.size(); ++i) {
      if (source[i] != u'\\') continue;
      bool const refers = source[i + 1] >= u'0' && source[i + 1] <= u'9';
      if (refers) source.replace(i, 2, u"x");
      if (!refers) ++i;
    }
    try {
      constexpr unsigned capture_group = 256;
      oniguruma::ptrn_t const ptrn(source.data(), source.data() + source.size(), capture_group);
      for (std::u16string const& line : generated_lines()) {
        std::clock_t const begin = std::clock();
        auto const match = oniguruma::find(line.data(), 0, std::ptrdiff_t(line.size()), &ptrn);
        bool const slow = double(std::clock() - begin) / CLOCKS_PER_SEC > time_budget;
        if (!slow && !match.gave_up()) continue;
        return at(below(to, key), "takes too long on a line such as \"" +
                                      unicode::to_utf8(line.substr(0, 20)) + "...\"");
      }
    } catch (std::invalid_argument const& error) {
      at(below(to, key), std::string("invalid regular expression: ") + error.what());
    }
  }

  std::string file_;
  std::vector<bundle_fault>& faults_;
  plist::value content_;
  plist::value_lines lines_;
  std::set<std::string> const* languages_ = nullptr;
};

}  // namespace

std::vector<bundle_fault> check_bundle(std::string const& directory,
                                       std::vector<std::string> const& other_languages) {
  std::vector<bundle_fault> faults;
  file_check info(directory + "/info.plist", faults);
  if (info.read()) info.item("bundle");
  std::set<std::string> languages(other_languages.begin(), other_languages.end());
  std::map<std::string, std::string> files_by_uuid;
  std::vector<file_check> grammars;
  for (item_kind const& k : item_kinds) {
    std::string const folder = directory + "/" + std::string(k.directory);
    for (std::string const& name : visible_names(folder)) {
      if (!is_item_file(name)) continue;
      std::string const file = folder + "/" + name + (k.kind == "template" ? "/info.plist" : "");
      file_check item(file, faults);
      if (!item.read()) continue;
      item.item(k.kind);
      std::string const uuid = item.content()["uuid"].string_or("");
      auto const [first, is_new] = files_by_uuid.emplace(uuid, file);
      if (!is_new)
        faults.push_back({
            file,
            1,
            "uuid",
            "is that of " + first->second,
        });
      if (k.kind != "language") continue;
      for (char const* key : {"name", "scopeName"})
        languages.insert(item.content()[key].string_or(""));
      grammars.push_back(std::move(item));
    }
  }
  for (file_check& grammar : grammars) grammar.grammar(languages);
  return faults;
}

std::string description(bundle_fault const& fault) {
  return fault.file + ":" + (fault.line != 0 ? std::to_string(fault.line) + ":" : "") + " " +
         (fault.key.empty() ? "" : fault.key + ": ") + fault.reason;
}

}  // namespace bundles
