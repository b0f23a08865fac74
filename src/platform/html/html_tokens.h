#pragma once

#include <string>
#include <string_view>

namespace platform {

/// Takes HTML apart as it comes, in pieces of any size, with bounded memory. All that comes in goes
/// out again to the sink, in its order and unchanged: only what a piece is, is said of it. Broken
/// HTML is as good as any other.
class html_tokens {
 public:
  class sink {
   public:
    /// Text as it stands, with its entities; a run of text may come in several pieces.
    virtual void text(std::string_view raw) = 0;
    /// A tag, with its "<" and ">"; `name` is in small letters.
    virtual void tag(std::string_view name, bool closes, std::string_view raw) = 0;
    /// Comments, declarations, and what stands in scripts, styles and such, in pieces.
    virtual void other(std::string_view raw) = 0;

   protected:
    ~sink() = default;
  };

  void put(std::string_view bytes, sink& to);
  /// Nothing comes after it: gives the sink what was held back.
  void finish(sink& to);

 private:
  enum class state { text, tag, comment, contents };

  std::string_view take(std::string_view rest, sink& to);
  std::string_view take_text(std::string_view rest, sink& to);
  std::string_view take_tag(std::string_view rest, sink& to);
  std::string_view take_comment(std::string_view rest, sink& to);
  std::string_view take_contents(std::string_view rest, sink& to);
  void begin_tag(std::string_view held);
  bool ends_tag(char c);

  state state_ = state::text;
  std::string held_;       // of a tag or comment that hasn't ended, or what could begin one
  std::string name_;       // of the tag, or what ends the comment
  char quote_ = '\0';      // that a value in the tag stands in
  bool is_value_ = false;  // a value of the tag begins
  bool is_long_ = false;   // the beginning of the tag or comment has gone out already
};

/// The character that an entity such as "&amp;" or "&#39;" stands for, as UTF-8; empty for one that
/// isn't known. `entity` includes "&" and ";".
std::string text_of_entity(std::string_view entity);
/// Where the entity at the beginning of `raw` ends; 0 if there is none.
std::size_t end_of_entity(std::string_view raw);

/// What stands in HTML, without tags, as text.
std::string text_of_html(std::string_view raw);
/// The value of the attribute, its name in small letters, of a tag; empty without it.
std::string attribute_of(std::string_view tag, std::string_view name);

/// Text as it stands in HTML, in quotes too.
std::string html_escaped(std::string_view text);

}  // namespace platform
