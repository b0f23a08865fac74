#include "plist/xml_reader.h"

#include <expat.h>

#include <algorithm>
#include <array>
#include <exception>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "plist/blanks.h"
#include "plist/xml_scalars.h"

namespace plist {
namespace {

enum class element { plist, array, dictionary, key, string, integer, real, yes, no, date, data };

struct element_name {
  std::string_view name;
  element what;
};

constexpr std::array<element_name, 11> element_names = {{
    {"plist", element::plist},
    {"array", element::array},
    {"dict", element::dictionary},
    {"key", element::key},
    {"string", element::string},
    {"integer", element::integer},
    {"real", element::real},
    {"true", element::yes},
    {"false", element::no},
    {"date", element::date},
    {"data", element::data},
}};

element_name const* find_element(std::string_view name) {
  auto const found = std::find_if(element_names.begin(), element_names.end(),
                                  [&](auto const& e) { return e.name == name; });
  return found == element_names.end() ? nullptr : found;
}

std::string_view name_of(element e) {
  return element_names[static_cast<std::size_t>(e)].name;
}

std::string quoted(std::string_view text) {
  constexpr std::size_t longest = 40;
  if (text.size() <= longest) return "\"" + std::string(text) + "\"";
  std::size_t cut = longest;
  while ((text[cut] & 0xC0) == 0x80) --cut;
  return "\"" + std::string(text.substr(0, cut)) + "...\"";
}

/// Strings and dictionaries that were read lately. Those that come again, as the steps of a long
/// macro do, share one value.
class known_values {
 public:
  value const& string(std::string_view text) {
    last_hash_ = std::hash<std::string_view>()(text);
    value& known = strings_[last_hash_ % strings_.size()];
    auto const* const content = known.as_string();
    if (content == nullptr || *content != text) known = value(text);
    return known;
  }
  /// Takes the entries only if they are new; those that are equal mostly end in the same string.
  value const& dictionary(plist::dictionary& entries) {
    value& known = dictionaries_[(last_hash_ + entries.size()) % dictionaries_.size()];
    auto const* const content = known.as_dictionary();
    if (content == nullptr || *content != entries) known = value(std::move(entries));
    return known;
  }

 private:
  std::array<value, 256> strings_;
  std::array<value, 64> dictionaries_;
  std::size_t last_hash_ = 0;
};

/// A container whose end has not come yet, with what it holds so far.
struct open_element {
  element what;
  array elements;
  dictionary entries;
  std::optional<std::string> key;  // of the dictionary entry whose value comes next
};

class reader {
 public:
  explicit reader(value_lines* lines) : parser_(XML_ParserCreate(nullptr)), lines_(lines) {
    if (!parser_) throw std::bad_alloc();
    XML_SetUserData(parser_.get(), this);
    XML_SetElementHandler(parser_.get(), on_start, on_end);
    XML_SetCharacterDataHandler(parser_.get(), on_text);
    XML_SetStartDoctypeDeclHandler(parser_.get(), on_doctype);
    XML_SetEntityDeclHandler(parser_.get(), on_entity);
    XML_SetSkippedEntityHandler(parser_.get(), on_skipped_entity);
  }

  read_result read(std::string_view bytes) {
    constexpr std::size_t chunk = std::size_t{1} << 20;
    bool last = false;
    for (std::size_t at = 0; !last; at += chunk) {
      std::string_view const part = bytes.substr(at, chunk);
      last = at + part.size() == bytes.size();
      auto const status =
          XML_Parse(parser_.get(), part.data(), static_cast<int>(part.size()), last);
      if (thrown_) std::rethrow_exception(thrown_);
      if (status != XML_STATUS_OK && !error_)
        fail(XML_ErrorString(XML_GetErrorCode(parser_.get())));
      if (error_) return {{}, std::move(error_)};
    }
    return {std::move(result_), {}};
  }

 private:
  struct free_parser {
    void operator()(XML_Parser p) const { XML_ParserFree(p); }
  };

  // Exceptions must not pass through expat, which is C.
  template <typename Function>
  static void guarded(void* self, Function function) {
    auto& r = *static_cast<reader*>(self);
    if (r.error_ || r.thrown_) return;
    try {
      function(r);
    } catch (...) {
      r.thrown_ = std::current_exception();
      XML_StopParser(r.parser_.get(), XML_FALSE);
    }
  }

  static void on_start(void* self, char const* name, char const** attributes) {
    guarded(self, [&](reader& r) { r.start(name, attributes); });
  }

  static void on_end(void* self, char const*) {
    guarded(self, [](reader& r) { r.end(); });
  }

  static void on_text(void* self, char const* text, int length) {
    guarded(self, [&](reader& r) { r.text({text, static_cast<std::size_t>(length)}); });
  }

  static void on_doctype(void* self, char const* name, char const*, char const*, int has_subset) {
    guarded(self, [&](reader& r) {
      if (has_subset) r.fail("the document type must not declare anything");
      if (std::string_view(name) != "plist") r.fail("the document type is not plist");
    });
  }

  static void on_entity(void* self, char const*, int, char const*, int, char const*, char const*,
                        char const*, char const*) {
    guarded(self, [](reader& r) { r.fail("entities must not be declared"); });
  }

