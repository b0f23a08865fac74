#pragma once

#include "commands/output_places.h"
#include "platform/html/html_tokens.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace commands {

/// Makes links of the places in files that the lines of HTML output name, as the output comes. A
/// link is a "qn-open:" URL; text in links, scripts and such is left as it is.
class link_places final : private platform::html_tokens::sink {
 public:
  link_places(std::string directory, std::function<void(output_place const&)> found);

  /// What can be shown once these bytes have come: all but a line that hasn't ended.
  std::string put(std::string_view bytes);
  /// Nothing came for a while: the line that hasn't ended, without a link.
  std::string flush();
  std::string finish();

 private:
  struct piece {
    std::size_t last = 0;  // of line_
    bool is_text = false;  // that can be in a link
  };

  void text(std::string_view raw) override;
  void tag(std::string_view name, bool closes, std::string_view raw) override;
  void other(std::string_view raw) override { add(raw, false); }
  void add(std::string_view raw, bool is_text);
  void end_line();
  void put_line();
  void read_line(std::string& text, std::vector<std::size_t>& offsets) const;
  void put_linked(std::size_t from, std::size_t to, std::string const& url);

  place_finder finder_;
  std::function<void(output_place const&)> found_;
  platform::html_tokens tokens_;
  std::string line_, shown_;
  std::vector<piece> pieces_;  // of line_
  bool is_in_link_ = false;
  bool was_cut_ = false;  // a part of the line has gone out
};

/// The URL that opens the place in the editor.
std::string url_of(output_place const& place);
/// The place that such a URL names; nothing for any other, and without an absolute path. Only
/// file, line and column are set.
std::optional<output_place> place_of_url(std::string_view url);

}  // namespace commands
