#include "bundles/check/check_bundle.h"

#include "bundles/check/known_keys.h"
#include "bundles/check/type_check.h"
#include "bundles/files/item_kinds.h"
#include "grammar/scope_selector.h"
#include "path/path.h"
#include "path/tree.h"
#include "platform/system/replace_file.h"
#include "platform/utf.h"
#include "plist/xml_reader.h"
#include "regex/oniguruma.h"
#include "regex/transformation_program.h"
#include "snippets/parse_snippet.h"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <map>
#include <set>
#include <stdexcept>

namespace bundles {
namespace {

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
constexpr double time_budget = 0.25;     // seconds of the processor, for one pattern on one line
constexpr std::size_t max_groups = 256;  // within one another, as the tokenizer has it

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

  void item(item_kind kind) {
    bool const delta = content_["isDelta"].integer_or(0) != 0;
    if (content_["uuid"].string_or("").empty()) at({"uuid"}, "is missing");
    auto const tell = [this](way const& to, std::string const& reason) { at(to, reason); };
    if (delta) return check_types(content_, kind, tell);
    if (content_["name"].string_or("").empty()) at({"name"}, "is missing");
    // Those of grammars are looked at when it is known which languages there are.
    if (kind != item_kind::language) entries(content_, {}, keys_of_kind(kind));
    for (auto const& [of, key] : {std::pair(item_kind::preference, "settings"),
                                  {item_kind::snippet, "content"},
                                  {item_kind::command, "command"},
                                  {item_kind::drag_command, "command"},
                                  {item_kind::macro, "commands"},
                                  {item_kind::file_template, "command"}})
      if (kind == of && !content_[key]) at({key}, "is missing");
    if (kind == item_kind::preference) settings(content_["settings"], {"settings"});
    if (kind == item_kind::snippet) snippet_text(content_["content"].string_or(""));
  }

  void grammar(std::set<std::string> const& languages) {
    languages_ = &languages;
    key_types keys = rule_keys();
    for (auto const& key : keys_of_kind(item_kind::language)) keys.insert(key);
    if (content_["scopeName"].string_or("").empty()) at({"scopeName"}, "is missing");
    rule(content_, {}, keys);
    std::vector<std::string> open;
    group("$self", open);
    for (auto const& [name, rule] : content_["repository"].entries()) group("#" + name, open);
  }

  /// What the bundle lists must be its own.
  void lists(std::map<std::string, std::string> const& items) {
    plist::value const& menu = content_["mainMenu"];
    if (content_["isDelta"].integer_or(0) != 0) return;
    auto const look = [&](plist::value const& list, way const& to) {
      std::size_t n = 0;
      for (plist::value const& element : list.elements()) {
        std::string const uuid = element.string_or("");
        if (!items.contains(uuid) && uuid != menu_separator && !menu["submenus"][uuid])
          at(below(to, std::to_string(n)), "names no item of the bundle");
        ++n;
      }
    };
    look(content_["ordering"], {"ordering"});
    for (char const* key : {"items", "excludedItems"}) look(menu[key], {"mainMenu", key});
    for (auto const& [group, submenu] : menu["submenus"].entries())
      look(submenu["items"], {"mainMenu", "submenus", group, "items"});
  }