  static void on_skipped_entity(void* self, char const* name, int) {
    guarded(self, [&](reader& r) { r.fail("undefined entity " + quoted(name)); });
  }

  void fail(std::string message) {
    if (error_) return;
    error_ = {XML_GetCurrentLineNumber(parser_.get()),
              XML_GetCurrentColumnNumber(parser_.get()) + 1, std::move(message)};
    XML_StopParser(parser_.get(), XML_FALSE);
  }

  void start(std::string_view name, char const** attributes) {
    element_name const* found = find_element(name);
    if (!found) return fail("unknown element " + quoted(name));
    if (!check_attributes(found->what, attributes) || !check_place(found->what)) return;
    bool const nests = found->what == element::array || found->what == element::dictionary;
    if (nests && open_.size() > max_depth) return fail("nested too deeply");
    if (lines_ && found->what != element::key) note_line();
    text_.clear();
    if (nests || found->what == element::plist)
      open_.push_back({found->what, {}, {}, {}});
    else
      scalar_ = found->what;
  }

  void note_line() {
    std::vector<std::string> way;
    for (open_element const& e : open_) {
      if (e.key) way.push_back(*e.key);
      if (e.what == element::array) way.push_back(std::to_string(e.elements.size()));
    }
    lines_->insert_or_assign(std::move(way), XML_GetCurrentLineNumber(parser_.get()));
  }

  bool check_attributes(element what, char const** attributes) {
    for (; *attributes; attributes += 2) {
      if (what == element::plist && std::string_view(*attributes) == "version") continue;
      fail("unknown attribute " + quoted(*attributes));
      return false;
    }
    return true;
  }

  bool check_place(element what) {
    auto const refuse = [&](std::string why) {
      fail(std::move(why));
      return false;
    };
    if (scalar_) return refuse("an element inside of " + std::string(name_of(*scalar_)));
    if (open_.empty())
      return what == element::plist || refuse("the outermost element must be plist");
    open_element const& parent = open_.back();
    bool const in_dictionary = parent.what == element::dictionary;
    if (what == element::plist) return refuse("plist inside of another element");
    if (what == element::key) {
      if (!in_dictionary) return refuse("a key outside of a dictionary");
      return !parent.key || refuse("the key " + quoted(*parent.key) + " has no value");
    }
    if (in_dictionary) return parent.key || refuse("a value without a key");
    return parent.what == element::array || !result_ ||
           refuse("more than one value at the top level");
  }

  void text(std::string_view text) {
    element const what = scalar_.value_or(open_.back().what);
    switch (what) {
      case element::plist:
      case element::array:
      case element::dictionary:
      case element::yes:
      case element::no:
        if (!trimmed(text).empty()) fail("text inside of " + std::string(name_of(what)));
        break;
      default:
        text_ += text;
    }
  }

  void end() {
    if (scalar_) return end_scalar(*std::exchange(scalar_, std::nullopt));
    open_element done = std::move(open_.back());
    open_.pop_back();
    if (done.what == element::plist) {
      if (!result_) fail("no value");
    } else if (done.what == element::array) {
      add(std::move(done.elements));
    } else if (done.key) {
      fail("the key " + quoted(*done.key) + " has no value");
    } else {
      add(known_.dictionary(done.entries));
    }
  }

  void end_scalar(element what) {
    switch (what) {
      case element::plist:
      case element::array:
      case element::dictionary:
        break;  // are no scalars
      case element::key:
        open_.back().key = text_;
        break;
      case element::string:
        return add(known_.string(text_));
      case element::yes:
        return add(true);
      case element::no:
        return add(false);
      case element::integer:
        return add(what, xml::parse_integer(trimmed(text_)));
      case element::real:
        return add(what, xml::parse_real(trimmed(text_)));
      case element::date:
        return add(what, xml::parse_date(trimmed(text_)));
      case element::data:
        return add(what, xml::parse_base64(text_));
    }
  }

  template <typename T>
  void add(element source, std::optional<T> parsed) {
    if (parsed) return add(value(std::move(*parsed)));
    fail("not a valid " + std::string(name_of(source)) + ": " + quoted(text_));
  }

  void add(value v) {
    open_element& parent = open_.back();
    if (parent.what == element::plist) {
      result_ = std::move(v);
    } else if (parent.what == element::array) {
      parent.elements.push_back(std::move(v));
    } else {
      parent.entries.insert_or_assign(std::move(*parent.key), std::move(v));
      parent.key.reset();
    }
  }

  std::unique_ptr<XML_ParserStruct, free_parser> parser_;
  std::vector<open_element> open_;
  std::optional<element> scalar_;  // the innermost element, which can't hold others
  std::string text_;               // of that
  known_values known_;
  value_lines* lines_;
  value result_;
  std::optional<read_error> error_;
  std::exception_ptr thrown_;
};

}  // namespace

read_result read_xml(std::string_view bytes, std::size_t max_size, value_lines* lines) {
  if (bytes.size() > max_size)
    return {{}, read_error{1, 1, "larger than " + std::to_string(max_size) + " bytes"}};
  return reader(lines).read(bytes);
}

}  // namespace plist
