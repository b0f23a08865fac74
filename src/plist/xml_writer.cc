#include "plist/xml_writer.h"

#include <string_view>
#include <vector>

#include "plist/utf8.h"
#include "plist/xml_reader.h"
#include "plist/xml_scalars.h"

namespace plist {
namespace {

constexpr std::string_view header =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";

/// The length of the character at the start of `text`; 0 when XML can't hold it or it is no UTF-8.
std::size_t character_length(std::string_view text) {
  constexpr std::string_view allowed = "\t\n\r";
  if (static_cast<unsigned char>(text[0]) < 0x20 && allowed.find(text[0]) == allowed.npos) return 0;
  if (text.starts_with("\uFFFE") || text.starts_with("\uFFFF")) return 0;
  return utf8_length(text);
}

class writer {
 public:
  write_result write(value const& v) {
    out_ = header;
    write(v, 0);
    if (error_) return {{}, std::move(error_)};
    out_ += "</plist>\n";
    return {std::move(out_), {}};
  }

 private:
  void write(value const& v, int depth) {
    if (error_) return;
    indent(depth);
    switch (v.kind()) {
      case kind::none:
        return fail("nothing can't be written");
      case kind::boolean:
        out_ += v.boolean_or(false) ? "<true/>\n" : "<false/>\n";
        break;
      case kind::integer:
        put("integer", std::to_string(v.integer_or(0)));
        break;
      case kind::real:
        put("real", xml::format_real(v.real_or(0)));
        break;
      case kind::string:
        put_text("string", *v.as_string());
        break;
      case kind::date:
        put_date(*v.as_date());
        break;
      case kind::data:
        put("data", xml::format_base64(*v.as_data()));
        break;
      case kind::array:
        write_array(v.elements(), depth);
        break;
      case kind::dictionary:
        write_dictionary(v.entries(), depth);
        break;
    }
  }

  void write_array(array const& elements, int depth) {
    if (!enter(depth)) return;
    if (elements.empty()) {
      out_ += "<array/>\n";
      return;
    }
    out_ += "<array>\n";
    path_.emplace_back();
    for (std::size_t i = 0; i < elements.size(); ++i) {
      if (error_) return;
      path_.back() = {{}, i};
      write(elements[i], depth + 1);
    }
    path_.pop_back();
    indent(depth);
    out_ += "</array>\n";
  }

  void write_dictionary(dictionary const& entries, int depth) {
    if (!enter(depth)) return;
    if (entries.empty()) {
      out_ += "<dict/>\n";
      return;
    }
    out_ += "<dict>\n";
    path_.emplace_back();
    for (auto const& [key, content] : entries) {
      if (error_) return;
      path_.back() = {key, 0};
      indent(depth + 1);
      put_text("key", key);
      write(content, depth + 1);
    }
    path_.pop_back();
    indent(depth);
    out_ += "</dict>\n";
  }

  bool enter(int depth) {
    if (depth < max_depth) return true;
    fail("nested too deeply");
    return false;
  }

  void indent(int depth) { out_.append(static_cast<std::size_t>(depth), '\t'); }

  void put(std::string_view element, std::string_view content) {
    out_.append("<").append(element).append(">").append(content);
    out_.append("</").append(element).append(">\n");
  }

  void put_date(date when) {
    auto const text = xml::format_date(when);
    if (!text) return fail("a date outside of the years 1 to 9999 can't be written");
    put("date", *text);
  }

  void put_text(std::string_view element, std::string_view text) {
    std::string escaped;
    escaped.reserve(text.size());
    while (!text.empty()) {
      std::size_t const length = character_length(text);
      if (length == 0) return fail("a character that XML can't hold");
      switch (text[0]) {
        case '<':
          escaped += "&lt;";
          break;
        case '>':
          escaped += "&gt;";
          break;
        case '&':
          escaped += "&amp;";
          break;
        case '\r':
          escaped += "&#13;";
          break;  // a reader would make it a line feed
        default:
          escaped += text.substr(0, length);
      }
      text.remove_prefix(length);
    }
    put(element, escaped);
  }

  void fail(std::string_view why) {
    if (error_) return;
    std::string where;
    for (auto const& step : path_) {
      if (where.size() > 200) break;
      where +=
          step.key.data() ? "." + std::string(step.key) : "[" + std::to_string(step.index) + "]";
    }
    if (where.starts_with('.')) where.erase(0, 1);
    error_ = (where.empty() ? "" : where + ": ") + std::string(why);
  }

  struct step {
    std::string_view key;
    std::size_t index = 0;
  };

  std::string out_;
  std::vector<step> path_;
  std::optional<std::string> error_;
};

}  // namespace

write_result write_xml(value const& v) {
  return writer().write(v);
}

}  // namespace plist