  void theme() {
    if (content_["name"].string_or("").empty()) at({"name"}, "is missing");
    entries(content_, {}, theme_keys());
    std::size_t n = 0;
    for (plist::value const& rule : content_["settings"].elements()) {
      way const to = {"settings", std::to_string(n++)};
      if (!rule.as_dictionary()) {
        at(to, "is no dictionary");
        continue;
      }
      entries(rule, to, theme_rule_keys());
      settings(rule["settings"], below(to, "settings"));
    }
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

  void entries(plist::value const& table, way const& to, key_types const& known) {
    for (auto const& [key, v] : table.entries()) {
      auto const type = known.find(key);
      if (type == known.end())
        at(below(to, key), "unknown key");
      else
        value(v, below(to, key), type->second);
    }
  }

  void settings(plist::value const& table, way const& to) {
    if (table.as_dictionary()) entries(table, to, setting_keys());
  }

  void value(plist::value const& v, way const& to, content_type type) {
    using enum content_type;
    auto const tell = [this](way const& part, std::string const& reason) { at(part, reason); };
    if (!check_type(v, to, type, tell)) return;
    auto const& choices = choices_for(to.back());
    auto const choose = [&](plist::value const& chosen, way const& where) {
      std::string const word = chosen.string_or("");
      if (!choices.empty() && std::find(choices.begin(), choices.end(), word) == choices.end())
        at(where, "cannot be \"" + word + "\"");
    };
    std::size_t n = 0;
    for (plist::value const& each : v.elements()) choose(each, below(to, std::to_string(n++)));
    if (!v.as_string()) return;
    choose(v, to);
    std::string const& string = *v.as_string();
    std::string reason;
    if (type == pattern || type == end_pattern) expression(string, to, type == end_pattern);
    if (type == selector && !scope::parse_selector(string, &reason))
      at(to, "invalid scope selector: " + reason);
    if (type == key_event && !is_key(string)) at(to, "is no key");
    if (type == gesture && !is_gesture(string)) at(to, "is no sequence of U, D, L and R");
    if (type != program) return;
    if (regex::transformation_program const parsed(string); !parsed.fault().empty())
      at(to, parsed.fault());
  }

  // One character after the letters for modifiers.
  static bool is_key(std::string const& text) {
    std::size_t last = text.size();
    while (last > 0 && (text[--last] & 0xC0) == 0x80) continue;
    return text.substr(0, last).find_first_not_of("#^~$@") == text.npos;
  }

  // Two strokes of one direction are one.
  static bool is_gesture(std::string const& text) {
    return !text.empty() && text.find_first_not_of("UDLR") == text.npos &&
           std::adjacent_find(text.begin(), text.end()) == text.end();
  }

  void snippet_text(std::string const& text) {
    std::string fault;
    std::vector<std::string> warnings;
    if (!snippet::parse(text, {}, fault, warnings)) warnings = {fault};
    for (std::string const& warning : warnings) at({"content"}, warning);
  }

  void rule(plist::value const& r, way const& to, key_types const& keys) {
    if (!r.as_dictionary()) return at(to, "the rule is no dictionary");
    entries(r, to, keys);
    if (r["match"] && r["patterns"]) at(to, "a match-rule cannot have sub-patterns");
    if (r["match"] && r["begin"]) at(to, "rule cannot have both begin and match key");
    if (r["begin"] && !r["end"]) at(to, "begin/end-rule has no end-pattern");
    if (r["swallow"] && !r["begin"])
      at(to, "swallow pattern can only be used with begin/end-rules");
    if (r["applyEndPatternFirst"] && !r["begin"])
      at(to, "applyEndPatternFirst can only be used with begin/end-rules");
    include(r["include"], to);
    std::size_t n = 0;
    for (plist::value const& child : r["patterns"].elements())
      rule(child, below(below(to, "patterns"), std::to_string(n++)), rule_keys());
    for (auto const& [name, child] : r["repository"].entries())
      rule(child, below(below(to, "repository"), name), rule_keys());
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

  /// Looks for groups that include themselves in one that is included as `key`; `open` are those
  /// in which it is.
  void group(std::string const& key, std::vector<std::string>& open) {
    bool const is_root = key == "$self";
    plist::value const& found = is_root ? content_ : content_["repository"][key.substr(1)];
    if (found["match"] || found["begin"] || !followed_.insert(key).second) return;
    way const to = is_root ? way() : way{"repository", key.substr(1)};
    open.push_back(key);
    std::size_t n = 0;
    for (plist::value const& child : found["patterns"].elements()) {
      way const here = below(below(below(to, "patterns"), std::to_string(n++)), "include");
      std::string const name = child["include"].string_or("");
      std::string const inner = name == "$base" ? "$self" : name;
      if (inner != "$self" && !inner.starts_with('#')) continue;
      if (std::find(open.begin(), open.end(), inner) != open.end())
        at(here, name + " includes itself");
      else if (open.size() >= max_groups)
        at(here, "groups include each other too deeply");
      else
        group(inner, open);
    }
    open.pop_back();
  }

  void expression(std::string const& text, way const& to, bool has_references) {
    std::u16string source = unicode::to_utf16(text);
    // Groups of the begin pattern are put in at run time; any text stands for them here.
    for (std::size_t i = 0; has_references && i + 1 < source.size(); ++i) {
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
        return at(to, "takes too long on a line such as \"" + unicode::to_utf8(line.substr(0, 20)) +
                          "...\"");
      }
    } catch (std::invalid_argument const& error) {
      at(to, std::string("invalid regular expression: ") + error.what());
    }
  }

  std::string file_;
  std::vector<bundle_fault>& faults_;
  plist::value content_;
  plist::value_lines lines_;
  std::set<std::string> const* languages_ = nullptr;
  std::set<std::string> followed_;  ///< groups that were looked at
};

}  // namespace

std::vector<bundle_fault> check_bundle(std::string const& directory,
                                       std::vector<std::string> const& other_languages) {
  std::vector<bundle_fault> faults;
  if (lowercase_extension(directory) == "qntheme") {
    if (file_check theme(directory, faults); theme.read()) theme.theme();
    return faults;
  }
  file_check info(directory + "/info.plist", faults);
  bool const has_info = info.read();
  if (has_info) info.item(item_kind::bundle);
  std::set<std::string> languages(other_languages.begin(), other_languages.end());
  std::map<std::string, std::string> files_by_uuid;
  std::vector<file_check> grammars;
  for (kind_row const& k : item_kinds) {
    std::string const folder = directory + "/" + std::string(k.directory);
    for (std::string const& name : path::visible_names(folder)) {
      if (!is_item_file(name)) continue;
      std::string const file =
          folder + "/" + name + (k.kind == item_kind::file_template ? "/info.plist" : "");
      file_check item(file, faults);
      if (!item.read()) continue;
      item.item(k.kind);
      std::string const uuid = item.content()["uuid"].string_or("");
      auto const [first, is_new] = files_by_uuid.emplace(uuid, file);
      if (!is_new) faults.push_back({file, 1, "uuid", "is that of " + path::name(first->second)});
      if (k.kind != item_kind::language) continue;
      for (char const* key : {"name", "scopeName"})
        languages.insert(item.content()[key].string_or(""));
      grammars.push_back(std::move(item));
    }
  }
  for (file_check& grammar : grammars) grammar.grammar(languages);
  if (has_info) info.lists(files_by_uuid);
  return faults;
}

std::string description(bundle_fault const& fault) {
  return fault.file + ":" + (fault.line != 0 ? std::to_string(fault.line) + ":" : "") + " " +
         (fault.key.empty() ? "" : fault.key + ": ") + fault.reason;
}

}  // namespace bundles
